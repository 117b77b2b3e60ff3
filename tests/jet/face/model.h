#pragma once

#include "jet/base/error.h"

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace jet::testing {

/// What a database should hold and what it should refuse, kept in the simplest way: rows of text by column names.
///
/// Every table has the columns PKEY (counter, primary key), KEY (Long, unique) and FKEY (Long); a relation lets FKEY
/// refer to the KEY of a table.
class Model {
public:
    using Row = std::map<std::string, std::string>;
    struct Column {
        std::string name;
        std::string type;    ///< as SQL has it
        std::string index{}; ///< its name; empty = none
        bool isUnique = false;

        [[nodiscard]] bool IsText() const { return type == "String" || type == "Longtext"; }
    };
    struct Table {
        std::vector<Column> columns; ///< besides PKEY
        std::map<int, Row> rows;     ///< by PKEY
        std::string parent;          ///< where FKEY refers to; empty = nowhere
        bool cascades = false;       ///< from there to here, updates and deletes
    };
    using RowName = std::pair<std::string, int>; ///< table and PKEY

    std::map<std::string, Table> tables;

    /// A line for every column, index and relation.
    [[nodiscard]] std::set<std::string> Structure() const;
    [[nodiscard]] static std::string ColumnLine(const std::string& table, const std::string& column, bool isMemo);
    [[nodiscard]] static std::string IndexLine(const std::string& table, const std::string& index, bool isUnique);
    [[nodiscard]] static std::string RelationLine(const std::string& child, const std::string& parent, bool cascades);

    /// With which errors may `row`, a new one (PKEY `key`) or one with new values other than KEY, be refused?
    [[nodiscard]] std::set<ErrorNumber> Refusals(const std::string& table, int key, const Row& row) const;
    /// With which errors may another KEY be refused?
    [[nodiscard]] std::set<ErrorNumber> KeyRefusals(const std::string& table, int key, const std::string& value) const;
    /// Gives a row another KEY, and those that refer to it.
    void ChangeKey(const std::string& table, int key, const std::string& value);
    /// Deletes rows and all that cascades from them. False, and nothing done, when a row that stays refers to one.
    [[nodiscard]] bool Delete(std::vector<RowName> rows);
    /// Are there values twice in a column?
    [[nodiscard]] static bool HasDuplicates(const Table& table, const std::string& column);
    /// Does every FKEY of `child` stand in the KEY column of `parent`?
    [[nodiscard]] static bool Refers(const Table& child, const Table& parent);

private:
    [[nodiscard]] std::vector<RowName> Referring(const std::string& table, const std::string& value) const;
    [[nodiscard]] static bool IsTaken(const Table& table, const std::string& column, int key, const std::string& value);
};

} // namespace jet::testing
