#include "jet/face/model.h"

#include <algorithm>

namespace jet::testing {

std::string Model::ColumnLine(const std::string& table, const std::string& column, bool isMemo)
{
    return table + " has the column " + column + (isMemo ? ", a memo" : "");
}

std::string Model::IndexLine(const std::string& table, const std::string& index, bool isUnique)
{
    return table + " has the index " + index + (isUnique ? ", unique" : "");
}

std::string Model::RelationLine(const std::string& child, const std::string& parent, bool cascades)
{
    return child + " refers to " + parent + (cascades ? ", cascading" : "");
}

std::set<std::string> Model::Structure() const
{
    std::set<std::string> lines;
    for (const auto& [name, table] : tables) {
        lines.insert({ColumnLine(name, "PKEY", false), IndexLine(name, name + "_PKEY", true)});
        for (const Column& column : table.columns) {
            lines.insert(ColumnLine(name, column.name, column.type == "Longtext"));
            if (!column.index.empty())
                lines.insert(IndexLine(name, column.index, column.isUnique));
        }
        if (!table.parent.empty())
            lines.insert({IndexLine(name, name + "_LINK", false), RelationLine(name, table.parent, table.cascades)});
    }
    return lines;
}

bool Model::IsTaken(const Table& table, const std::string& column, int key, const std::string& value)
{
    return !value.empty() && std::ranges::any_of(table.rows, [&](const auto& other) {
        return other.first != key && other.second.at(column) == value;
    });
}

std::set<ErrorNumber> Model::Refusals(const std::string& name, int key, const Row& row) const
{
    const Table& table = tables.at(name);
    std::set<ErrorNumber> refusals;
    for (const Column& column : table.columns)
        if (column.isUnique && IsTaken(table, column.name, key, row.at(column.name)))
            refusals.insert(ErrorNumber::DuplicateKey);
    const std::string& reference = row.at("FKEY");
    const bool refersToItself = table.parent == name && row.at("KEY") == reference;
    if (!table.parent.empty() && !reference.empty() && !refersToItself &&
        !IsTaken(tables.at(table.parent), "KEY", 0, reference))
        refusals.insert(ErrorNumber::RelatedRecordRequired);
    return refusals;
}

std::set<ErrorNumber> Model::KeyRefusals(const std::string& name, int key, const std::string& value) const
{
    const Table& table = tables.at(name);
    std::set<ErrorNumber> refusals;
    if (IsTaken(table, "KEY", key, value))
        refusals.insert(ErrorNumber::DuplicateKey);
    const std::string& before = table.rows.at(key).at("KEY");
    if (before != value && !before.empty())
        for (const auto& [child, row] : Referring(name, before))
            if (!tables.at(child).cascades)
                refusals.insert({ErrorNumber::RelatedRecords, ErrorNumber::RelatedRecordRequired});
    return refusals;
}

void Model::ChangeKey(const std::string& table, int key, const std::string& value)
{
    std::string& stored = tables.at(table).rows.at(key).at("KEY");
    if (!stored.empty())
        for (const auto& [child, row] : Referring(table, stored))
            tables.at(child).rows.at(row).at("FKEY") = value;
    stored = value;
}

bool Model::Delete(std::vector<RowName> rows)
{
    std::set<RowName> planned(rows.begin(), rows.end());
    std::vector<RowName> blockers;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto [table, key] = rows[i];
        for (const RowName& child : Referring(table, tables.at(table).rows.at(key).at("KEY")))
            if (!tables.at(child.first).cascades)
                blockers.push_back(child);
            else if (planned.insert(child).second)
                rows.push_back(child);
    }
    if (std::ranges::any_of(blockers, [&](const RowName& row) { return !planned.contains(row); }))
        return false;
    for (const auto& [table, key] : rows)
        tables.at(table).rows.erase(key);
    return true;
}

std::vector<Model::RowName> Model::Referring(const std::string& table, const std::string& value) const
{
    std::vector<RowName> names;
    if (!value.empty())
        for (const auto& [name, child] : tables)
            if (child.parent == table)
                for (const auto& [key, row] : child.rows)
                    if (row.at("FKEY") == value)
                        names.emplace_back(name, key);
    return names;
}

bool Model::HasDuplicates(const Table& table, const std::string& column)
{
    return std::ranges::any_of(
        table.rows, [&](const auto& row) { return IsTaken(table, column, row.first, row.second.at(column)); });
}

bool Model::Refers(const Table& child, const Table& parent)
{
    return std::ranges::all_of(child.rows, [&](const auto& row) {
        const std::string& reference = row.second.at("FKEY");
        return reference.empty() || IsTaken(parent, "KEY", 0, reference);
    });
}

} // namespace jet::testing
