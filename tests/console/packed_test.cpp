// Sources that are packed, or come on standard input, as a user gives them to the program.

#include "support/process.h"
#include "support/shared.h"

#include <gtest/gtest.h>

namespace velmora::testing {
namespace {

/// In a folder that holds documents in every form.
class PackedTest : public ::testing::Test {
protected:
    PackedTest()
    {
        const ProcessResult packed = RunPython({PACK, folder.Path().string()});
        EXPECT_EQ(packed.status, 0) << packed.errors;
    }
    /// `words` are the program's, with what a shell makes of them.
    [[nodiscard]] ProcessResult Run(const std::string& words) const
    {
        return RunProcess({"sh", "-c", VELMORA_PROGRAM " mdb=out.mdb +quiet " + words}, {}, folder.Path());
    }

    const TempFolder folder;
};

struct Case {
    const char* words;
    int status;
    std::vector<const char*> said{};
};

void Expect(const Case& c, const ProcessResult& result)
{
    EXPECT_EQ(result.status, c.status) << result.output << result.errors;
    for (const char* text : c.said)
        EXPECT_NE(result.output.find(text), std::string::npos) << text << " in\n" << result.output;
}

TEST_F(PackedTest, EveryFormIsReadAndWhatCannotBeIsNamed)
{
    const char* kRead = "3 records were imported";
    const Case cases[] = {
        {"xml=a.gz", 0, {kRead}},
        {"xml=a.bz2", 0, {kRead}},
        {"xml=a.xz", 0, {kRead}},
        {"xml=a.zst", 0, {kRead}},
        {"xml=- <a.zst", 0, {"File 1 of 1: standard input", kRead}},
        {"xml=- <plain", 0, {"1 records were imported"}},
        {"xml=- </dev/null", 3, {"Not loaded: standard input: line 1, column 1: the file holds no element"}},
        {"xml=- <a.zip", 3, {"Not loaded: standard input: an archive cannot be read from standard input"}},
        {"xml=- rename=b <plain", 2, {"xml=- and rename= do not go together"}},
        {"xml=plain encoding=nonsense", 2, {"encoding= names \"nonsense\", which is not known"}},
        {"xml=plain unpack_limit=much", 2, {"unpack_limit= takes a number of MB"}},
        {"xml=plain threads=0", 2, {"threads= takes a number from 1 to 1000, not \"0\""}},
        {"xml=twice.gz", 3, {"Not loaded: twice.gz: something packed inside of something packed is not read"}},
        {"xml=cut.gz", 3, {"Not loaded: cut.gz: cannot be unpacked: "}},
        {"xml=large.gz unpack_limit=1", 3, {"unpacks to more than 1 MB; unpack_limit= allows more"}},
        {"xml=large.gz unpack_limit=3", 0, {"1 records were imported"}},
        {"xml=secret.zip", 3, {"Not loaded: secret.zip/one.xml: is protected by a password"}},
        {"xml=none.zip", 3, {"Not loaded: none.zip: holds nothing whose name ends in .xml"}},
        {"xml=mixed.zip rename=%p%done.zip",
         3,
         {"File 1 of 3: mixed.zip/inner.zip", "Not loaded: mixed.zip/inner.zip: something packed", kRead,
          "Not loaded: mixed.zip/two.xml: line 1", "Not renamed, since it was not converted: mixed.zip"}},
        {"xml=a.zip rename=%p%done.zip", 0, {"File 1 of 2: a.zip/one.xml", "File 2 of 2: a.zip/d/TWO.XML", kRead}},
        {"xml=done.zip", 0, {"File 2 of 2: done.zip/d/TWO.XML"}},
        // Without the option the byte is none of UTF-8; a byte order mark is right whatever stands beside it.
        {"xml=wrong.xml", 3, {"Not loaded: wrong.xml: line 1"}},
        {"xml=wrong.xml encoding=windows-1252 txt=. delimiter=.", 0},
        {"xml=marked.xml encoding=windows-1252 txt=. delimiter=.", 0},
    };
    WriteFile(folder / "plain", "<a><b>1</b></a>");
    WriteFile(folder / "wrong.xml", "<?xml version='1.0' encoding='utf-8'?><wrong><b>\x80 10</b></wrong>");
    WriteFile(folder / "marked.xml", "\xEF\xBB\xBF<marked><b>€ 10</b></marked>");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.words);
        Expect(c, Run(c.words));
    }
    for (const char* text : {"wrong.txt", "marked.txt"})
        EXPECT_NE(ReadFile(folder / text).find("€ 10"), std::string::npos) << text;
    EXPECT_SOUND(folder / "out.mdb");
}

TEST_F(PackedTest, ABombEndsInALineWithoutFillingMemory)
{
    for (const char* form : {"gz", "bz2", "xz", "zst", "zip"}) {
        SCOPED_TRACE(form);
        const ProcessResult result = Run(std::string("xml=bomb.") + form);
        Expect({"", 3, {"unpacks to more than 1000 times its size"}}, result);
        EXPECT_LT(result.peakKilobytes, MOST_KILOBYTES);
    }
}

} // namespace
} // namespace velmora::testing
