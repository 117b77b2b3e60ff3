#include "xml/parse_segments.h"

#include "xml/loaded_text.h"
#include "xml/random_xml.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

using testing::RandomXml;

/// How the load of `xml` in segments differs from that by one parser; empty when it does not.
std::string Difference(const Source& source, std::string_view xml, std::size_t segmentBytes)
{
    testing::WriteFile(source.path, xml);
    const std::string inOne = testing::LoadText(source, {});
    const std::string inSegments = testing::LoadText(source, {.threads = 3, .segmentBytes = segmentBytes});
    return inOne == inSegments ? "" : std::string(xml) + "\n in one: " + inOne + "\n in segments: " + inSegments;
}

bool RunsInSegments(const Source& source, std::size_t segmentBytes)
{
    DocumentBuilder builder{MemoryBudget(kDocumentMemoryBudgetBytes)};
    return ParseSegments(source, segmentBytes, 2).Run(builder, [](std::int64_t) {});
}

TEST(ParseSegments, TellsWhatOneParserTellsWhereverItIsCut)
{
    const char* const documents[] = {
        "<a><b><c/>1<c/>2</b><b>\r\n<c/>\r</b></a>\r\n<!-- <c> -->",
        "<a><b/><![CDATA[<c>]]]]><![CDATA[>]]><c/><?p <c>?><c/><!-- <c> --></a>",
        "<a><b/><b>\xC3\xA4</b><b>&lt;&#10;</b><\xC3\xA4 k='/>'/></a>",
        "<a><b><c/></velmora-outer><c/></a>",
        "<a><b><c/></b></c><c/></a>",
        "<a><b/></a><b/>",
        "<a><b/><b/></a> text",
        "<a><b/><b/></a>&#32;",
        "<a><b/><b/></a",
        "<a><b/><b/><!-- <c/> -- </a>",
        "<a><b/><![CDATA[<b/>]]</a>",
        "<!DOCTYPE a [<!ATTLIST b k CDATA 'v'><!ENTITY e '<b/>'>]><a><b/><b/>&e;</a>",
    };
    const testing::TempFolder folder;
    const Source source((folder / "a.xml").string());
    for (const char* xml : documents)
        for (std::size_t segmentBytes = 1; segmentBytes <= 40; ++segmentBytes)
            ASSERT_EQ(Difference(source, xml, segmentBytes), "") << segmentBytes;
}

TEST(ParseSegments, TellsWhatOneParserTellsOfDocumentsOfAllKinds)
{
    const testing::TempFolder folder;
    const Source source((folder / "a.xml").string());
    int inSegments = 0;
    for (unsigned seed = 0; seed < 100; ++seed) {
        SCOPED_TRACE(seed);
        RandomXml random(seed);
        const std::string xml = random.Document();
        const std::size_t segmentBytes = 1 + random.Below(200);
        ASSERT_EQ(Difference(source, xml, segmentBytes), "");
        inSegments += RunsInSegments(source, segmentBytes) ? 1 : 0;
        for (int damage = 0; damage < 3; ++damage)
            ASSERT_EQ(Difference(source, random.Damaged(xml), segmentBytes), "");
    }
    EXPECT_GT(inSegments, 50) << "the others are too short, or the first segment ends before the document element";
}

} // namespace
} // namespace velmora
