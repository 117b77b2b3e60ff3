#include "console/help.h"

#include "app/version.h"

namespace velmora {

namespace {

constexpr const char* kHelp = R"(: loads XML files into Microsoft Access databases
or into delimited text files

Usage
  velmora xml=FILE mdb=FILE [option ...] +quiet     convert, here and now
  velmora xml=FILE txt=FOLDER [option ...] +quiet   the same, into text files
  velmora [option ...]                              open the window, filled in
  velmora --help | --version

A switch is one word; a key is a word, "=" and its value. Upper and lower case
of the words do not matter. Of options that contradict each other the last one
counts. A value with blanks is put in quotes: xml="my orders.xml". Words that
are not known are reported and skipped.

Without +quiet, where there is a terminal and no window, velmora converts in the
terminal and asks what it has to ask.

Source
  xml=FILE   x=           the XML file; "*" and "?" in its name stand for more
                          letters or one: xml=prod_*.xml converts all matching
                          files, in the order of their names, into one database
  url=ADDRESS             download the XML file, with curl, and delete it in the
                          end; auth=USER and pwd=PASSWORD where the server asks
  rename=PATTERN  n=      rename each XML file when it is converted
  tags=FILE  t=           names for tags: one a line, tag, tab character, name

Target
  mdb=FILE   m=           the database
  ver=97  v=              make an Access 97 database; ver=2000 (default) makes
                          one of Access 2000
  log=FILE   l=  logfile= write the protocol to this file too, behind what is
                          in it already

Text files
  txt=FOLDER              write a text file for each table into this folder,
                          which is made when it is missing; the database is a
                          temporary one unless mdb= names it
  delimiter=TEXT          what stands between two values; \t is the tab
  +columns  columns       a new file begins with the column names (default)
  -columns                it does not
  +append  append         write behind what is in a file already (default)
  -append                 delete old files first
  +quoted                 put values that hold the delimiter, a quotation mark
                          or a line break in quotation marks (RFC 4180)
  -quoted                 write them as they are (default)

Running
  +quiet  quiet  +q  q    convert at once, ask nothing
  -quiet  -q              open the window (default)
  debug                   trace every step in the protocol file (with log=)

Database
  +recreate_database  recreate_database  +d  d
                          delete the database and make a new one (default); when
                          it cannot be deleted, drop all its tables
  -recreate_database  -d  keep an existing database and add to it
  +extend_mdb  extend_mdb     with -recreate_database: name each new table in
                              the protocol (default); missing tables and columns
                              are added in either case
  -extend_mdb                 do not name them
  +empty_tables  empty_tables  +e  e
                          with -recreate_database: delete the rows of all tables
                          first, those that velmora did not make included
  -empty_tables  -e       do not (default)

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

Output
  Protocol lines go to standard output as they are written, errors and, in a
  terminal, the progress to standard error. Ctrl-C cancels: what was saved stays
  and the database is closed in good order. A second Ctrl-C ends at once.

Exit status
  0    everything was converted
  1    ended by an error
  2    nothing to convert: no source named or found, a target that must not be
       written, or a command line that makes no sense
  3    done, but a source or the file of tag names could not be read
  130  cancelled

Examples
  velmora xml=orders.xml mdb=orders.mdb +quiet
  velmora xml="in/2024*.xml" mdb=all.mdb -recreate_database log=all.log +quiet
  velmora x=a.xml m=a.mdb pkey=ID fkey=PARENT_ID attr="" +skip_empty +q
  velmora xml=orders.xml txt=out delimiter="," +quoted -append +quiet
)";

} // namespace

std::string HelpText()
{
    return "velmora " + std::string(Version()) + kHelp;
}

} // namespace velmora
