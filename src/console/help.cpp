#include "console/help.h"

#include "app/version.h"

namespace velmora {

namespace {

constexpr const char* kHelp = R"(: loads XML files into Microsoft Access databases

Usage
  velmora xml=FILE mdb=FILE [option ...] +quiet    convert, here and now
  velmora [option ...]                             open the window, filled in
  velmora --help | --version

A switch is one word; a key is a word, "=" and its value. Upper and lower case
of the words do not matter. Of options that contradict each other the last one
counts. A value with blanks is put in quotes: xml="my orders.xml". Words that
are not known are reported and skipped.

Files
  xml=FILE   x=           the XML file; "*" and "?" in its name stand for more
                          letters or one: xml=prod_*.xml converts all matching
                          files, in the order of their names, into one database
  mdb=FILE   m=           the database
  log=FILE   l=  logfile= write the protocol to this file too, behind what is
                          in it already
  tags=FILE  t=           names for tags: one a line, tag, tab character, name

Running
  +quiet  quiet  +q  q    convert at once, ask nothing
  -quiet  -q              open the window (default)
  debug                   trace every step in the protocol file (with log=)

Database
  +recreate_database  recreate_database  +d  d
                          delete the database and make a new one (default)
  -recreate_database  -d  keep an existing database and add to it
  +extend_mdb  extend_mdb     with -recreate_database: name each new table in
                              the protocol (default); missing tables and columns
                              are added in either case
  -extend_mdb                 do not name them

Tables and columns
  +relations  relations  +r  r
                          tie the tables together by keys and relations
                          (default)
  -relations  -r          tables without keys and relations
  primary=NAME  pkey=  p= name of the primary key column (default PKEY)
  foreign=NAME  fkey=  f= name of the foreign key column (default FKEY)
  +attributes  attributes  +a  a
                          import attributes (default)
  -attributes  -a         leave attributes out
  attr=TEXT  at=          what the names of attribute columns begin with
                          (default attr_)
  +one_table_per_element  +o
                          one table for each element name, wherever it stands
  -one_table_per_element  -o
                          one table for each place in the document (default)
  +skip_empty  skip_empty no tables for elements that only wrap others
  -skip_empty             tables for them too (default)
  table_prefix=TEXT  tp=  what all table names begin with
  table_suffix=TEXT  ts=  what all table names end with

Known, but not available in this version
  txt=FOLDER              export to delimited text files, with
                          delimiter=TEXT, +columns columns -columns,
                          +append append -append
  rename=PATTERN  n=      rename each XML file after its conversion
  url=ADDRESS             download the XML file, with auth=USER, pwd=PASSWORD
  ver=97  v=              Access 97 databases; ver=2000, Access 2000, is the
                          default and works
  +empty_tables  empty_tables  +e  e
                          with -recreate_database: empty all tables first
  -empty_tables  -e       do not (default)

Output
  Protocol lines go to standard output as they are written, errors and, in a
  terminal, the progress to standard error. Ctrl-C cancels: what was saved stays
  and the database is closed in good order. A second Ctrl-C ends at once.

Exit status
  0    everything was converted
  1    ended by an error
  2    nothing to convert: no source named or found, a target that must not be
       written, an option that is not available, or a command line that makes no
       sense
  3    done, but a source or the file of tag names could not be read
  130  cancelled

Examples
  velmora xml=orders.xml mdb=orders.mdb +quiet
  velmora xml="in/2024*.xml" mdb=all.mdb -recreate_database log=all.log +quiet
  velmora x=a.xml m=a.mdb pkey=ID fkey=PARENT_ID attr="" +skip_empty +q
)";

} // namespace

std::string HelpText()
{
    return "velmora " + std::string(Version()) + kHelp;
}

} // namespace velmora
