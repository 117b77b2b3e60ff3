#include "source/source_list.h"

#include "support/shared.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(SourceList, FindsTheFilesOfEveryNameInOrder)
{
    const testing::TempFolder folder;
    const std::string in = folder.Path().string() + "/";
    for (const char* name : {"a.xml", "b.xml", "c|d.xml", "e*.xml", "q\"r.xml"})
        testing::WriteFile(folder / name, "<a/>");
    testing::WriteFile(folder / "list", "\xEF\xBB\xBF" + in + "q\"r.xml\r\n\n" + in + "c|d.xml\n" + in + "e*.xml");
    testing::WriteFile(folder / "empty", "\n");
    testing::WriteFile(folder / "wrong", in + "?.xml\n");

    struct Case {
        const char* text; ///< "%" stands for the folder
        const char* files;
        const char* problem = "";
    };
    const Case cases[] = {
        {" ", "", "No XML file specified!"},
        {"%a.xml", "a.xml "},
        {"%?.xml", "a.xml b.xml "},
        {"%b.xml|%a.xml", "b.xml a.xml "},
        {"%b.xml||%?.xml|%/b.xml|", "b.xml a.xml "},
        {"%c|d.xml", "c|d.xml "},
        {"@%list|%a.xml", "q\"r.xml c|d.xml e*.xml a.xml "},
        {"%none.xml", "", "File does not exist!"},
        {"%none*", "", "No files to import"},
        {"%A*", "", "No files to import (1 in other letter case)"},
        {"%a.xml|%none.xml|%no*", "a.xml ", "File does not exist! [%none.xml]; nothing was converted"},
        {"%a.xml|%no*", "a.xml ", "No files to import [%no*]; nothing was converted"},
        {"@%none", "", "The list of sources cannot be read [%none]; nothing was converted"},
        {"@%empty", "", "No files to import"},
        {"@%wrong", "", "File does not exist! [%?.xml]; nothing was converted"},
    };
    const auto filledIn = [&in](std::string text) {
        for (std::size_t at = 0; (at = text.find('%', at)) != text.npos; at += in.size())
            text.replace(at, 1, in);
        return text;
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        const SourceFiles found = ListSourceFiles(filledIn(c.text));
        std::string files;
        for (const std::string& path : found.paths)
            files += std::filesystem::path(path).filename().string() + " ";
        EXPECT_EQ(files, c.files);
        EXPECT_EQ(found.problem.value_or(""), filledIn(c.problem));
    }
    const std::string text = filledIn("@%list|%a.xml|%none.xml");
    for (const char* path : {"%c|d.xml", "%./a.xml", "%none.xml", "%list"})
        EXPECT_TRUE(NamesSource(text, filledIn(path))) << path;
    for (const char* path : {"%b.xml", "%other", ""})
        EXPECT_FALSE(NamesSource(text, filledIn(path))) << path;
}

} // namespace
} // namespace velmora
