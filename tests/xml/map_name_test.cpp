#include "xml/map_name.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(MapName, MakesANameForTheDatabase)
{
    struct Case {
        const char* tag;
        bool mapping;
        const char* name;
        const char* left; ///< in the caller's variable
    };
    const Case cases[] = {
        {"plain", true, "plain", "plain"}, {"ns:a.b", false, "a_b", "a.b"},  {"ns:a:b", false, "a:b", "a:b"},
        {"ns: b ", false, "b", "b"},       {"x:tag", true, "mapped", "tag"}, {"tag", false, "tag", "tag"},
        {"Tag", true, "Tag", "Tag"},       {"dot", true, "with_dot", "dot"}, {":", true, "", ""},
    };
    ConversionSettings settings;
    TagMap map;
    map.Add({"tag", "mapped"});
    map.Add({"tag", "second"});
    map.Add({"dot", "with.dot"});
    for (const Case& c : cases) {
        SCOPED_TRACE(c.tag);
        settings.blEnableTagMapping = c.mapping;
        std::string tag = c.tag;
        EXPECT_EQ(MapName(tag, settings, map), c.name);
        EXPECT_EQ(tag, c.left);
    }
}

} // namespace
} // namespace velmora
