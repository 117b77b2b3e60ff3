#pragma once

#include "import/table_sinks.h"
#include "schema/engine_errors.h"
#include "source/source.h"

#include <string>

namespace velmora {

/// Is it a rule of the table that a record has broken: an index, a relation, a column that must be filled?
[[nodiscard]] bool IsBrokenRule(const EngineError& error) noexcept;

/// `error`, with which the engine refused the record of `element` that is pending in `sink`, with the rule, the values
/// that broke it, and the record: its path, its number and its line in `source`. `help` follows unless it is empty.
[[nodiscard]] RuntimeError ExplainRefusal(const EngineError& error, TableSink& sink, ElementId element,
                                          const Document& document, const Source& source, const std::string& help);

} // namespace velmora
