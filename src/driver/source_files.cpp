#include "driver/source_files.h"

#include "platform/file_listing.h"
#include "platform/paths.h"

#include <vector>

namespace velmora {

namespace {

/// Is `path` one of the sources, or what the user has typed as the source, which need not be there yet?
bool IsSource(const std::string& path, const Controls& controls, const std::vector<std::string>& sources)
{
    if (IsSameFile(path, controls.txtFILE_XML.text))
        return true;
    for (const std::string& source : sources)
        if (IsSameFile(path, source))
            return true;
    return false;
}

} // namespace

std::optional<std::string> ClashingFiles(const Controls& controls)
{
    // A download gets a name of its own.
    const bool isLocal = !controls.FromUrl();
    const std::vector<std::string> sources =
        isLocal ? ListFiles(controls.txtFILE_XML.text) : std::vector<std::string>();
    const std::string& target = controls.txtFILE_MDB.text;
    const std::string& log = controls.txtFILE_LOG.text;
    const std::string& mapping = controls.txtFILE_MAPPING.text;
    const auto clash = [](std::string_view what, const std::string& path, std::string_view also) {
        return std::string(what) + " \"" + path + "\" is also the " + std::string(also) +
               "; nothing was written, name another file";
    };
    if (isLocal && IsSource(target, controls, sources))
        return clash("The target database", target, "XML file");
    if (IsSameFile(target, log))
        return clash("The target database", target, "protocol file");
    if (IsSameFile(target, mapping))
        return clash("The target database", target, "tag-mapping file");
    if (isLocal && IsSource(log, controls, sources))
        return clash("The protocol file", log, "XML file");
    if (IsSameFile(log, mapping))
        return clash("The protocol file", log, "tag-mapping file");
    return std::nullopt;
}

} // namespace velmora
