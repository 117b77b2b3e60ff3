#include "settings/command_line.h"

#include "log/passwords.h"
#include "platform/paths.h"
#include "platform/program.h"
#include "settings/options.h"

namespace velmora {

namespace {

/// The piece of one option; empty when it needs none. `named`: even in the state in which it starts.
class Piece {
public:
    Piece(const Option& option, bool named, const Controls& controls)
        : option_(option), named_(named), controls_(controls)
    {
    }

    std::string operator()(CheckControl Controls::*member) const
    {
        const bool on = (controls_.*member).Checked();
        return named_ || on != option_.startsOn ? FirstWord(on ? option_.words : option_.offWords) : std::string();
    }
    std::string operator()(TextControl Controls::*member) const
    {
        const std::string& text = (controls_.*member).text;
        return named_ || text != option_.startText ? FirstWord(option_.words) + '"' + text + '"' : std::string();
    }
    std::string operator()(ComboControl Controls::*member) const
    {
        const std::size_t selected = (controls_.*member).selected;
        if (!named_ && selected == 0)
            return {};
        return FirstWord(option_.words).append(Listed(option_.value, '|').at(selected));
    }

private:
    static std::string FirstWord(std::string_view words) { return std::string(words.substr(0, words.find(' '))); }

    const Option& option_;
    bool named_;
    const Controls& controls_;
};

} // namespace

std::string BuildCommandLine(const Controls& controls)
{
    std::string line = ProgramFolder() + kPathSeparator + ProgramName() + std::string(kProgramSuffix);
    for (const Option& option : Options()) {
        if (option.writtenIf != nullptr && !option.writtenIf(controls))
            continue;
        const bool named = option.namedIf != nullptr && option.namedIf(controls);
        const std::string piece = std::visit(Piece(option, named, controls), option.control);
        if (!piece.empty())
            line += ' ' + piece;
    }
    return line;
}

Controls ShownControls(Controls controls)
{
    if (!controls.txtXML_PASSWORD.text.empty())
        controls.txtXML_PASSWORD.text = kHiddenPassword;
    controls.txtXML_URL.text = WithoutUserOfUrl(controls.txtXML_URL.text);
    return controls;
}

std::string ShownCommandLine(const Controls& controls)
{
    return BuildCommandLine(ShownControls(controls));
}

} // namespace velmora
