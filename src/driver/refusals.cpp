#include "driver/refusals.h"

#include "driver/once.h"
#include "driver/run_files.h"
#include "driver/url_source.h"
#include "platform/paths.h"
#include "schema/target_check.h"
#include "settings/threads.h"
#include "source/sources_of_run.h"
#include "xml/load_xml.h"

namespace velmora {

namespace {

/// Why a run that writes a database as XML makes no sense as it is asked for.
std::optional<std::string> UnfitWayBack(const ConversionSettings& settings)
{
    const std::string nothing = "; nothing was written";
    const std::string& database = settings.targetFile;
    if (!settings.sourceFile.empty() || !settings.url.empty())
        return "export= is the way back, from a database to XML: no source can be named with it" + nothing;
    if (!settings.textFolder.empty())
        return "export= writes XML: no folder for text files can be named with it" + nothing;
    if (settings.blPreview)
        return "preview shows what would become of a database, and export= only reads one" + nothing;
    if (database.empty())
        return "export= needs the database, mdb=FILE" + nothing;
    if (!FileExists(database))
        return "The database \"" + database + "\" does not exist" + nothing;
    if (!IsDatabase(database))
        return "\"" + database + "\" is no database of Access 97 to 2003" + nothing;
    return std::nullopt;
}

} // namespace

std::optional<std::string> WhyNotToBegin(const ConversionSettings& settings)
{
    std::optional<std::string> reason = ClashingFiles(settings);
    if (!reason)
        reason = IsWayBack(settings) ? UnfitWayBack(settings) : UnfitTarget(settings);
    if (!reason)
        reason = UnfitDownload(settings);
    if (!reason && !IsWayBack(settings))
        reason = UnfitOnce(settings);
    if (!reason)
        reason = UnfitSources(settings);
    if (!reason)
        reason = UnfitEncoding(settings);
    if (!reason)
        reason = UnfitThreads(settings);
    return reason;
}

} // namespace velmora
