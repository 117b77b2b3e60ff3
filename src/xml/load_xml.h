#pragma once

#include "settings/job.h"
#include "source/source.h"
#include "xml/document.h"
#include "xml/load_ahead.h"

#include <optional>
#include <string>

namespace velmora {

struct LoadedXml {
    Document document;    ///< empty when there is nothing to convert
    bool readable = true; ///< false: the file could not be read or is not well-formed, and a protocol line says so
    std::string problem;  ///< why it could not be read
};

/// Why the encoding that the settings name for the sources cannot be; nullopt when it can, or when they name none.
[[nodiscard]] std::optional<std::string> UnfitEncoding(const ConversionSettings& settings);

/// Begins to load `next`, the source behind the one with `document`, where the settings allow that and it pays. The two
/// share the memory that one may take.
void LoadNextAhead(const Job& job, const Source& next, const Document& document, LoadAhead& ahead);

/// Loads one XML file, unless it was loaded `ahead`. A missing file ends in the error report; one that cannot be read
/// gives an empty document and a protocol line that says where and why. Entities that the parser had to skip are
/// counted and named in one line, control characters of ISO-8859-1 in another.
[[nodiscard]] LoadedXml velLoadXML(Job& job, const Source& source, LoadAhead* ahead = nullptr);

} // namespace velmora
