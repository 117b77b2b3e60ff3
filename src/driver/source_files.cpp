#include "driver/source_files.h"

#include "platform/file_listing.h"
#include "platform/paths.h"

#include <algorithm>
#include <vector>

namespace velmora {

namespace {

/// Is `path` one of the sources, or what the user has typed as the source, which need not be there yet? A download gets
/// a name of its own.
bool IsSource(const std::string& path, const Controls& controls)
{
    if (controls.FromUrl() || path.empty())
        return false;
    const std::string& typed = controls.txtFILE_XML.text;
    const std::vector<std::string> sources = ListFiles(typed);
    return IsSameFile(path, typed) || std::any_of(sources.begin(), sources.end(), [&path](const std::string& source) {
               return IsSameFile(path, source);
           });
}

} // namespace

std::optional<std::string> ClashingFiles(const Controls& controls)
{
    const std::string& target = controls.txtFILE_MDB.text;
    const std::string& log = controls.txtFILE_LOG.text;
    const std::string& mapping = controls.txtFILE_MAPPING.text;
    const auto clash = [](std::string_view what, const std::string& path, std::string_view also) {
        return std::string(what) + " \"" + path + "\" is also the " + std::string(also) +
               "; nothing was written, name another file";
    };
    if (IsSource(target, controls))
        return clash("The target database", target, "XML file");
    if (IsSameFile(target, log))
        return clash("The target database", target, "protocol file");
    if (IsSameFile(target, mapping))
        return clash("The target database", target, "tag-mapping file");
    if (IsSource(log, controls))
        return clash("The protocol file", log, "XML file");
    if (IsSameFile(log, mapping))
        return clash("The protocol file", log, "tag-mapping file");
    return std::nullopt;
}

bool IsProtocolClashing(const Controls& controls)
{
    const std::string& log = controls.txtFILE_LOG.text;
    return IsSameFile(log, controls.txtFILE_MDB.text) || IsSameFile(log, controls.txtFILE_MAPPING.text) ||
           IsSource(log, controls);
}

} // namespace velmora
