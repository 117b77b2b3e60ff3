#pragma once

#include "settings/job.h"
#include "xml/document.h"

#include <string>

namespace velmora {

struct LoadedXml {
    Document document;    ///< empty when there is nothing to convert
    bool readable = true; ///< false: the file could not be read or is not well-formed, and a protocol line says so
    std::string problem;  ///< why it could not be read
};

/// Loads one XML file. A missing file ends in the error report; one that cannot be read gives an empty document and a
/// protocol line that says where and why. Entities that the parser had to skip are counted and named in one line,
/// control characters of ISO-8859-1 in another.
[[nodiscard]] LoadedXml velLoadXML(Job& job, const std::string& path);

} // namespace velmora
