#pragma once

#include "schema/database_session.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// A column that holds a value of an element.
struct ValueColumn {
    std::size_t part = 0; ///< of the table: 0 is its own, the others are those that continue it
    std::size_t field = 0;
    std::string name;
    bool hasTimes = false; ///< of a date column: times of day
};

/// A value of an element, an attribute or a child that is a column. Of several columns the first that is not Null has
/// it.
struct NamedValue {
    std::string name; ///< as the document writes it
    std::size_t place = 0;
    std::vector<ValueColumn> columns;
};

/// One step of what stands in an element, in its order.
struct ContentStep {
    enum class Kind { Leaf, Records, OpenWrapper, CloseWrapper };
    Kind kind;
    std::size_t index = 0; ///< Leaf: in ExportTable::leaves; Records: in ExportPlan::edges
    std::string name{};    ///< of a wrapper
};

/// A table, or one that continues it.
struct TablePart {
    std::string name;
    std::size_t keyField = 0;
};

struct ExportTable {
    std::vector<TablePart> parts;
    std::string element;                      ///< as the document writes it
    std::optional<std::size_t> parentField{}; ///< of the record around
    std::optional<std::size_t> masterField{}; ///< of its table, where elements of one name share this one
    bool isRoot = false;                      ///< it has records of document elements
    bool wasThereBefore = false;              ///< columns of it say nothing: others made them
    std::vector<NamedValue> attributes{};     ///< in their order
    std::vector<ValueColumn> text{};
    std::vector<NamedValue> leaves{};
    std::vector<ContentStep> content{};

    [[nodiscard]] const std::string& Name() const noexcept { return parts.front().name; }
};

/// The records of one table that stand in records of another.
struct ExportEdge {
    std::size_t parent = 0, child = 0; ///< in ExportPlan::tables
};

/// How a database becomes a document again, as what it knows of itself tells.
struct ExportPlan {
    std::vector<ExportTable> tables;
    std::vector<ExportEdge> edges;
    /// Tables and columns, as "[table]" or "[table].[column]", that do not say what they are.
    std::vector<std::string> unknown;
};

/// There is no way back from this database, or not to that file; what() says why.
class ExportRefused : public RuntimeError {
public:
    explicit ExportRefused(const std::string& reason)
        : RuntimeError(runtime_errors::kApplicationDefined, "No XML was written: " + reason)
    {
    }
};

/// Throws ExportRefused when there is no way back: the database was not made by "+complete", or without
/// relations, or what the way needs was taken away.
[[nodiscard]] ExportPlan MakeExportPlan(DatabaseSession& session);

} // namespace velmora
