// What the tables of small documents must hold. Every expectation is worked out by hand from the rules of the mapping;
// the documents of tests/corpus/by_hand hold the common ones.

#include "driver/conversion.h"

#include <span>

namespace velmora::testing {
namespace {

struct Case {
    const char* name;
    const char* options;
    std::string documents; ///< of one run; between two of them stands a bar
    std::string content;   ///< of the database, after the run below if there is one
    std::string losses{};  ///< as the last run tells them
    std::string then{};    ///< the document of a second run, into the same database
    const char* thenOptions = "";
    const char* said = ""; ///< by the last run, separated by bars; a leading "!" means that it must not be
};

void Check(std::span<const Case> cases)
{
    Conversions runs;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Conversion& run = runs.Next();
        run.Options(c.options);
        char name = 'a';
        for (const std::string& document : Parts(c.documents))
            run.Xml(document, std::string(1, name++) + ".xml");
        EXPECT_EQ(run.Run().convertedFiles, name - 'a') << run.Error();
        if (!c.then.empty()) {
            EXPECT_EQ(run.Options("-recreate_database").Options(c.thenOptions).Xml(c.then).Run().convertedFiles, 1)
                << run.Error();
        }
        EXPECT_EQ(run.Error(), "");
        EXPECT_EQ(run.Content(), c.content);
        EXPECT_EQ(run.Losses(), c.losses);
        for (const std::string& line : Parts(c.said))
            EXPECT_EQ(run.Said(line.substr(line.starts_with('!'))) > 0, !line.starts_with('!'))
                << line << run.Protocol();
    }
}

TEST(Tables, AreAsWorkedOutByHand)
{
    const Case cases[] = {
        {"an attribute that meets a child of its name shares the column, and the child wins",
         "attr=", "<list><item id='1'><id>one</id></item><item id='2'><name>n</name></item></list>",
         "item(PKEY|FKEY|id|name): 1|1|one| / 2|1|2|n\n"
         "list(PKEY|FKEY): 1|0\n"
         "item.FKEY -> list.PKEY\n",
         "Not imported: 1 of 4 values, the first at //list/item/id (+complete imports them)\n"
         "  //list/item/id: 1, another value of the record took its column, \"1\"\n"},
        {"the current child sink is switched by a sibling with attributes", "",
         "<r><p><n>1</n><u k='a'/><u k='b'/><v>x</v><w k='c'>y</w></p></r>",
         "p(PKEY|FKEY|n|v|w): 1|1|1|x|y\n"
         "r(PKEY|FKEY): 1|0\n"
         "u(PKEY|FKEY|u|attr_k): 1|1||a / 2|1||b\n"
         "w(PKEY|FKEY|attr_k): 1|1|c\n"
         "p.FKEY -> r.PKEY\n"
         "u.FKEY -> p.PKEY\n"
         "w.FKEY -> p.PKEY\n"},
        {"leaves with nothing but attributes", "", "<r><c id='1' name='x'/><c id='2' name=''/></r>",
         "c(PKEY|FKEY|c|attr_id|attr_name): 1|1||1|x / 2|1||2|\n"
         "r(PKEY|FKEY): 1|0\n"
         "c.FKEY -> r.PKEY\n"},
        {"without attributes the same leaves have a table without records", "-attributes",
         "<r><n>1</n><c id='1'/><c id='2'/></r>",
         "c(PKEY|FKEY|c):\n"
         "r(PKEY|FKEY|n): 1|0|1\n"
         "c.FKEY -> r.PKEY\n",
         "Not imported: 2 of 3 values, the first at //r/c/attr_id\n"
         "  //r/c/attr_id: 2, attributes are left out (-attributes), \"1\"\n"},
        {"a wrapping element is passed through", "+skip_empty",
         "<r><n>7</n><g><item><x>1</x></item><item><x>2</x></item></g><h><t>a</t><t>b</t></h></r>",
         "item(PKEY|FKEY|x): 1|1|1 / 2|1|2\n"
         "r(PKEY|FKEY|n): 1|0|7\n"
         "t(PKEY|FKEY|t): 1|1|a / 2|1|b\n"
         "item.FKEY -> r.PKEY\n"
         "t.FKEY -> r.PKEY\n"},
        {"names of keys, prefix and suffix", "p=id f=parent at=at_ tp=x_ ts=_y v=97", "<r><p k='v'><n>1</n></p></r>",
         "x_p_y(id|parent|at_k|n): 1|1|v|1\n"
         "x_r_y(id|parent): 1|0\n"
         "x_p_y.parent -> x_r_y.id\n"},
        {"texts keep their white space; blank ones and empty attributes are no values", "",
         "<r><p k=''><a> x </a><b>  </b><c.d>\n</c.d></p></r>",
         "p(PKEY|FKEY|attr_k|a|b|c_d): 1|1|| x ||\n"
         "r(PKEY|FKEY): 1|0\n"
         "p.FKEY -> r.PKEY\n"},
    };
    Check(cases);
}

TEST(Tables, LackWhatTheProtocolNames)
{
    const Case cases[] = {
        {"text beside children", "-relations", "<r><p>t&#10;<n>1</n>u</p></r>", "p(n): 1\n",
         "Not imported: 1 of 2 values, the first at //r/p (+complete imports them)\n"
         "  //r/p: 1, text beside child elements, \"t u\"\n"},
        {"a list beside nothing else is not looked for", "", "<r><n>1</n><p><t>a</t><t>b</t></p></r>",
         "p(PKEY|FKEY): 1|1\n"
         "r(PKEY|FKEY|n): 1|0|1\n"
         "t(PKEY|FKEY|t):\n"
         "p.FKEY -> r.PKEY\n"
         "t.FKEY -> p.PKEY\n",
         "Not imported: 2 of 3 values, the first at //r/p/t (+complete imports them)\n"
         "  //r/p/t: 2, no record is made at this place, \"a\"\n"},
        {"the first of two leaves that meet in one column, and a long one", "-relations",
         "<r><p><a:n>0123456789012345678901234567890123\xC3\xA9\xC3\xA9 to the end</a:n><b:n>2</b:n></p>"
         "<p><a:n>3</a:n><b:n>4</b:n></p></r>",
         "p(n): 2 / 4\n",
         "Not imported: 2 of 4 values, the first at //r/p/a:n (+complete imports them)\n"
         "  //r/p/a:n: 2, another value of the record took its column, "
         "\"0123456789012345678901234567890123\xC3\xA9\xC3\xA9 ...\"\n"},
        {"an attribute for which a list took the column", "attr= -relations",
         "<r><p t='x'><t>1</t><t>2</t><n>3</n><m>4</m></p></r>",
         "p(n|m): 3|4\n"
         "t(t): 1 / 2\n",
         "Not imported: 1 of 5 values, the first at //r/p/t (+complete imports them)\n"
         "  //r/p/t: 1, its column was taken by an element of the same name, \"x\"\n"},
        {"attributes that nobody wants", "-attributes -relations", "<r k='a'><p k='b' j='c'><n>1</n></p></r>",
         "p(n): 1\n",
         "Not imported: 3 of 4 values, the first at //r/attr_k\n"
         "  //r/attr_k: 1, attributes are left out (-attributes), \"a\"\n"
         "  //r/p/attr_k: 1, attributes are left out (-attributes), \"b\"\n"
         "  //r/p/attr_j: 1, attributes are left out (-attributes), \"c\"\n"},
        {"keys of a table that exists take no values", "attr=", "<r><p><n>1</n><t>a</t></p><q><n>1</n></q></r>",
         "p(PKEY|FKEY|n|t): 1|1|1|a / 2|2|2|c\n"
         "q(PKEY|FKEY|n): 1|1|1 / 2|2|2\n"
         "r(PKEY|FKEY): 1|0 / 2|0\n"
         "p.FKEY -> r.PKEY\n"
         "q.FKEY -> r.PKEY\n",
         "Not imported: 3 of 6 values, the first at //r/p/PKEY (+complete imports them)\n"
         "  //r/p/PKEY: 1, its column is a key, which takes no values, \"50\"\n"
         "  //r/p/FKEY: 1, its column is a key, which takes no values, \"1\"\n"
         "  //r/q/FKEY: 1, its column is a key, which takes no values, \"7\"\n",
         "<r><p><PKEY>50</PKEY><FKEY>1</FKEY><n>2</n><t>c</t></p><q FKEY='7'><n>2</n></q></r>"},
        {"columns like any other in tables without keys", "attr=id_ -relations", "<r><p><n>1</n></p></r>",
         "p(n|PKEY|FKEY): 1|| / 2|50|1\n", "", "<r><p><PKEY>50</PKEY><FKEY>1</FKEY><n>2</n></p></r>"},
        {"nor does the marker of a shared table", "+one_table_per_element",
         "<r><a><p><n>1</n></p></a><b><p><n>2</n></p></b></r>",
         "a(PKEY|FKEY): 1|1 / 2|2\n"
         "b(PKEY|FKEY): 1|1 / 2|2\n"
         "p(PKEY|FKEY|MASTER_TABLE|n): 1|1|a|1 / 2|1|b|2 / 3|2|a|3 / 4|2|b|4\n"
         "r(PKEY|FKEY): 1|0 / 2|0\n"
         "a.FKEY -> r.PKEY\n"
         "b.FKEY -> r.PKEY\n",
         "Not imported: 1 of 3 values, the first at //r/a/p/MASTER_TABLE (+complete imports them)\n"
         "  //r/a/p/MASTER_TABLE: 1, its column is a key, which takes no values, \"x\"\n",
         "<r><a><p><MASTER_TABLE>x</MASTER_TABLE><n>3</n></p></a><b><p><n>4</n></p></b></r>"},
    };
    Check(cases);
}

const std::string kLong(300, 'L');

TEST(Tables, HoldTextsThatWereTooLongForTheirColumns)
{
    const Case cases[] = {
        {"a leaf, with a list before it: key and list stay, the counter has no gap", "",
         "<r><p><t>a</t><t>b</t><n>s</n></p><p><t>c</t><t>d</t><n>" + kLong + "</n><m>x</m></p><p><n>z</n></p></r>",
         "p(PKEY|FKEY|m|n): 1|1||s / 2|1|x|" + kLong +
             " / 3|1||z\n"
             "r(PKEY|FKEY): 1|0\n"
             "t(PKEY|FKEY|t): 1|1|a / 2|1|b / 3|2|c / 4|2|d\n"
             "p.FKEY -> r.PKEY\n"
             "t.FKEY -> p.PKEY\n"},
        {"none for what is a memo from the start; digits count as a number, whose size is no length",
         "-relations",
         {"<r><p><a>" + std::string(255, 'x') + "</a><b>" + std::string(256, 'x') + "</b><c>" + std::string(300, '1') +
          "</c><d>1</d></p></r>"},
         "p(a|b|d|c): " + std::string(255, 'x') + "|" + std::string(256, 'x') + "|1|" + std::string(300, '1') + "\n"},
        {"an attribute", "-relations", "<r><p k='s'><n>1</n></p><p k='" + kLong + "'><n>2</n></p></r>",
         "p(n|attr_k): 1|s / 2|" + kLong + "\n"},
        {"a repeated leaf, while its owner is not yet saved", "",
         "<r><p><n>1</n><t>a</t><t>" + kLong + "</t><t>c</t></p></r>",
         "p(PKEY|FKEY|n): 1|1|1\n"
         "r(PKEY|FKEY): 1|0\n"
         "t(PKEY|FKEY|t): 1|1|a / 2|1|" +
             kLong +
             " / 3|1|c\n"
             "p.FKEY -> r.PKEY\n"
             "t.FKEY -> p.PKEY\n"},
        {"a record of attributes alone", "-relations", "<r><p><c k='s'/></p><p><c k='" + kLong + "'/></p></r>",
         "c(attr_k): s / " + kLong + "\np(c):  / \n"},
        {"a repeated leaf's attribute", "-relations", "<r><n>1</n><c k='s'/><c k='" + kLong + "'/></r>",
         "c(c|attr_k): |s / |" + kLong + "\nr(n): 1\n"},
        {"a column named otherwise than the tag", "-relations",
         "<r><p><x:n.o>s</x:n.o></p><p><x:n.o>" + kLong + "</x:n.o></p></r>", "p(n_o): s / " + kLong + "\n"},
        {"two columns in one record", "-relations",
         "<r><p><a>s</a><b>s</b></p><p><a>" + kLong + "</a><b>" + kLong + "</b></p></r>",
         "p(a|b): s|s / " + kLong + "|" + kLong + "\n"},
        {"through one of two sinks on a table", "-relations",
         "<r><x:p><n>s</n></x:p><y:p><n>" + kLong + "</n><m>1</m></y:p><x:p><n>t</n></x:p></r>",
         "p(m|n): |s / 1|" + kLong + " / |t\n"},
    };
    Check(cases);
}

TEST(Tables, AreExtendedByLaterFiles)
{
    const std::string library = "<library name='Harbour'><book id='b1'><title>The Sea</title><year>1998</year></book>"
                                "<book id='b2'><title>Tides</title></book></library>";
    // A longer title, a new attribute, a new column, a new table.
    const std::string more = "<library name='Port'><book id='b3' lang='sv'><title>" + kLong +
                             "</title><isbn>9</isbn></book><shelf><row>1</row></shelf></library>";
    const std::string extended =
        "book(PKEY|FKEY|attr_id|year|attr_lang|isbn|title): 1|1|b1|1998|||The Sea / 2|1|b2||||Tides / 3|2|b3||sv|9|" +
        kLong +
        "\n"
        "library(PKEY|FKEY|attr_name): 1|0|Harbour / 2|0|Port\n"
        "shelf(PKEY|FKEY|row): 1|2|1\n"
        "book.FKEY -> library.PKEY\n"
        "shelf.FKEY -> library.PKEY\n";
    const std::string shop = "<shop><customer><name>Ann</name><address><street>Elm 1</street></address></customer>"
                             "<supplier><address><street>Oak 2</street></address></supplier></shop>";
    const Case cases[] = {
        {"in a later run", "", library, extended, "", more, "",
         "New table: [shelf]|New column: [book].[isbn]|Extend MDB structure|!MDB file deleted"},
        {"without a word on tables", "", library, extended, "", more, "-extend_mdb",
         "!New table|New column: [book].[attr_lang]|Create tables"},
        {"after emptying; the counters go on", "", library,
         "book(PKEY|FKEY|attr_id|year|attr_lang|isbn|title): 3|2|b3||sv|9|" + kLong +
             "\n"
             "library(PKEY|FKEY|attr_name): 2|0|Port\n"
             "shelf(PKEY|FKEY|row): 1|2|1\n"
             "book.FKEY -> library.PKEY\n"
             "shelf.FKEY -> library.PKEY\n",
         "", more, "+empty_tables", "Deleting content of all tables"},
        {"files of one run", "", library + "|" + more, extended},
        {"an element in two places that has one table; later it is in one place only", "+o", shop,
         "address(PKEY|FKEY|street): 1|1|Elm 1 / 2|1|Oak 2 / 3|2|Ash 3\n"
         "customer(PKEY|FKEY|name): 1|1|Ann / 2|2|Eve\n"
         "shop(PKEY|FKEY): 1|0 / 2|0\n"
         "supplier(PKEY|FKEY): 1|1\n"
         "address.FKEY -> customer.PKEY\n"
         "customer.FKEY -> shop.PKEY\n"
         "supplier.FKEY -> shop.PKEY\n",
         "", "<shop><customer><name>Eve</name><address><street>Ash 3</street></address></customer></shop>"},
        {"the same shared again by the next file", "+o", shop + "|" + shop,
         "address(PKEY|FKEY|MASTER_TABLE|street): 1|1|customer|Elm 1 / 2|1|supplier|Oak 2 / 3|2|customer|Elm 1 / "
         "4|2|supplier|Oak 2\n"
         "customer(PKEY|FKEY|name): 1|1|Ann / 2|2|Ann\n"
         "shop(PKEY|FKEY): 1|0 / 2|0\n"
         "supplier(PKEY|FKEY): 1|1 / 2|2\n"
         "customer.FKEY -> shop.PKEY\n"
         "supplier.FKEY -> shop.PKEY\n"},
    };
    Check(cases);
}

TEST(Tables, BearTheNamesThatTagsAreMappedTo)
{
    Conversion run;
    run.Map("p", "person").Map("n", "full.name").Map("n", "second").Map("attr_k", "key").Map("T", "x");
    run.Map("a", "b").Map("c", "a");
    // The tag "a" goes to the column "b", and "c" to "a": the column of the tag's own name is widened first, then the
    // one that is meant.
    run.Xml("<r><x:p k=\"v\"><n>Ann</n><t>1</t><t>2</t></x:p><q><a>s</a><c>s</c></q><q><a>" + kLong +
            "</a><c>t</c></q></r>")
        .Run();
    EXPECT_EQ(run.Content(), "person(PKEY|FKEY|key|full_name): 1|1|v|Ann\n"
                             "q(PKEY|FKEY|a|b): 1|1|s|s / 2|1|t|" +
                                 kLong +
                                 "\n"
                                 "r(PKEY|FKEY): 1|0\n"
                                 "t(PKEY|FKEY|t): 1|1|1 / 2|1|2\n"
                                 "person.FKEY -> r.PKEY\n"
                                 "q.FKEY -> r.PKEY\n"
                                 "t.FKEY -> person.PKEY\n");
}

} // namespace
} // namespace velmora::testing
