#include "driver/way_back.h"

#include "platform/paths.h"
#include "schema/target_check.h"

namespace velmora {

std::optional<std::string> UnfitWayBack(const ConversionSettings& settings)
{
    const std::string nothing = "; nothing was written";
    const std::string& database = settings.targetFile;
    if (!settings.sourceFile.empty() || !settings.url.empty())
        return "export= is the way back, from a database to XML: no source can be named with it" + nothing;
    if (!settings.textFolder.empty())
        return "export= writes XML: no folder for text files can be named with it" + nothing;
    if (database.empty())
        return "export= needs the database, mdb=FILE" + nothing;
    if (!FileExists(database))
        return "The database \"" + database + "\" does not exist" + nothing;
    if (!IsDatabase(database))
        return "\"" + database + "\" is no database of Access 97 to 2003" + nothing;
    return std::nullopt;
}

} // namespace velmora
