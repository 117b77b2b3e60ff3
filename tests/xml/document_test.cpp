#include "xml/document.h"

#include "xml/loaded_text.h"

#include <gtest/gtest.h>
#include <set>

namespace velmora {
namespace {

using testing::DocumentText;
using testing::LoadBytes;

TEST(Document, KeepsWhatTheFileHolds)
{
    struct Case {
        const char* name;
        const char* xml;
        const char* expected;
    };
    const Case cases[] = {
        {"document element alone", "<a/>", "a x1\n"},
        {"white space of a leaf is content", "<a> \n </a>", "a [ \n ] x1\n"},
        {"white space between children is not", "<a>\n <b/>\n\t<c/>\r\n</a>", "a x1\n b x1\n c x1\n"},
        {"nor beside a comment", "<a> <!-- x --> <b/></a>", "a x1\n b x1\n"},
        {"text beside children stays as it stands", "<p>one <b>two</b> three<i/>\n</p>",
         "p [one  three] x1\n b [two] x1\n i x1\n"},
        {"text around nested mixed content", "<p>1<q>2<r>3</r>4</q>5</p>", "p [15] x1\n q [24] x1\n  r [3] x1\n"},
        {"CDATA and references join, comments and instructions do not",
         "<a>x<![CDATA[<&>]]>&lt;<!--no--><?no no?>&#65;</a>", "a [x<&><A] x1\n"},
        {"internal entities and default attributes",
         "<!DOCTYPE a [<!ENTITY e 'ent'><!ATTLIST a d CDATA 'def'>]><a b='&e;'>&e;</a>", "a b=ent d=def [ent] x1\n"},
        {"attributes beside text and children", "<a x='1'>abcd<b y=''/>efg<c z='xyz'>hij</c></a>",
         "a x=1 [abcdefg] x1\n b y= x1\n c z=xyz [hij] x1\n"},
        {"prefixes stay", "<n:a xmlns:n='u' n:b='1'/>", "n:a xmlns:n=u n:b=1 x1\n"},
        {"tags are counted per parent", "<a><b/><c/><b/><d><b/></d><b/></a>",
         "a x1\n b x3\n c x1\n b x3\n d x1\n  b x1\n b x3\n"},
        {"parents of one path count apart", "<a><b><c/><c/></b><b><c/></b></a>",
         "a x1\n b xn\n  c x2\n  c x2\n b xn\n  c x1\n"},
        {"also beside one that has children", "<a><b><c/></b><b/><b/></a>", "a x1\n b x3\n  c x1\n b x3\n b x3\n"},
        {"line ends become LF", "<a>1\r\n2\r3</a>", "a [1\n2\n3] x1\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const LoadResult loaded = LoadBytes(c.xml);
        EXPECT_EQ(loaded.problem, "");
        EXPECT_EQ(DocumentText(loaded.document), c.expected);
    }
}

/// What comes next is recognised by what came last time: it need not come again.
TEST(Document, ElementsAndAttributesMayComeInAnyOrder)
{
    const LoadResult loaded =
        LoadBytes("<r><a x='1' y='2'/><b/><a y='3' x='4' z='5'/><ab xy='6'/><a/><c x='7'><b/><a/></c>"
                  "<c y='8'><a/><b><a/></b></c></r>");
    EXPECT_EQ(DocumentText(loaded.document), "r x1\n"
                                             " a x=1 y=2 x3\n"
                                             " b x1\n"
                                             " a y=3 x=4 z=5 x3\n"
                                             " ab xy=6 x1\n"
                                             " a x3\n"
                                             " c x=7 xn\n"
                                             "  b x1\n"
                                             "  a x1\n"
                                             " c y=8 xn\n"
                                             "  a x1\n"
                                             "  b x1\n"
                                             "   a x1\n");
    std::set<std::string> paths;
    for (PathId path = 1; path < loaded.document.Paths().Size(); ++path)
        paths.insert(loaded.document.PathText(path));
    EXPECT_EQ(paths,
              (std::set<std::string>{"//r", "//r/a", "//r/b", "//r/ab", "//r/c", "//r/c/b", "//r/c/a", "//r/c/b/a"}));
    EXPECT_EQ(paths.size() + 1, loaded.document.Paths().Size());
}

TEST(Document, NamesOfManyPathsMayBeTheSame)
{
    // Two names below every path: what stands beside a path in the tree's table bears its name as often as not.
    constexpr std::size_t kPaths = 20'000;
    PathTree tree;
    std::vector<PathId> paths{0};
    for (NameId i = 0; paths.size() < kPaths; ++i)
        paths.push_back(tree.Child(paths[i / 2], i % 2));
    EXPECT_EQ(std::set<PathId>(paths.begin(), paths.end()).size(), kPaths);
    EXPECT_EQ(tree.Size(), kPaths);
    for (NameId i = 0; i + 1 < kPaths; ++i)
        ASSERT_EQ(tree.FindChild(paths[i / 2], i % 2), paths[i + 1]);
    EXPECT_EQ(tree.FindChild(paths[7], 2), PathTree::kNoPath);
}

TEST(Document, WritesPathsAndCutsLongOnesInTheMiddle)
{
    const Document document = LoadBytes("<first><second><third><Ü/></third></second></first>").document;
    const PathId path = document.Path(3);
    EXPECT_EQ(document.PathText(0), "/");
    EXPECT_EQ(document.PathText(path), "//first/second/third/Ü");
    EXPECT_EQ(document.PathText(path, 23), "//first/second/third/Ü");
    EXPECT_EQ(document.PathText(path, 20), "//first/.../third/Ü"); // only whole steps stand at the end
    EXPECT_EQ(document.PathText(path, 22).size(), 22u);
}

} // namespace
} // namespace velmora
