#include "xml/load_xml.h"

#include "support/scripted_host.h"
#include "support/shared.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(LoadXml, ReportsWhatItCouldNotRead)
{
    struct Case {
        const char* name;
        const char* xml;
        const char* line; ///< after "Open XML", with PATH for the file's path
        bool readable;
    };
    const Case cases[] = {
        {"a good file", "<a/>", "", true},
        {"a bad one, which is no error of the run", "<a>\n</b>",
         "Not loaded: PATH: line 2, column 3: mismatched tag: this end tag does not close <a>", false},
        {"skipped entities", "<!DOCTYPE a SYSTEM 'x'><a>&one;&two;</a>",
         "Entities without a text of their own, left out: 2, the first is &one;", true},
        {"letters of windows-1252 in a file that does not say so",
         "<?xml version='1.0' encoding='ISO-8859-1'?><a>\x93x\x94</a>",
         "Bytes 80 to 9F, control characters in ISO-8859-1: 2; where they are letters, encoding=windows-1252 says so",
         true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const testing::TempFolder folder;
        const std::string path = (folder / "document.xml").string();
        testing::WriteFile(path, c.xml);
        testing::ScriptedHost host;
        Job job(host);
        EXPECT_EQ(velLoadXML(job, path).readable, c.readable);
        std::string said = host.lines.size() > 1 ? host.lines[1] : "";
        if (const std::size_t at = said.find(path); at != said.npos)
            said.replace(at, path.size(), "PATH");
        EXPECT_EQ(said, c.line);
        EXPECT_FALSE(job.settings.blAbort);
    }
    const testing::TempFolder folder;
    for (const auto& [path, message] : {std::pair<std::string, std::string>{"", "Source XML file not specified"},
                                        {(folder / "none.xml").string(), "Source XML file not found"}}) {
        testing::ScriptedHost host;
        Job job(host);
        job.settings.blQuiet = true;
        EXPECT_FALSE(Guarded(job.log, [&, &file = path] { static_cast<void>(velLoadXML(job, file)); }));
        ASSERT_EQ(host.errors.size(), 1u);
        EXPECT_EQ(host.errors[0].second, message);
    }
}

} // namespace
} // namespace velmora
