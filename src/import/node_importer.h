#pragma once

#include "import/table_sinks.h"

namespace velmora {

/// Walks the document, which was loaded from the file `source`, once and turns it into records in the opened sinks:
/// each element that has a table becomes a record, linked to the record of the nearest element above it that has one.
/// Says in the protocol how many records were expected and written, and how many of the document's values were not:
/// gives that number.
std::int64_t ImportDocument(Job& job, DatabaseSession& session, const std::string& source, const Document& document,
                            const StructureModel& model, const TagMap& map, TableSinks& sinks);

} // namespace velmora
