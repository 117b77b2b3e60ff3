#include "settings/available_options.h"

namespace velmora {

namespace {

struct Unavailable {
    bool (*isSet)(const Controls&);
    std::string_view message;
};

constexpr Unavailable kUnavailable[] = {
    {[](const Controls& c) { return !c.txtXML_URL.text.empty(); },
     "Not available in this version: downloading the XML file (url=)"},
    {[](const Controls& c) { return !c.txtFILE_TXT.text.empty(); },
     "Not available in this version: export to delimited text files (txt=)"},
    {[](const Controls& c) { return !c.txtFILE_XML_RENAMED.text.empty(); },
     "Not available in this version: renaming the XML file after conversion (rename=)"},
};

} // namespace

std::optional<std::string_view> UnavailableOption(const Controls& controls)
{
    for (const Unavailable& option : kUnavailable)
        if (option.isSet(controls))
            return option.message;
    return std::nullopt;
}

} // namespace velmora
