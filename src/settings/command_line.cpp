#include "settings/command_line.h"

#include "settings/options.h"

#include <algorithm>
#include <string>

namespace velmora {

namespace {

constexpr char kDelimiter = ' ';

std::string_view Trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(kDelimiter);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kDelimiter) - first + 1);
}

bool IsListed(std::string_view word, std::string_view words)
{
    const std::vector<std::string_view> all = Listed(words);
    return std::find(all.begin(), all.end(), word) != all.end();
}

std::string_view WithoutQuotes(std::string_view value)
{
    const bool isQuoted = value.size() >= 2 && value.front() == '"' && value.back() == '"';
    return isQuoted ? value.substr(1, value.size() - 2) : value;
}

/// What a token asks of the control of the option that it names.
class Setter {
public:
    Setter(const Option& option, bool on, std::string_view value, Controls& controls)
        : option_(option), on_(on), value_(value), controls_(controls)
    {
    }

    void operator()(CheckControl Controls::*member) const
    {
        CheckControl& box = controls_.*member;
        box.value = on_ ? CheckState::Checked : CheckState::Unchecked;
        box.visible = box.visible || on_;
    }
    void operator()(TextControl Controls::*member) const { (controls_.*member).text = value_; }
    /// What is none of the choices stands for the last one.
    void operator()(ComboControl Controls::*member) const
    {
        const std::vector<std::string_view> choices = Listed(option_.value, '|');
        const auto chosen = std::find(choices.begin(), choices.end() - 1, value_);
        (controls_.*member).selected = static_cast<std::size_t>(chosen - choices.begin());
    }

private:
    const Option& option_;
    bool on_;
    std::string_view value_;
    Controls& controls_;
};

/// False when `token` names no option.
bool ApplyToken(std::string_view token, Controls& controls)
{
    // A key is named by what stands before its "=", that sign included; no switch holds one.
    const std::size_t equals = token.find('=');
    const bool isKey = equals != token.npos;
    const std::string word = LowerCase(isKey ? token.substr(0, equals + 1) : Trimmed(token));
    const std::string_view value = isKey ? WithoutQuotes(token.substr(equals + 1)) : std::string_view();
    for (const Option& option : Options()) {
        const bool on = IsListed(word, option.words);
        if (!on && !IsListed(word, option.offWords))
            continue;
        std::visit(Setter(option, on, value, controls), option.control);
        return true;
    }
    return false;
}

} // namespace

void ApplyCommandLine(std::string_view line, Controls& controls,
                      const std::function<void(std::string_view token)>& reportUnknown)
{
    const std::string_view trimmed = Trimmed(line);
    if (trimmed.empty())
        return;
    for (const std::string_view token : SplitCommandLine(trimmed, kDelimiter))
        if (!ApplyToken(token, controls))
            reportUnknown(token);
}

} // namespace velmora
