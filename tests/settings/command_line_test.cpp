#include "settings/command_line.h"

#include "platform/paths.h"
#include "platform/program.h"
#include "settings/options.h"

#include <gtest/gtest.h>
#include <random>
#include <set>

namespace velmora {
namespace {

using Texts = std::vector<std::string>;

/// A state of the controls that a command line has set.
struct Parsed {
    explicit Parsed(std::string_view line)
    {
        ApplyCommandLine(line, controls, [this](std::string_view token) { unknown.emplace_back(token); });
        controls.tabSourceType = controls.txtXML_URL.text.empty() ? 0 : 1;
    }
    Controls controls;
    Texts unknown;
};

std::string ArgumentsOf(const Controls& controls)
{
    const std::string line = BuildCommandLine(controls);
    const std::string program = ProgramFolder() + kPathSeparator + ProgramName();
    EXPECT_EQ(line.substr(0, program.size()), program);
    return line.substr(program.size());
}

TEST(CommandLine, IsSplitAtBlanksOutsideQuotedValues)
{
    struct Case {
        const char* line;
        Texts tokens;
    };
    const Case cases[] = {
        {"", {""}},
        {"a", {"a"}},
        {"a b", {"a", "b"}},
        {"a  b", {"a", "", "b"}},
        {R"(xml="C:\My Files\a.xml" +quiet)", {R"(xml="C:\My Files\a.xml")", "+quiet"}},
        {R"(q xml="a b")", {"q", R"(xml="a b")", ""}},
        {R"(q xml="ab")", {"q", R"(xml="ab")"}},
        {R"(xml="" q)", {R"(xml="")", "q"}},
        {R"("a b" c)", {R"("a)", R"(b")", "c"}},
        {R"(x=a="b c" d)", {R"(x=a="b)", R"(c")", "d"}},
        // Behind a closing quote one character is always the delimiter.
        {R"(x="a b"c d)", {R"(x="a b")", "", "d"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        const std::vector<std::string_view> tokens = SplitCommandLine(c.line, ' ');
        EXPECT_EQ(Texts(tokens.begin(), tokens.end()), c.tokens);
    }
}

TEST(CommandLine, AQuoteThatIsNeverClosedMakesTheWholeLineAnError)
{
    for (const char* line : {R"(q xml="a b)", R"(xml="ab)", R"(xml=")", R"(xml="a b m=c q)", R"(log="a" m="b)"}) {
        SCOPED_TRACE(line);
        Controls controls;
        EXPECT_THROW(ApplyCommandLine(line, controls, [](std::string_view) {}), CommandLineError);
        EXPECT_FALSE(controls.chkQuiet.Checked());
        EXPECT_EQ(controls.txtFILE_XML.text + controls.txtFILE_LOG.text, "");
    }
}

TEST(CommandLine, SwitchesAreAsUnevenAsScriptsKnowThem)
{
    std::set<std::string_view> all;
    for (const Option& option : Options())
        for (const std::string_view words : {option.words, option.offWords})
            for (const std::string_view word : Listed(words))
                EXPECT_TRUE(all.insert(word).second) << word << " stands twice";
    EXPECT_TRUE(Parsed("+QUIET").controls.chkQuiet.Checked());
    for (const std::string word :
         {"o", "one_table_per_element", "-debug", "+debug", "+extend", "--quiet", "xml", "nokey=1"})
        EXPECT_EQ(Parsed(word).unknown, Texts{word});
}

TEST(CommandLine, KeysSetTextsAsTheyStand)
{
    const std::pair<const char*, const char*> values[] = {
        {"Plain", "Plain"}, {"\"With Blank\" q", "With Blank"}, {"a=B", "a=B"}, {"", ""}, {"\"\"", ""},
        {"a\"b", "a\"b"},
    };
    for (const auto& [written, value] : values) {
        const Parsed parsed(std::string("x=").append(written));
        EXPECT_EQ(parsed.controls.txtFILE_XML.text, value);
        EXPECT_EQ(parsed.unknown, Texts{});
    }
    for (const auto& [line, format] : {std::pair("ver=2000", "Access 2000"),
                                       {"v=97", "Access 97"},
                                       {"ver=2003", "Access 97"},
                                       {"VER=", "Access 97"}})
        EXPECT_EQ(Parsed(line).controls.cboDatabase.Text(), format) << line;
}

TEST(CommandLine, ReportsWhatItDoesNotKnowAndGoesOn)
{
    const Parsed parsed(R"(  foo  -quiet Bar="1 2" xml=first q xml=last mdb="a b")");
    EXPECT_EQ(parsed.unknown, (Texts{"foo", "", R"(Bar="1 2")", ""}));
    EXPECT_TRUE(parsed.controls.chkQuiet.Checked()) << "the last one counts";
    EXPECT_EQ(parsed.controls.txtFILE_XML.text, "last");
    EXPECT_EQ(parsed.controls.txtFILE_MDB.text, "a b");
    EXPECT_EQ(Parsed("   ").unknown, Texts{});
    EXPECT_EQ(Parsed("eol=LF date=iso").unknown, Texts{});
    EXPECT_EQ(Parsed("eol=cr date= ver=2003").unknown, (Texts{"eol=cr", "date="}));
}

TEST(CommandLine, IsBuiltFromTheArgumentsOfAProcess)
{
    struct Case {
        Texts arguments;
        const char* line;
    };
    const Case cases[] = {
        {{}, ""},
        {{"xml=a.xml", "+quiet"}, "xml=a.xml +quiet"},
        {{"xml=a b.xml", "+quiet"}, R"(xml="a b.xml" +quiet)"},
        {{"xml=", "q"}, "xml= q"},
        // A quoted value at the end would leave an empty token behind it; the last switch is put there.
        {{"-q", "q", "l=c", "xml=a b.xml"}, R"(-q l=c xml="a b.xml" q)"},
        {{"q", "xml=a b.xml", "mdb=c d.mdb"}, R"(xml="a b.xml" mdb="c d.mdb" q)"},
        {{"xml=a b.xml"}, R"(xml="a b.xml")"},
        {{"xml=a=b c", "q"}, R"(xml="a=b c" q)"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(JoinArguments(c.arguments), c.line);
    }
    EXPECT_THROW((void)JoinArguments({"q", "xml=a\"b.xml"}), CommandLineError);
}

TEST(CommandLine, IsBuiltFromWhatDiffersFromTheStart)
{
    struct Case {
        const char* given;
        const char* built;
    };
    const Case cases[] = {
        {"xml=a.xml mdb=b.mdb",
         R"( xml="a.xml" mdb="b.mdb" +attributes attr="attr_" +relations pkey="PKEY" fkey="FKEY")"},
        {"-d", R"( -recreate_database +extend_mdb +attributes attr="attr_" +relations pkey="PKEY" fkey="FKEY")"},
        {"-d -extend_mdb e +o +skip_empty ver=97 tp=x",
         R"( ver=97 -recreate_database -extend_mdb +empty_tables +attributes attr="attr_" +one_table_per_element +skip_empty +relations pkey="PKEY" fkey="FKEY" table_prefix="x")"},
        {"-r -a p=ID f=FKEY", R"( -attributes -relations pkey="ID")"},
        {"ver=97 -a -r +o skip_empty tp=x_ ts=_y debug",
         R"( ver=97 -attributes +one_table_per_element +skip_empty -relations table_prefix="x_" table_suffix="_y" debug)"},
        {"at= p= f= -append -columns delimiter=; +quoted txt=out rename=r log=l tags=t q",
         R"( rename="r" txt="out" -append -columns delimiter=";" +quoted log="l" tags="t" +attributes attr="" +relations pkey="" fkey="" +quiet)"},
        {"-a -r +bom eol=lf null=NULL date=iso", R"( +bom eol=lf null="NULL" date=iso -attributes -relations)"},
        {"auth=me pwd=secret -a -r", " -attributes -relations"},
        {"auth=me pwd=secret url=http://x -a -r", R"( url="http://x" auth="me" pwd="secret" -attributes -relations)"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.given);
        const Parsed parsed(c.given);
        EXPECT_EQ(ArgumentsOf(parsed.controls), c.built);
    }
}

TEST(CommandLine, IsShownWithoutPasswords)
{
    struct Case {
        const char* given;
        const char* shown;
    };
    const Case cases[] = {
        {"url=http://h/x auth=ann pwd=secret -a -r",
         R"( url="http://h/x" auth="ann" pwd="***" -attributes -relations)"},
        {"url=http://ann:se@cret@h/x?y@z -a -r", R"( url="http://***@h/x?y@z" -attributes -relations)"},
        {R"(url="-L ann:secret@h/x" -a -r)", R"( url="-L ***@h/x" -attributes -relations)"},
    };
    for (const Case& c : cases) {
        const std::string line = ShownCommandLine(Parsed(c.given).controls);
        EXPECT_EQ(line.substr(line.find(' ')), c.shown);
    }
}

TEST(CommandLine, WhatIsBuiltReadsBackToTheSame)
{
    std::mt19937 random(20240305);
    const auto chance = [&random] { return random() % 2 == 0; };
    for (int round = 0; round < 500; ++round) {
        SCOPED_TRACE(round);
        Controls controls;
        for (const Option& option : Options()) {
            if (const auto* text = std::get_if<TextControl Controls::*>(&option.control); text != nullptr && chance())
                (controls.**text).text = chance() ? "" : "C:\\a b=" + std::to_string(random() % 100) + ".x y";
            if (const auto* box = std::get_if<CheckControl Controls::*>(&option.control))
                (controls.**box).value = chance() ? CheckState::Checked : CheckState::Unchecked;
        }
        for (ComboControl* const list : {&controls.cboDatabase, &controls.cboEOL, &controls.cboDATE})
            list->selected = random() % 2;

        controls.tabSourceType = controls.txtXML_URL.text.empty() || chance() ? 0 : 1;

        const std::string line = ArgumentsOf(controls);
        const Parsed parsed(line);
        EXPECT_EQ(ArgumentsOf(parsed.controls), line);
        for (const std::string& token : parsed.unknown)
            EXPECT_EQ(token, "") << "only the empty token behind a quoted value at the end";
    }
}

} // namespace
} // namespace velmora
