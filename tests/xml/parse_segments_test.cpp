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
    for (const Blanks blanks : {Blanks::BesideChildrenDropped, Blanks::KeptBesideText}) {
        const std::string inOne = testing::LoadText(source, {}, blanks);
        const std::string inSegments = testing::LoadText(source, {.threads = 3, .segmentBytes = segmentBytes}, blanks);
        if (inOne != inSegments)
            return std::string(xml) + "\n in one: " + inOne + "\n in segments: " + inSegments;
    }
    return {};
}

/// As LoadText, of a document that is built of parts each of which knows nothing of the others.
std::string TextOfParts(const Source& source, std::size_t segmentBytes, Blanks blanks)
{
    SegmentCutter cutter(source, segmentBytes);
    SegmentParser parser(cutter.As(), cutter.Declaration());
    DocumentBuilder whole{MemoryBudget(kDocumentMemoryBudgetBytes), blanks};
    DocumentPart part(blanks);
    const auto endElement = [&](std::string_view tag, std::size_t) {
        EXPECT_EQ(whole.OpenTag(), tag);
        whole.EndElement();
        return !whole.OpenTag().empty();
    };
    for (Segment segment; !segment.isLast;) {
        cutter.Next(segment);
        if (whole.OpenTag().empty()) {
            parser.Parse(segment, whole, endElement);
            continue;
        }
        part.Clear();
        parser.Parse(segment, part.Builder(), [&](std::string_view tag, std::size_t behind) {
            part.EndOuter(tag, behind);
            return true;
        });
        part.JoinTo(whole, endElement);
    }
    return "\n" + testing::WholeText(whole.Take()) + std::to_string(cutter.ControlBytes());
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

TEST(ParseSegments, ADocumentIsTheSameOfWhatPartsItIsBuilt)
{
    std::string begins;
    std::string ends;
    for (int depth = 0; depth < 25; ++depth) {
        begins.append("<a>2</a><a> 1");
        ends.append("</a>\n");
    }
    const std::string longText(40'000, 'x');
    const std::string documents[] = {
        "<a><b k='" + longText + "'>" + longText + "<c/><!--" + longText + "--><![CDATA[" + longText +
            "]]></b><b/></a>",
        "<a><b>1</b><b/><c><b/></c><b>2</b><c/><b>3<d/></b></a>",
        "<a><r><k/><k/></r><r><k/></r><r><k/><k/><k><l/></k></r><r><k><l/><l>1</l></k><k/></r></a>",
        "<a>1<b>x<c/>y<c>z</c> </b>\n<b> <c/> </b> <b> </b>t<b><c/></b> </a>",
        "<a> <b/><![CDATA[ ]]><b/> <!-- <c/> --> <b/><?p <b/>?>&#32;<b>&lt;<c/><![CDATA[<b/>]]></b>\n</a>",
        "<a><b k='1' l=''/><b l='2'><c k='3'/></b><b><c m='45678'><b k=''/></c>9</b></a>",
        "<d>" + begins + "<b/>3" + ends + "<a/></d>",
    };
    const testing::TempFolder folder;
    const Source source((folder / "a.xml").string());
    const auto compare = [&](const std::string& xml, std::size_t least, std::size_t most) {
        testing::WriteFile(source.path, xml);
        for (const Blanks blanks : {Blanks::BesideChildrenDropped, Blanks::KeptBesideText}) {
            const std::string inOne = testing::LoadText(source, {}, blanks);
            const bool isWellFormed = inOne.starts_with('\n');
            for (std::size_t segmentBytes = least; isWellFormed && segmentBytes <= most; ++segmentBytes)
                ASSERT_EQ(TextOfParts(source, segmentBytes, blanks), inOne) << segmentBytes << " " << xml;
        }
    };
    for (const std::string& xml : documents)
        compare(xml, 1, 40);
    for (unsigned seed = 0; seed < 200; ++seed) {
        RandomXml random(seed);
        const std::string xml = random.Document();
        const std::size_t segmentBytes = 1 + random.Below(60);
        compare(xml, segmentBytes, segmentBytes);
    }
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
        const std::string inParts =
            RandomXml(seed).Document("<!DOCTYPE a>"); // by one parser, wherever a part of it ends
        ASSERT_EQ(Difference(source, inParts, segmentBytes), "");
        for (int damage = 0; damage < 3; ++damage)
            ASSERT_EQ(Difference(source, random.Damaged(xml), segmentBytes), "");
    }
    EXPECT_GT(inSegments, 50) << "the others are too short, or the first segment ends before the document element";
}

} // namespace
} // namespace velmora
