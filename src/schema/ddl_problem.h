#pragma once

#include "schema/engine_errors.h"

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

} // namespace velmora
