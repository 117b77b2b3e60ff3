#include "app/application.h"

#include "jet/connection.h"
#include "settings/options.h"
#include "support/scripted_host.h"
#include "support/shared.h"

#include <algorithm>
#include <deque>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <sstream>

namespace velmora {
namespace {

constexpr const char* kLibrary =
    "<library name='Harbour'><book id='b1'><title>The Sea</title><year>1998</year><author>A</author><author>B</author>"
    "</book><book id='b2'><title>Tides; \"new\"</title><author>C</author><author>D</author></book></library>";
/// The library again: a longer title, a new attribute, a new column, a new table.
const std::string kMore = "<library name='Harbour'><book id='b3' lang='sv'><title>" + std::string(300, 'x') +
                          "</title><isbn>9</isbn><author>E</author><author>F</author></book>"
                          "<shelf><row>1</row></shelf></library>";
constexpr const char* kShop = "<shop><customer><name>Ann</name><address><street>Elm 1</street></address></customer>"
                              "<supplier><name>Co</name><address><street>Oak "
                              "2</street></address><note>x</note></supplier><total>2</total></shop>";
/// The shop with addresses in one place only.
constexpr const char* kSmallShop = "<shop><customer><name>Eve</name><address><street>Ash 3</street></address>"
                                   "</customer><total>9</total></shop>";
constexpr const char* kOrder =
    "<order><number>7</number><items><item><sku>A</sku></item><item><sku>B</sku></item></items></order>";

struct Source {
    const char* name;
    std::string document;
};

/// Command lines, run one after another in a folder that "{}" stands for, and what they leave there.
struct Case {
    const char* name;
    std::vector<Source> sources;
    std::vector<std::string> lines;
    const char* tables;              ///< see Shape(); of out.mdb
    std::vector<std::string> said{}; ///< by the last run; a leading "!" means that it must not be
    const char* textFiles = "";      ///< of the folder "text"
    int errors = 0;
    const char* input = nullptr; ///< typed into the one input box that is shown
};

std::string Replaced(std::string text, std::string_view what, std::string_view with)
{
    for (std::size_t at = 0; (at = text.find(what, at)) != text.npos; at += with.size())
        text.replace(at, what.size(), with);
    return text;
}

std::string Content(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string TableShape(jet::Connection& connection, const std::string& table)
{
    jet::Recordset records = connection.OpenTable(table);
    std::string shape = table + "(";
    for (std::size_t field = 0; field < records.FieldCount(); ++field)
        shape += (field ? "," : "") + records.FieldName(field);
    int rows = 0;
    for (; !records.Eof(); records.MoveNext())
        ++rows;
    return shape + ") " + std::to_string(rows) + "\n";
}

/// "table(columns) records" for each table and "child>parent" for each relation, a line each, in order of names; above
/// them "Access 97" when the file is one.
std::string Shape(const std::filesystem::path& path)
{
    if (!std::filesystem::exists(path))
        return "no database\n";
    const auto connection = jet::Connection::Open(path);
    std::set<std::string> lines;
    for (auto rows = connection->OpenSchema(jet::SchemaKind::Tables, {"", "", "", "TABLE"}); !rows.Eof();
         rows.MoveNext())
        lines.insert(TableShape(*connection, rows.Text("TABLE_NAME")));
    std::set<std::string> relations;
    for (auto rows = connection->OpenSchema(jet::SchemaKind::ForeignKeys); !rows.Eof(); rows.MoveNext())
        relations.insert(rows.Text("FK_TABLE_NAME") + ">" + rows.Text("PK_TABLE_NAME") + "\n");
    std::string shape = connection->Version() == jet::JetVersion::Jet3 ? "Access 97\n" : "";
    for (const auto& all : {lines, relations})
        for (const std::string& line : all)
            shape += line;
    return shape;
}

/// "name: lines" of each text file in `folder`, in order of names; CR is shown as "~".
std::string TextFiles(const std::filesystem::path& folder)
{
    if (!std::filesystem::exists(folder))
        return "";
    std::set<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        paths.insert(entry.path());
    std::string text;
    for (const auto& path : paths)
        text += path.filename().string() + ": " + Replaced(Content(path), "\r\n", "~\n");
    return text;
}

constexpr const char* kLibraryTables = "author(PKEY,FKEY,author) 4\n"
                                       "book(PKEY,FKEY,attr_id,title,year) 2\n"
                                       "library(PKEY,FKEY,attr_name) 1\n"
                                       "author>book\n"
                                       "book>library\n";
constexpr const char* kShopTables = "address_L1(PKEY,FKEY,street) 1\n"
                                    "address_L2(PKEY,FKEY,street) 1\n"
                                    "customer(PKEY,FKEY,name) 1\n"
                                    "shop(PKEY,FKEY,total) 1\n"
                                    "supplier(PKEY,FKEY,name,note) 1\n"
                                    "address_L1>customer\n"
                                    "address_L2>supplier\n"
                                    "customer>shop\n"
                                    "supplier>shop\n";
constexpr const char* kExtendedLibrary = "author(PKEY,FKEY,author) 6\n"
                                         "book(PKEY,FKEY,attr_id,year,attr_lang,isbn,title) 3\n"
                                         "library(PKEY,FKEY,attr_name) 2\n"
                                         "shelf(PKEY,FKEY,row) 1\n"
                                         "author>book\n"
                                         "book>library\n"
                                         "shelf>library\n";

const std::vector<Case>& Cases()
{
    static const std::vector<Source> library = {{"a.xml", kLibrary}};
    static const std::vector<Source> libraries = {{"a.xml", kLibrary}, {"b.xml", kMore}};
    static const std::vector<Source> shop = {{"a.xml", kShop}};
    static const std::vector<Source> order = {{"a.xml", kOrder}};
    static const std::string in = "xml={}/a.xml ";
    static const std::string both = in + "mdb={}/out.mdb q ";
    static const std::string second = "xml={}/b.xml mdb={}/out.mdb q -recreate_database ";
    static const std::vector<Case> cases = {
        {"as it comes", library, {"xml={}/a.xml mdb={}/out.mdb quiet"}, kLibraryTables, {"Create tables", "Done"}},
        {"the short words",
         library,
         {"x={}/a.xml m={}/out.mdb q p=ID f=UP at=@ tp=a_ ts=_z v=97 r a d"},
         "Access 97\n"
         "a_author_z(ID,UP,author) 4\n"
         "a_book_z(ID,UP,@id,title,year) 2\n"
         "a_library_z(ID,UP,@name) 1\n"
         "a_author_z>a_book_z\n"
         "a_book_z>a_library_z\n"},
        {"the long words",
         library,
         {in + "mdb={}/out.mdb primary=KEY foreign=UP attr=\"\" table_prefix=a_ table_suffix=_z ver=2000 +relations "
               "+attributes +recreate_database +quiet"},
         "a_author_z(KEY,UP,author) 4\n"
         "a_book_z(KEY,UP,id,title,year) 2\n"
         "a_library_z(KEY,UP,name) 1\n"
         "a_author_z>a_book_z\n"
         "a_book_z>a_library_z\n"},
        {"without relations",
         library,
         {both + "-relations"},
         "author(author) 4\nbook(attr_id,title,year) 2\nlibrary(attr_name) 1\n",
         {"!Create relations"}},
        {"without attributes",
         library,
         {both + "-attributes"},
         "author(PKEY,FKEY,author) 4\nbook(PKEY,FKEY,title,year) 2\nlibrary(PKEY,FKEY) 1\nauthor>book\n"
         "book>library\n",
         {"Not imported: 3 of 10 values"}},
        {"an element in two places", shop, {both + "+o -one_table_per_element"}, kShopTables},
        {"one table for both",
         shop,
         {both + "+one_table_per_element"},
         "address(PKEY,FKEY,MASTER_TABLE,street) 2\n"
         "customer(PKEY,FKEY,name) 1\n"
         "shop(PKEY,FKEY,total) 1\n"
         "supplier(PKEY,FKEY,name,note) 1\n"
         "customer>shop\n"
         "supplier>shop\n"},
        {"no longer shared",
         {{"a.xml", kShop}, {"b.xml", kSmallShop}},
         {both + "+o", second + "+o"},
         "address(PKEY,FKEY,street) 3\n"
         "customer(PKEY,FKEY,name) 2\n"
         "shop(PKEY,FKEY,total) 2\n"
         "supplier(PKEY,FKEY,name,note) 1\n"
         "address>customer\n"
         "customer>shop\n"
         "supplier>shop\n"},
        {"shared again by the next file of a run",
         {{"a.xml", kShop}, {"b.xml", kShop}},
         {"xml={}/*.xml mdb={}/out.mdb q +o"},
         "address(PKEY,FKEY,MASTER_TABLE,street) 4\n"
         "customer(PKEY,FKEY,name) 2\n"
         "shop(PKEY,FKEY,total) 2\n"
         "supplier(PKEY,FKEY,name,note) 2\n"
         "customer>shop\n"
         "supplier>shop\n"},
        {"a wrapping element",
         order,
         {both + "skip_empty -skip_empty"},
         "item(PKEY,FKEY,sku) 2\nitems(PKEY,FKEY) 1\norder(PKEY,FKEY,number) 1\nitem>items\nitems>order\n"},
        {"a wrapping element skipped",
         order,
         {both + "+skip_empty"},
         "item(PKEY,FKEY,sku) 2\norder(PKEY,FKEY,number) 1\nitem>order\n"},
        {"a database extended",
         libraries,
         {both, second},
         kExtendedLibrary,
         {"New table: [shelf]", "New column: [book].[isbn]", "Extend MDB structure", "!MDB file deleted"}},
        {"extended without a word on tables",
         libraries,
         {both, second + "-extend_mdb"},
         kExtendedLibrary,
         {"!New table", "New column: [book].[attr_lang]", "Create tables"}},
        {"extended after emptying",
         libraries,
         {both, second + "+empty_tables"},
         "author(PKEY,FKEY,author) 2\n"
         "book(PKEY,FKEY,attr_id,year,attr_lang,isbn,title) 1\n"
         "library(PKEY,FKEY,attr_name) 1\n"
         "shelf(PKEY,FKEY,row) 1\n"
         "author>book\n"
         "book>library\n"
         "shelf>library\n",
         {"Deleting content of all tables"}},
        {"emptying taken back",
         libraries,
         {both, second + "e -empty_tables"},
         kExtendedLibrary,
         {"!Deleting content of all tables"}},
        {"nothing to empty in a new database",
         library,
         {both, both + "+e +extend_mdb"},
         kLibraryTables,
         {"MDB file deleted", "!Deleting content of all tables"}},
        {"many files in one run",
         libraries,
         {"xml={}/?.xml mdb={}/out.mdb q"},
         kExtendedLibrary,
         {"File 1 of 2: {}/a.xml", "File 2 of 2: {}/b.xml"}},
        {"other names",
         {{"a.xml", kLibrary}, {"names.tsv", "book\tvolume\ntitle\tcalled\nattr_id\tmark\n"}},
         {both + "tags={}/names.tsv"},
         "author(PKEY,FKEY,author) 4\n"
         "library(PKEY,FKEY,attr_name) 1\n"
         "volume(PKEY,FKEY,mark,called,year) 2\n"
         "author>volume\n"
         "volume>library\n"},
        {"an unknown word", library, {both + "o"}, kLibraryTables, {"Unknown parameter:o"}},
        {"text files",
         library,
         {both + "txt={}/text delimiter=;"},
         kLibraryTables,
         {"!No delimiter", "!Each source file replaces"},
         "author.txt: PKEY;FKEY;author~\n1;1;A~\n2;1;B~\n3;2;C~\n4;2;D~\n"
         "book.txt: PKEY;FKEY;attr_id;title;year~\n1;1;b1;The Sea;1998~\n2;1;b2;Tides; \"new\";~\n"
         "library.txt: PKEY;FKEY;attr_name~\n1;0;Harbour~\n"},
        {"text files that load anywhere",
         library,
         {both + "txt={}/text delimiter=; +quoted -relations columns"},
         "author(author) 4\nbook(attr_id,title,year) 2\nlibrary(attr_name) 1\n",
         {},
         "author.txt: author~\nA~\nB~\nC~\nD~\n"
         "book.txt: attr_id;title;year~\nb1;The Sea;1998~\nb2;\"Tides; \"\"new\"\"\";~\n"
         "library.txt: attr_name~\nHarbour~\n"},
        {"text files without names, tabs between",
         order,
         {both + "txt={}/text delimiter=\\t -columns +skip_empty -quoted +strict"},
         "item(PKEY,FKEY,sku) 2\norder(PKEY,FKEY,number) 1\nitem>order\n",
         {},
         "item.txt: 1\t1\tA~\n2\t1\tB~\norder.txt: 1\t0\t7~\n"},
        {"text files appended to",
         order,
         {both + "txt={}/text delimiter=, +skip_empty", both + "txt={}/text delimiter=, +skip_empty append"},
         "item(PKEY,FKEY,sku) 2\norder(PKEY,FKEY,number) 1\nitem>order\n",
         {},
         "item.txt: PKEY,FKEY,sku~\n1,1,A~\n2,1,B~\n1,1,A~\n2,1,B~\n"
         "order.txt: PKEY,FKEY,number~\n1,0,7~\n1,0,7~\n"},
        {"text files made anew",
         order,
         {both + "txt={}/text delimiter=, +skip_empty", both + "txt={}/text delimiter=, +skip_empty -append"},
         "item(PKEY,FKEY,sku) 2\norder(PKEY,FKEY,number) 1\nitem>order\n",
         {},
         "item.txt: PKEY,FKEY,sku~\n1,1,A~\n2,1,B~\norder.txt: PKEY,FKEY,number~\n1,0,7~\n"},
        {"text files of the last source",
         {{"a.xml", kOrder}, {"b.xml", kOrder}},
         {"xml={}/*.xml mdb={}/out.mdb q txt={}/text delimiter=, +skip_empty -append"},
         "item(PKEY,FKEY,sku) 4\norder(PKEY,FKEY,number) 2\nitem>order\n",
         {"Each source file replaces"},
         "item.txt: PKEY,FKEY,sku~\n3,2,A~\n4,2,B~\norder.txt: PKEY,FKEY,number~\n2,0,7~\n"},
        {"text files without a delimiter",
         order,
         {both + "txt={}/text +skip_empty"},
         "item(PKEY,FKEY,sku) 2\norder(PKEY,FKEY,number) 1\nitem>order\n",
         {"No delimiter"},
         "item.txt: PKEYFKEYsku~\n11A~\n21B~\norder.txt: PKEYFKEYnumber~\n107~\n"},
        {"text files only",
         order,
         {in + "q txt={}/text delimiter=| +skip_empty"},
         "no database\n",
         {"Create database"},
         "item.txt: PKEY|FKEY|sku~\n1|1|A~\n2|1|B~\norder.txt: PKEY|FKEY|number~\n1|0|7~\n"},
        {"renamed, and found under the new name",
         order,
         {both + "rename=%p%done/%f%.old", "x={}/done/a.old mdb={}/out.mdb q -d n=%p%%f%_2.old",
          "x={}/done/a_2.old mdb={}/out.mdb q -d"},
         "item(PKEY,FKEY,sku) 6\nitems(PKEY,FKEY) 3\norder(PKEY,FKEY,number) 3\nitem>items\nitems>order\n"},
        {"asked for a delimiter",
         order,
         {in + "-quiet mdb={}/out.mdb txt={}/text +skip_empty"},
         "item(PKEY,FKEY,sku) 2\norder(PKEY,FKEY,number) 1\nitem>order\n",
         {"!No delimiter"},
         "item.txt: PKEY\tFKEY\tsku~\n1\t1\tA~\n2\t1\tB~\norder.txt: PKEY\tFKEY\tnumber~\n1\t0\t7~\n",
         0,
         "\\t"},
        {"downloaded from where nobody listens",
         {},
         {"mdb={}/out.mdb q url=http://127.0.0.1:1/a.xml auth=ann pwd=secret timeout=9 -strict"},
         "no database\n",
         {"Downloading XML file from URL", "Download of XML had failed!", "Done"},
         "",
         1},
        {"a protocol file",
         order,
         {both + "log={}/log.txt debug"},
         "item(PKEY,FKEY,sku) 2\nitems(PKEY,FKEY) 1\norder(PKEY,FKEY,number) 1\nitem>items\nitems>order\n"},
    };
    return cases;
}

/// Runs the lines of `c` in `folder` and compares.
void Check(const Case& c, const testing::TempFolder& folder)
{
    const std::string place = folder.Path().string();
    for (const Source& source : c.sources)
        testing::WriteFile(folder / source.name, source.document);

    testing::ScriptedHost host;
    if (c.input != nullptr)
        host.inputs = {c.input};
    for (const std::string& line : c.lines) {
        host.lines.clear();
        Application application(host);
        application.Form_Load(Replaced(line, "{}", place));
        application.Convert();
    }

    EXPECT_EQ(Shape(folder / "out.mdb"), c.tables);
    EXPECT_EQ(TextFiles(folder / "text"), c.textFiles);
    EXPECT_EQ(host.errors.size(), static_cast<std::size_t>(c.errors))
        << (host.errors.empty() ? "" : host.errors.front().second);
    EXPECT_EQ(host.messages.size(), c.input != nullptr ? 1u : 0u) << "boxes";
    EXPECT_EQ(host.lines.empty() ? "" : host.lines.back(), "Done");
    for (const std::string& text : c.said) {
        const bool unwanted = text.front() == '!';
        const std::string line = Replaced(unwanted ? text.substr(1) : text, "{}", place);
        const bool said = std::ranges::any_of(
            host.lines, [&](const std::string& written) { return written.find(line) != written.npos; });
        EXPECT_NE(said, unwanted) << line;
    }
}

TEST(OptionSets, LeaveWhatTheySay)
{
    std::deque<testing::TempFolder> folders;
    std::vector<std::filesystem::path> databases;
    for (const Case& c : Cases()) {
        SCOPED_TRACE(c.name);
        Check(c, folders.emplace_back());
        if (std::filesystem::exists(folders.back() / "out.mdb"))
            databases.push_back(folders.back() / "out.mdb");
    }
    EXPECT_SOUND(databases);
}

TEST(OptionSets, UseEverySwitchAndEveryKey)
{
    std::set<std::string> used;
    for (const Case& c : Cases())
        for (const std::string& line : c.lines) {
            std::istringstream words(line);
            for (std::string word; words >> word;)
                used.insert(word.substr(0, std::min(word.find('='), word.size() - 1) + 1));
        }
    const auto isUsed = [&](std::string_view word) { return used.contains(std::string(word)); };
    for (const Option& option : Options())
        for (const std::string_view side : {option.words, option.offWords})
            EXPECT_TRUE(side.empty() || std::ranges::any_of(Listed(side), isUsed)) << side;
}

} // namespace
} // namespace velmora
