#pragma once

#include "plan/value_forms.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

// What a table or a column is in a document. A database can keep it among its properties,
// so that it knows what it is: extension and the way back go by it, not by names. Names are as the document writes
// them. Places order what stands side by side: so many other names had appeared before this one.

/// Where the records of a table stand in documents.
struct TablePath {
    /// "//doc/items/item": from the root. In a table that elements of one name share, from the record around,
    /// "doc/items/item"; only the root's is "//doc" there too.
    std::string path;
    /// Of the path's last steps, from below the record around to the element itself: elements that only wrap others
    /// have no records.
    std::vector<std::size_t> places;

    bool operator==(const TablePath&) const = default;
};

struct TableOrigin {
    std::vector<TablePath> paths; ///< of a continued table: none
    std::string continues;        ///< of a continued table: the first one

    bool operator==(const TableOrigin&) const = default;
};

struct ColumnOrigin {
    enum class Kind {
        Child,     ///< the text of the child element `name`
        Attribute, ///< the attribute `name`
        Text,      ///< the element's own text
        Overflow,  ///< what did not fit the type of column `name`
        Key,       ///< the record's key
        Parent,    ///< the key of the record around
        Master,    ///< the table of the record around
    };
    Kind kind = Kind::Child;
    std::string name{};
    std::size_t place = 0; ///< of children and attributes

    bool operator==(const ColumnOrigin&) const = default;
};

struct NamedColumnOrigin {
    std::string column;
    ColumnOrigin origin;

    bool operator==(const NamedColumnOrigin&) const = default;
};

/// A column whose type the program has chosen by the values of a document: it may choose another one.
struct ChosenType {
    std::string column;
    ColumnType type = ColumnType::Text;

    bool operator==(const ChosenType&) const = default;
};

/// What the database knows of one table.
struct Origins {
    std::optional<TableOrigin> table;
    std::vector<NamedColumnOrigin> columns; ///< those of which anything is known
    std::vector<ChosenType> types{};
};

} // namespace velmora
