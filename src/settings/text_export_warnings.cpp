#include "settings/text_export_warnings.h"

namespace velmora {

std::vector<std::string> TextExportWarnings(const ConversionSettings& settings, std::size_t sourceCount)
{
    std::vector<std::string> lines;
    if (!settings.blTextExport)
        return lines;
    if (settings.strDelimiter.empty())
        lines.emplace_back("No delimiter: all values of a line run together (delimiter= names one)");
    if (!settings.blAppend && sourceCount > 1)
        lines.emplace_back("Each source file replaces the text files of the one before (+append keeps them all)");
    return lines;
}

} // namespace velmora
