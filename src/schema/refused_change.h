#pragma once

#include "log/runtime_error.h"
#include "schema/engine_errors.h"

#include <cstddef>
#include <string>
#include <vector>

namespace velmora {

enum class DdlObject { Table, Column, Index, Relation };

/// What a statement was about: where its name comes from in the document, and the name.
struct DdlSubject {
    std::string path; ///< of an element or attribute; empty for a key column, which the options name
    DdlObject object;
    std::string name;
    std::string rival{}; ///< who has the name already, where that is known: name and path
};

struct NamedColumn {
    std::string path; ///< empty for a key column
    std::string name;
};

/// The column for whose sake the engine refused to create `table`, where `error` and the names tell it; else the table
/// itself.
[[nodiscard]] DdlSubject RefusedPart(const DdlSubject& table, const std::vector<NamedColumn>& columns,
                                     const EngineError& error);

/// `error` with path and name of what it is about, and the option that helps.
[[nodiscard]] RuntimeError Explain(const EngineError& error, const DdlSubject& subject);

/// A value that is too long for its column.
struct LongValueOfColumn {
    std::string table;
    std::string column;
    std::size_t characters;
    std::string path;
};

/// Why the column cannot take longer values (an index or a relation, which the engine has named), and what helps.
[[nodiscard]] RuntimeError ExplainWidening(const RuntimeError& error, const LongValueOfColumn& value);

/// A record that does not fit a page even when all that can leave it has left it.
struct LargeRecord {
    std::string table;
    std::string path; ///< of the element
    std::size_t columns;
    bool isAccess97;
};

[[nodiscard]] RuntimeError ExplainTooLarge(const RuntimeError& error, const LargeRecord& record);

} // namespace velmora
