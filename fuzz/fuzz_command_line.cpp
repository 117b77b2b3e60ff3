// Applies arbitrary text as a command line. The line that is built from the controls must set them to the same again.
#include "input_file.h"
#include "platform/paths.h"
#include "platform/program.h"
#include "settings/command_line.h"
#include "settings/options.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <variant>

namespace {

using namespace velmora;

/// A value with a double quote in it cannot be told in a line.
bool HasQuote(const Controls& controls)
{
    return std::ranges::any_of(Options(), [&](const Option& option) {
        const auto* text = std::get_if<TextControl Controls::*>(&option.control);
        return text != nullptr && (controls.**text).text.find('"') != std::string::npos;
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Controls controls;
    const auto ignore = [](std::string_view) {};
    try {
        ApplyCommandLine({reinterpret_cast<const char*>(data), size}, controls, ignore);
    } catch (const CommandLineError&) {
        return 0;
    }
    if (HasQuote(controls))
        return 0;
    const std::string line = BuildCommandLine(controls);
    const std::string program = ProgramFolder() + kPathSeparator + ProgramName();
    fuzzing::Check(line.starts_with(program));
    Controls again;
    ApplyCommandLine(std::string_view(line).substr(program.size()), again, ignore);
    fuzzing::Check(BuildCommandLine(again) == line);
    return 0;
}
