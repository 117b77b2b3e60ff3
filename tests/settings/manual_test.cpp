#include "settings/options.h"

#include "support/shared.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

std::string InBackticks(std::string_view words, std::string_view value = {})
{
    std::string text;
    for (const std::string_view word : Listed(words)) {
        text.append(text.empty() ? "`" : " `").append(word).append(value).append("`");
        value = {};
    }
    return text;
}

std::string Row(const Option& option)
{
    std::string cell = InBackticks(option.words, option.value);
    std::string start = InBackticks(StartValue(option));
    std::string text(option.help);
    if (option.IsSwitch())
        start = option.startsOn ? "on" : "off";
    if (!option.offWords.empty()) {
        cell += " / " + InBackticks(option.offWords);
        text.append(" / ").append(option.offHelp);
    }
    for (std::size_t at = 0; (at = cell.find('|', at)) != cell.npos; at += 2)
        cell.insert(at, 1, '\\');
    return "| " + cell + " | " + start + " | " + text + " |\n";
}

TEST(Manual, ShowsEveryOptionAsTheTableHasIt)
{
    const std::string manual = testing::ReadFile(VELMORA_MANUAL);
    for (const OptionHeading& heading : OptionHeadings()) {
        std::string section =
            "### " + std::string(heading.text) + "\n\n| option | default | what it does |\n|---|---|---|\n";
        for (const Option& option : Options())
            if (option.group == heading.group)
                section += Row(option);
        EXPECT_NE(manual.find(section + "\n"), std::string::npos) << "the manual should hold\n" << section;
    }
}

} // namespace
} // namespace velmora
