#include "settings/options.h"

#include "platform/paths.h"

#include <algorithm>

namespace velmora {

namespace {

bool Always(const Controls&)
{
    return true;
}

bool KeepsDatabase(const Controls& controls)
{
    return !controls.chkRecreateDatabase.Checked();
}

/// The format is chosen for a database that is made.
bool MakesDatabase(const Controls& controls)
{
    return !KeepsDatabase(controls) || !FileExists(controls.txtFILE_MDB.text);
}

bool MakesRelations(const Controls& controls)
{
    return controls.chkCreateTableRelations.Checked();
}

bool ImportsAttributes(const Controls& controls)
{
    return controls.chkImportAttributes.Checked();
}

bool FromUrl(const Controls& controls)
{
    return controls.FromUrl();
}

bool NamesUser(const Controls& controls)
{
    return !controls.txtXML_USER.text.empty();
}

bool WritesXml(const Controls& controls)
{
    return !controls.txtFILE_EXPORT.text.empty();
}

bool WritesText(const Controls& controls)
{
    return !controls.txtFILE_TXT.text.empty();
}

// The words are as uneven as scripts know them: some switches have no letter, some no form without a sign.
constexpr Option kOptions[] = {
    {.group = OptionGroup::Source,
     .control = &Controls::txtFILE_XML,
     .setting = &ConversionSettings::sourceFile,
     .words = "xml= x=",
     .value = "FILE",
     .endings = "xml gz bz2 xz zst zip",
     .help = "the XML file; \"*\" and \"?\" in its name stand for several letters or one: xml=prod_*.xml converts all "
             "matching files, in the order of their names, into one database; several names stand with a vertical bar "
             "between them, and xml=@list.txt names a file with a name on each line; xml=- is standard input; what is "
             "packed (.gz, .bz2, .xz, .zst, .zip) is unpacked"},
    {.group = OptionGroup::Source,
     .control = &Controls::txtFILE_XML_RENAMED,
     .setting = &ConversionSettings::renamePattern,
     .words = "rename= n=",
     .value = "PATTERN",
     .help = "what each XML file is called after its conversion: rename=%p%done/%f%.xml moves it into a folder"},
    {.group = OptionGroup::Source,
     .control = &Controls::txtONLY,
     .setting = &ConversionSettings::only,
     .words = "only=",
     .value = "PATH",
     .help = "take only the elements at this path, and what is in them: only=//orders/order/item; several paths stand "
             "with \";\" between them"},
    {.group = OptionGroup::Source,
     .control = &Controls::txtENCODING,
     .setting = &ConversionSettings::encoding,
     .words = "encoding=",
     .value = "NAME",
     .help =
         "what the characters of the sources are, where a declaration is wrong: encoding=windows-1252; a byte order "
         "mark is right whatever stands here"},
    {.group = OptionGroup::Source,
     .control = &Controls::txtUNPACK_LIMIT,
     .setting = &ConversionSettings::unpackLimit,
     .words = "unpack_limit=",
     .value = "MB",
     .startText = "64000",
     .help = "refuse a packed file that unpacks to more than this"},
    {.group = OptionGroup::Target,
     .control = &Controls::txtFILE_MDB,
     .setting = &ConversionSettings::targetFile,
     .words = "mdb= m=",
     .value = "FILE",
     .endings = "mdb",
     .help = "the database"},
    {.group = OptionGroup::Target,
     .control = &Controls::txtFILE_EXPORT,
     .setting = &ConversionSettings::xmlFile,
     .words = "export=",
     .value = "FILE",
     .endings = "xml",
     .help = "the way back: write the database that mdb= names, made with +complete, as this XML file; the database is "
             "only read, and no source is named"},
    {.group = OptionGroup::Target,
     .control = &Controls::chkOverwrite,
     .setting = &ConversionSettings::blOverwrite,
     .words = "+overwrite overwrite",
     .offWords = "-overwrite",
     .enabledIf = WritesXml,
     .help = "with export=: replace a file that is there",
     .offHelp = "write nothing then"},
    {.group = OptionGroup::TextFiles,
     .control = &Controls::txtFILE_TXT,
     .setting = &ConversionSettings::textFolder,
     .words = "txt=",
     .value = "FOLDER",
     .help = "write a text file for each table into this folder, which is made when it is missing; the database is a "
             "temporary one unless mdb= names it"},
    {.group = OptionGroup::TextFiles,
     .control = &Controls::chkAPPEND,
     .setting = &ConversionSettings::blAppend,
     .reading = Reading::InTextMode,
     .words = "+append append",
     .offWords = "-append",
     .startsOn = true,
     .enabledIf = WritesText,
     .help = "write after what is in a file already",
     .offHelp = "delete old files first"},
    {.group = OptionGroup::TextFiles,
     .control = &Controls::chkEXPORT_COLUMN_NAMES,
     .setting = &ConversionSettings::blExportColumnNames,
     .reading = Reading::OffOrTextMode,
     .words = "+columns columns",
     .offWords = "-columns",
     .startsOn = true,
     .enabledIf = WritesText,
     .help = "a new file begins with the column names",
     .offHelp = "it does not"},
    {.group = OptionGroup::TextFiles,
     .control = &Controls::txtDELIMITER,
     .setting = &ConversionSettings::strDelimiter,
     .reading = Reading::InTextMode,
     .words = "delimiter=",
     .value = "TEXT",
     .enabledIf = WritesText,
     .help = "what stands between two values: delimiter=; or delimiter=\\t for the tab; a run that may ask asks for "
             "it"},
    {.group = OptionGroup::TextFiles,
     .control = &Controls::chkQUOTED,
     .setting = &ConversionSettings::blQuoted,
     .reading = Reading::OffOrTextMode,
     .words = "+quoted",
     .offWords = "-quoted",
     .enabledIf = WritesText,
     .help = "put values that hold the delimiter, a quotation mark or a line break in quotation marks (RFC 4180)",
     .offHelp = "write them as they are"},
    {.group = OptionGroup::TextFiles,
     .control = &Controls::chkBOM,
     .setting = &ConversionSettings::blBom,
     .words = "+bom",
     .offWords = "-bom",
     .enabledIf = WritesText,
     .help = "a new file begins with the three bytes by which Excel knows UTF-8",
     .offHelp = "it does not"},
    {.group = OptionGroup::TextFiles,
     .control = &Controls::cboEOL,
     .setting = &ConversionSettings::lineEnd,
     .words = "eol=",
     .value = "crlf|lf",
     .enabledIf = WritesText,
     .help = "how lines end: as on Windows, or as on Linux"},
    {.group = OptionGroup::TextFiles,
     .control = &Controls::txtNULL,
     .setting = &ConversionSettings::nullText,
     .words = "null=",
     .value = "TEXT",
     .enabledIf = WritesText,
     .help = "what is written for a value that is not there; with +quoted a value that reads the same is put in "
             "quotation marks"},
    {.group = OptionGroup::TextFiles,
     .control = &Controls::cboDATE,
     .setting = &ConversionSettings::dateForm,
     .words = "date=",
     .value = "blank|iso",
     .enabledIf = WritesText,
     .help = "what stands between date and time: 2024-03-05 14:07:09, or 2024-03-05T14:07:09, where a midnight is the "
             "date alone and a time without a date the time alone"},
    {.group = OptionGroup::Running,
     .control = &Controls::txtFILE_LOG,
     .setting = &ConversionSettings::protocolFile,
     .words = "log= logfile= l=",
     .value = "FILE",
     .endings = "log txt",
     .help = "write the protocol to this file too, after what is in it already"},
    {.group = OptionGroup::Source,
     .control = &Controls::txtFILE_MAPPING,
     .setting = &ConversionSettings::mappingFile,
     .words = "tags= t=",
     .value = "FILE",
     .endings = "tsv txt",
     .help = "other names for tags: one a line, tag, tab character, name"},
    {.group = OptionGroup::Source,
     .control = &Controls::txtXML_URL,
     .setting = &ConversionSettings::url,
     .words = "url=",
     .value = "ADDRESS",
     .writtenIf = FromUrl,
     .help = "download the XML file, with curl, and delete it in the end"},
    {.group = OptionGroup::Source,
     .control = &Controls::txtXML_USER,
     .setting = &ConversionSettings::urlUser,
     .words = "auth=",
     .value = "USER",
     .writtenIf = FromUrl,
     .help = "the user, where the server asks for one"},
    {.group = OptionGroup::Source,
     .control = &Controls::txtXML_PASSWORD,
     .setting = &ConversionSettings::urlPassword,
     .words = "pwd=",
     .value = "PASSWORD",
     .enabledIf = NamesUser,
     .writtenIf = FromUrl,
     .help = "the user's password"},
    {.group = OptionGroup::Source,
     .control = &Controls::txtTIMEOUT,
     .setting = &ConversionSettings::urlTimeout,
     .words = "timeout=",
     .value = "SECONDS",
     .writtenIf = FromUrl,
     .help = "end a download that takes longer; without it, it takes as long as it takes"},
    {.group = OptionGroup::Target,
     .control = &Controls::cboDatabase,
     .setting = &ConversionSettings::databaseFormat,
     .words = "ver= v=",
     .value = "2000|97",
     .othersMeanLast = true,
     .enabledIf = MakesDatabase,
     .help = "the format of a new database: Access 2000 to 2003, or Access 97"},
    {.group = OptionGroup::Database,
     .control = &Controls::chkRecreateDatabase,
     .setting = &ConversionSettings::blRecreateDatabase,
     .reading = Reading::WhileEnabled,
     .words = "+recreate_database recreate_database +d d",
     .offWords = "-recreate_database -d",
     .startsOn = true,
     .help = "delete the database and make a new one; when it cannot be deleted, drop all its tables",
     .offHelp = "keep an existing database and add to it"},
    {.group = OptionGroup::Database,
     .control = &Controls::chkExtendMDB,
     .setting = &ConversionSettings::blExtendMdb,
     .reading = Reading::WhileEnabled,
     .words = "+extend_mdb extend_mdb",
     .offWords = "-extend_mdb",
     .startsOn = true,
     .enabledIf = KeepsDatabase,
     .writtenIf = KeepsDatabase,
     .namedIf = Always,
     .help = "with -recreate_database: name each new table in the protocol; missing tables and columns are added in "
             "either case",
     .offHelp = "do not name them"},
    {.group = OptionGroup::Database,
     .control = &Controls::chkEmptyTables,
     .setting = &ConversionSettings::blEmptyTables,
     .words = "+empty_tables empty_tables +e e",
     .offWords = "-empty_tables -e",
     .enabledIf = KeepsDatabase,
     .writtenIf = KeepsDatabase,
     .help =
         "with -recreate_database: delete the records of all tables first, those that velmora did not make included",
     .offHelp = "keep them"},
    {.group = OptionGroup::Tables,
     .control = &Controls::chkImportAttributes,
     .setting = &ConversionSettings::blImportAttributes,
     .words = "+attributes attributes +a a",
     .offWords = "-attributes -a",
     .startsOn = true,
     .namedIf = Always,
     .help = "import attributes",
     .offHelp = "leave attributes out"},
    {.group = OptionGroup::Tables,
     .control = &Controls::txtATTR_PREFIX,
     .setting = &ConversionSettings::strAttrPrefix,
     .words = "attr= at=",
     .value = "TEXT",
     .startText = "attr_",
     .enabledIf = ImportsAttributes,
     .writtenIf = ImportsAttributes,
     .namedIf = Always,
     .help = "what the names of attribute columns begin with; attr=\"\" for nothing"},
    {.group = OptionGroup::Tables,
     .control = &Controls::chkOneTablePerElement,
     .setting = &ConversionSettings::blOneTablePerElement,
     .words = "+one_table_per_element +o",
     .offWords = "-one_table_per_element -o",
     .help = "one table for each element name, wherever it stands",
     .offHelp = "one table for each place in the document"},
    {.group = OptionGroup::Tables,
     .control = &Controls::chkSkipEmptyWrappingTags,
     .setting = &ConversionSettings::blSkipEmptyWrappingTags,
     .reading = Reading::GreyIsOn,
     .words = "+skip_empty skip_empty",
     .offWords = "-skip_empty",
     .help = "no tables for elements that only wrap others",
     .offHelp = "tables for them too"},
    {.group = OptionGroup::Tables,
     .control = &Controls::chkCreateTableRelations,
     .setting = &ConversionSettings::blCreateTableRelations,
     .words = "+relations relations +r r",
     .offWords = "-relations -r",
     .startsOn = true,
     .namedIf = Always,
     .help = "tie the tables together by key columns, indexes and relations",
     .offHelp = "tables without keys and relations"},
    {.group = OptionGroup::Tables,
     .control = &Controls::txtKEY_PRIMARY,
     .setting = &ConversionSettings::strKeyPrimary,
     .words = "pkey= primary= p=",
     .value = "NAME",
     .startText = "PKEY",
     .enabledIf = MakesRelations,
     .namedIf = MakesRelations,
     .help = "name of the primary key column"},
    {.group = OptionGroup::Tables,
     .control = &Controls::txtKEY_FOREIGN,
     .setting = &ConversionSettings::strKeyForeign,
     .words = "fkey= foreign= f=",
     .value = "NAME",
     .startText = "FKEY",
     .enabledIf = MakesRelations,
     .namedIf = MakesRelations,
     .help = "name of the foreign key column"},
    {.group = OptionGroup::Tables,
     .control = &Controls::txtTABLE_PREFIX,
     .setting = &ConversionSettings::strTablePrefix,
     .words = "table_prefix= tp=",
     .value = "TEXT",
     .help = "what all table names begin with"},
    {.group = OptionGroup::Tables,
     .control = &Controls::txtTABLE_SUFFIX,
     .setting = &ConversionSettings::strTableSuffix,
     .words = "table_suffix= ts=",
     .value = "TEXT",
     .help = "what all table names end with"},
    {.group = OptionGroup::Running,
     .control = &Controls::chkStrict,
     .setting = &ConversionSettings::blStrict,
     .words = "+strict strict",
     .offWords = "-strict",
     .help = "let nothing pass: an unknown word, or a file of tag names that cannot be read, ends the run before the "
             "database is touched (status 2); a value that was not imported, a record without a text file or a file "
             "that was not renamed makes the status 3",
     .offHelp = "say so in the protocol and go on"},
    {.group = OptionGroup::Tables,
     .control = &Controls::chkComplete,
     .setting = &ConversionSettings::blComplete,
     .words = "+complete complete",
     .offWords = "-complete",
     .help = "import every value: text beside child elements, lists, empty elements and whatever else the plain rules "
             "leave behind; names that the database refuses are changed",
     .offHelp = "leave such values out and say so in the protocol"},
    {.group = OptionGroup::Tables,
     .control = &Controls::chkTypes,
     .setting = &ConversionSettings::blTypes,
     .words = "+types types",
     .offWords = "-types",
     .help = "give each new column the narrowest type that all of its values fit: Yes/No, Long Integer, Double or "
             "Date/Time; one that a later value does not fit becomes a text",
     .offHelp = "texts and memos only"},
    {.group = OptionGroup::Running,
     .control = &Controls::chkContinue,
     .setting = &ConversionSettings::blContinue,
     .words = "+continue",
     .offWords = "-continue",
     .help = "of many files, leave out one that ends in an error, take back all that came of it, and go on with the "
             "next; the status is 1",
     .offHelp = "end with the error"},
    {.group = OptionGroup::Running,
     .control = &Controls::chkOnce,
     .setting = &ConversionSettings::blOnce,
     .words = "+once",
     .offWords = "-once",
     .enabledIf = KeepsDatabase,
     .help = "with -recreate_database: skip files whose content was loaded into this database with +once before; its "
             "table velmora_log lists them",
     .offHelp = "load them again"},
    {.group = OptionGroup::Running,
     .control = &Controls::chkPreview,
     .setting = &ConversionSettings::blPreview,
     .words = "preview +preview",
     .offWords = "-preview",
     .help = "write nothing, no file at all, and show what a run would do: its tables with their columns and records, "
             "names that would be changed, values that would be left behind, what would end it, and how large the "
             "database would be; the status is 3 when something would be left behind",
     .offHelp = "convert"},
    {.group = OptionGroup::Running,
     .control = &Controls::txtSUMMARY,
     .setting = &ConversionSettings::summaryFile,
     .words = "summary=",
     .value = "FILE",
     .endings = "json",
     .help = "write what happened as one JSON object, for scripts, however the run ends; summary=- writes it to "
             "standard output, and protocol lines then go to standard error"},
    {.group = OptionGroup::Running,
     .control = &Controls::txtTHREADS,
     .setting = &ConversionSettings::threads,
     .words = "threads=",
     .value = "NUMBER",
     .help = "do so many things at the same time at most: threads=1 does one after another; without it as many as the "
             "machine has processors, and 4 at most; the result is the same"},
    {.group = OptionGroup::Running,
     .control = &Controls::chkQuiet,
     .setting = &ConversionSettings::blQuiet,
     .words = "+quiet quiet +q q",
     .offWords = "-quiet -q",
     .help = "convert at once, ask nothing",
     .offHelp = "open the window, unless files are named without a key"},
    {.group = OptionGroup::Running,
     .control = &Controls::chkDebug,
     .words = "debug",
     .help = "trace every step in the protocol file, with the time (needs log=)"},
};

constexpr OptionHeading kHeadings[] = {
    {OptionGroup::Source, "Source"},        {OptionGroup::Target, "Target"},
    {OptionGroup::Database, "Database"},    {OptionGroup::Tables, "Tables and columns"},
    {OptionGroup::TextFiles, "Text files"}, {OptionGroup::Running, "Running"},
};

} // namespace

std::string LowerCase(std::string_view word)
{
    std::string lower(word);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

std::span<const Option> Options() noexcept
{
    return kOptions;
}

std::span<const OptionHeading> OptionHeadings() noexcept
{
    return kHeadings;
}

std::string_view StartValue(const Option& key)
{
    const bool isList = std::holds_alternative<ComboControl Controls::*>(key.control);
    return isList ? Listed(key.value, '|').front() : key.startText;
}

std::vector<std::string_view> Listed(std::string_view list, char separator)
{
    std::vector<std::string_view> parts;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(separator), list.size());
        parts.push_back(list.substr(0, end));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return parts;
}

} // namespace velmora
