#include "import/text_file.h"

#include "log/runtime_error.h"
#include "support/shared.h"

namespace velmora::testing {

namespace {

TEST(TextFile, TakesBackWhatIsNotSettledWrittenOrNot)
{
    const TempFolder folder;
    const std::string path = (folder / "a.txt").string();
    const std::string half(40'000, 'x'); // two of them are more than is kept in memory
    for (const int unsettled : {0, 1, 2, 5}) {
        SCOPED_TRACE(unsettled);
        WriteFile(path, "old\r\n");
        TextFile file(path);
        file.WriteLine("kept");
        file.Settle();
        for (int line = 0; line < unsettled; ++line)
            file.WriteLine(half);
        file.RollBack();
        file.WriteLine("next");
        file.Flush();
        EXPECT_EQ(ReadFile(path), "old\r\nkept\r\nnext\r\n");
    }
}

TEST(TextFile, ADiskThatIsFullIsToldOnceAndLeavesWholeLines)
{
    EXPECT_THROW(TextFile((TempFolder() / "no/such/folder.txt").string()), RuntimeError);
#ifdef __linux__
    TextFile file("/dev/full");
    file.WriteLine("one");
    try {
        file.Flush();
        ADD_FAILURE() << "was written";
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.Number(), runtime_errors::kDiskFull);
        EXPECT_NE(std::string(error.what()).find("[/dev/full]"), std::string::npos) << error.what();
    }
    file.WriteLine("two");
    file.Flush();
#endif
}

} // namespace

} // namespace velmora::testing
