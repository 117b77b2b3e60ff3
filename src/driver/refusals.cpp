#include "driver/refusals.h"

#include "driver/once.h"
#include "driver/run_files.h"
#include "driver/url_source.h"
#include "driver/way_back.h"
#include "schema/target_check.h"
#include "settings/conversion_settings.h"
#include "source/sources_of_run.h"
#include "xml/load_xml.h"

namespace velmora {

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
    return reason;
}

} // namespace velmora
