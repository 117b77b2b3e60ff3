#include "plan/analyse_xml.h"

#include "mapping/tag_map.h"
#include "plan/plain_names.h"
#include "support/scripted_host.h"
#include "xml/loaded_text.h"
#include "xml/structure_model.h"

#include <functional>
#include <gtest/gtest.h>

namespace velmora {
namespace {

using testing::LoadBytes;

/// One line per entry: path, name when the path does not end in it, level, children, twins, attributes, kind and size,
/// table number, "shared". The line of a path whose elements become records begins with "T".
std::string ModelText(const StructureModel& model, const Document& document, const MappingPlan& plan)
{
    std::string text;
    for (std::size_t i = 1; i <= model.UpperBound(); ++i) {
        const ElementInfo& info = model.Element(i);
        const std::string path = document.PathText(info.strPath);
        text += plan.paths[info.strPath].table != kNoTable ? "T " : "- ";
        text += path;
        if (!path.ends_with("/" + info.strName))
            text += " (" + info.strName + ")";
        for (const std::int32_t number : {info.intLevel, info.lngMaxChildren, info.lngMaxTwins, info.lngAttributes})
            text += " " + std::to_string(number);
        std::string size = std::to_string(info.dblMaxSize);
        size.erase(size.find_last_not_of('0') + 1);
        if (size.back() == '.')
            size.pop_back();
        text += (info.lngDataType == kNumericContent ? " num " : " str ") + size;
        text += " #" + std::to_string(info.lngTableNo) + (info.blSharedTable ? " shared\n" : "\n");
    }
    return text + "records " + std::to_string(model.lngRecordEstimate) + "\n";
}

struct Analysis {
    Analysis() : job(host)
    {
        job.settings.blImportAttributes = true;
        job.settings.strAttrPrefix = "attr_";
    }

    std::string Run(const char* xml)
    {
        Document document = LoadBytes(xml).document;
        plan = MappingPlan();
        Guarded(job.log, [&] { velAnalyseXML(job, document, TagMap(), model, plan); });
        return ModelText(model, document, plan);
    }

    testing::ScriptedHost host;
    Job job;
    StructureModel model;
    MappingPlan plan;
};

TEST(StructureAnalysis, DerivesTheModel)
{
    const auto plain = [](ConversionSettings&) {};
    const auto withoutAttributes = [](ConversionSettings& s) { s.blImportAttributes = false; };
    const auto skipWrapping = [](ConversionSettings& s) { s.blSkipEmptyWrappingTags = true; };
    const auto skipWithoutAttributes = [](ConversionSettings& s) {
        s.blSkipEmptyWrappingTags = true;
        s.blImportAttributes = false;
    };
    struct Case {
        const char* name;
        const char* xml;
        std::function<void(ConversionSettings&)> setUp;
        const char* expected;
    };
    const Case cases[] = {
        {"document element alone, wrapping tags skipped: its run holds a plain leaf", "<a>7</a>", skipWrapping,
         "- //a 0 0 0 0 num 7 #0\nrecords 1\n"},
        {"repeated leaf with attributes has no inner entry", "<a><b i='1'>x</b><b/></a>", plain,
         "T //a 0 2 0 0 num 0 #11\nT //a/b 1 0 1 1 str 1 #12\n- //a/b/attr_i 2 0 0 0 num 1 #0\nrecords 4\n"},
        {"but gets one when a later occurrence has none and was not repeated before",
         "<a><r><b i='1'>x</b></r><r><b/><b/></r></a>", plain,
         "T //a 0 2 0 0 num 0 #11\nT //a/r 1 2 0 0 num 0 #12\nT //a/r/b 2 0 1 1 str 1 #13\n"
         "- //a/r/b/attr_i 3 0 0 0 num 1 #0\n- //a/r/b/b 3 0 0 0 num 0 #0\nrecords 6\n"},
        {"attributes make a table, also when they are left out, but give it no number then", "<a><b i='1'/></a>",
         withoutAttributes, "T //a 0 1 0 0 num 0 #11\nT //a/b 1 0 0 1 num 0 #0\nrecords 3\n"},
        {"attributes of the first occurrence only are counted", "<a><c><b/></c><c><b i='1'/></c></a>", plain,
         "T //a 0 2 0 0 num 0 #11\nT //a/c 1 1 0 0 num 0 #12\n- //a/c/b 2 0 0 0 num 0 #0\n"
         "- //a/c/b/attr_i 3 0 0 0 num 1 #0\nrecords 5\n"},
        {"numbers then text: the larger of value and length", "<a><b>12</b><b>abc</b></a>", plain,
         "T //a 0 2 0 0 num 0 #11\nT //a/b 1 0 1 0 str 12 #12\n- //a/b/b 2 0 0 0 num 12 #0\nrecords 4\n"},
        {"text keeps its first length, empty content changes nothing", "<a><b>abc</b><b/><b>abcdef</b></a>", plain,
         "T //a 0 3 0 0 num 0 #11\nT //a/b 1 0 2 0 str 3 #12\n- //a/b/b 2 0 0 0 str 3 #0\nrecords 5\n"},
        {"negative numbers do not change the size", "<a><b>-1</b><b>-5</b></a>", plain,
         "T //a 0 2 0 0 num 0 #11\nT //a/b 1 0 1 0 num -1 #12\n- //a/b/b 2 0 0 0 num -1 #0\nrecords 4\n"},
        {"a table without a number keeps its name", "<a><x><i><k/></i></x><i x='1'/><i n='2'><k><i l='1'/></k></i></a>",
         withoutAttributes,
         "T //a 0 3 0 0 num 0 #11\nT //a/x 1 1 0 0 num 0 #12\nT //a/x/i (i_L1) 2 1 0 0 num 0 #13\n"
         "- //a/x/i/k 3 0 0 0 num 0 #0\nT //a/i (i_L2) 1 1 1 1 num 0 #15\nT //a/i/k 2 1 0 0 num 0 #16\n"
         "T //a/i/k/i 3 0 0 1 num 0 #0\nrecords 8\n"},
        {"wrapping tags skipped: the last sibling's attributes count against the leaves",
         "<a><w><b>1</b><c i='1'>2</c></w><w><b>1</b></w></a>", skipWrapping,
         "- //a 0 2 0 0 num 0 #11\nT //a/w 1 2 0 0 num 0 #12\n- //a/w/b 2 0 0 0 num 1 #0\n"
         "T //a/w/c 2 0 0 1 num 2 #14\n- //a/w/c/attr_i 3 0 0 0 num 1 #0\nrecords 2\n"},
        {"without attributes only runs without a plain leaf are skipped",
         "<a><w><b>1</b><c i='1'/></w><w><b i='1'/></w></a>", skipWithoutAttributes,
         "- //a 0 2 0 0 num 0 #11\nT //a/w 1 2 0 0 num 0 #12\n- //a/w/b 2 0 0 0 num 1 #0\n- //a/w/c 2 0 0 1 num 0 #0\n"
         "records 3\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Analysis analysis;
        c.setUp(analysis.job.settings);
        EXPECT_EQ(analysis.Run(c.xml), c.expected);
        EXPECT_EQ(analysis.model.lngProgressMax, analysis.model.lngRecordEstimate - 1);
    }
}

TEST(StructureAnalysis, NamesMadeByTheSuffixMayMeetNamesOfTheDocument)
{
    const auto names = [](std::initializer_list<const char*> tables) {
        StructureModel model;
        for (const char* table : tables) {
            ElementInfo info;
            info.strPath = static_cast<PathId>(model.UpperBound() + 1);
            info.strName = table;
            info.lngMaxChildren = 1;
            model.Append(info);
        }
        ResolveTableNames(model, ConversionSettings());
        std::string text;
        for (std::size_t i = 1; i <= model.UpperBound(); ++i)
            text += (i > 1 ? " " : "") + model.Element(i).strName;
        return text;
    };
    EXPECT_EQ(names({"i", "i", "i", "i"}), "i_L1 i_L2 i_L3 i");
    EXPECT_EQ(names({"i", "i_L2", "i", "end"}), "i_L1 i_L2_L1 i_L2_L2 end");
    EXPECT_EQ(names({"i", "i", "i_L2", "i_L2", "end"}), "i_L1 i_L2_L1 i_L2_L2 i_L2_L3 end");
    EXPECT_EQ(names({"i_L1", "i", "i", "end"}),
              "i_L1 i_L1 i_L2 end"); // its turn is over before the other gets its name
    EXPECT_EQ(names({"i"}), "i");
}

TEST(StructureReport, ShowsOneLinePerElementBelowItsHeading)
{
    testing::ScriptedHost host;
    Job job(host);
    StructureModel model;
    MappingPlan plan;
    Document document = LoadBytes("<list><entry id='1'>1.5</entry><entry>abc</entry></list>").document;
    velAnalyseXML(job, document, TagMap(), model, plan);
    EXPECT_EQ(StructureReport(model, document), "        Level\r\n"
                                                "        |   Children\r\n"
                                                "        |   |     Siblings\r\n"
                                                "        |   |     |   Attributes\r\n"
                                                "        |   |     |   |   Type             Name  XPath\r\n"
                                                "------------------------------------------------------\r\n"
                                                "11      0   2     0   0   Num(0)           list  //list\r\n"
                                                "0       1   0     1   1   Str(3)           entry //list/entry\r\n");
}

} // namespace
} // namespace velmora
