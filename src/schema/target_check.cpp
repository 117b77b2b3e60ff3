#include "schema/target_check.h"

#include "jet/connection.h"
#include "platform/paths.h"

#include <algorithm>
#include <string_view>
#include <system_error>

namespace velmora {

namespace {

namespace fs = std::filesystem;

/// Does the name end like those of the databases that came after ours? Access goes by the name.
bool IsNamedForLaterAccess(std::string_view path)
{
    std::string end(path.substr(path.size() - std::min<std::size_t>(path.size(), 6)));
    std::ranges::transform(end, end.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; });
    return end == ".accdb" || end == ".accde";
}

} // namespace

std::optional<std::string> UnfitTarget(const ConversionSettings& settings)
{
    const std::string& target = settings.targetFile;
    const fs::path path = PathFromUtf8(NativePath(target));
    std::error_code error;
    const bool isFilled = fs::is_regular_file(path, error) && fs::file_size(path, error) > 0 && !error;
    if (isFilled && !jet::Connection::IsDatabase(path))
        return "The target \"" + target +
               "\" is no database of Access 97 to 2003; nothing was touched, name another file";
    if ((settings.blRecreateDatabase || !fs::exists(path, error)) && IsNamedForLaterAccess(target))
        return "The target \"" + target +
               "\" is named like a database of Access 2007 or later, and Access would not open one of the older "
               "formats under that name; nothing was touched, name it .mdb";
    return std::nullopt;
}

bool IsDatabase(std::string_view path)
{
    return jet::Connection::IsDatabase(PathFromUtf8(NativePath(path)));
}

bool IsTargetInUse(std::string_view path)
{
    return jet::Connection::IsInUse(PathFromUtf8(NativePath(path)));
}

} // namespace velmora
