#include "xml_export/export_plan.h"

#include "schema/loaded_sources.h"
#include "xml_export/content_order.h"
#include "xml_export/xml_writer.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace velmora {

namespace {

using Kind = ColumnOrigin::Kind;

constexpr std::string_view kRootMark = "//";

[[noreturn]] void Refuse(const std::string& reason)
{
    throw ExportRefused(reason);
}

std::string Bracketed(std::string_view table)
{
    return std::string("[").append(table).append("]");
}

std::vector<std::string> StepsOf(std::string_view path)
{
    std::vector<std::string> steps;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        steps.emplace_back(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return steps;
}

std::string_view LastStep(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

/// The table in which the records around those of `child` stand, as its relation says; by name of the child.
std::unordered_map<std::string, std::string> ReadRelations(DatabaseSession& session)
{
    std::unordered_map<std::string, std::string> parents;
    for (jet::Rowset rows = session.OpenSchema(jet::SchemaKind::ForeignKeys, {}); !rows.Eof(); rows.MoveNext())
        parents.emplace(rows.Text("FK_TABLE_NAME"), rows.Text("PK_TABLE_NAME"));
    return parents;
}

class PlanMaker {
public:
    explicit PlanMaker(DatabaseSession& session) : session_(session) {}

    ExportPlan Run()
    {
        ReadTables();
        if (plan_.tables.empty())
            Refuse("the database was not made with +complete, so it does not know where its tables and columns stand "
                   "in a document");
        for (const auto& [name, origins] : continued_)
            AddContinued(name, origins);
        for (std::size_t i = 0; i < plan_.tables.size(); ++i)
            CheckKeys(plan_.tables[i]);
        TieTables();
        for (std::size_t i = 0; i < plan_.tables.size(); ++i) {
            ExportTable& table = plan_.tables[i];
            std::ranges::stable_sort(table.attributes, {}, &NamedValue::place);
            table.content = orders_[i].Steps();
        }
        return std::move(plan_);
    }

private:
    void ReadTables()
    {
        for (const std::string& name : session_.UserTables()) {
            if (IsLoadedTable(session_, name))
                continue;
            Origins origins = session_.OriginsOf(name);
            if (!origins.table)
                plan_.unknown.push_back(Bracketed(name));
            else if (!origins.table->continues.empty())
                continued_.emplace_back(name, std::move(origins));
            else
                AddTable(name, std::move(origins));
        }
    }

    void AddTable(const std::string& name, Origins origins)
    {
        ExportTable table;
        table.element = LastStep(origins.table->paths.front().path);
        CheckName(table.element, name);
        table.isRoot = std::ranges::any_of(origins.table->paths, [](const TablePath& path) {
            return path.path.starts_with(kRootMark) && path.path.find('/', kRootMark.size()) == std::string::npos;
        });
        byName_.emplace(name, plan_.tables.size());
        AddPart(table, name, origins);
        for (const TablePath& path : origins.table->paths)
            if (path.path.starts_with(kRootMark))
                byPath_.emplace(path.path, plan_.tables.size());
        byElement_[table.element].push_back(plan_.tables.size());
        plan_.tables.push_back(std::move(table));
        paths_.push_back(std::move(origins.table->paths));
    }

    void AddContinued(const std::string& name, const Origins& origins)
    {
        const auto first = byName_.find(origins.table->continues);
        if (first == byName_.end())
            plan_.unknown.push_back(Bracketed(name));
        else
            AddPart(plan_.tables[first->second], name, origins);
    }

    void AddPart(ExportTable& table, const std::string& name, const Origins& origins)
    {
        const Recordset rows = session_.OpenTable(name);
        std::vector<bool> isKnown(rows.FieldCount());
        const std::vector<ColumnType> types = session_.ChosenTypes(rows);
        const std::size_t part = table.parts.size();
        table.parts.push_back({name});
        bool hasKey = false;
        for (const NamedColumnOrigin& column : origins.columns) {
            const std::optional<std::size_t> field = rows.FieldIndex(column.column);
            if (!field)
                continue;
            isKnown[*field] = true;
            if (column.origin.kind == Kind::Key) {
                table.parts.back().keyField = *field;
                hasKey = true;
            } else {
                AddColumn(table, {part, *field, column.column, types[*field] == ColumnType::Time}, column.origin);
            }
        }
        // Of a table that it makes, +complete tells every column.
        table.wasThereBefore = table.wasThereBefore || std::ranges::find(isKnown, false) != isKnown.end();
        if (!hasKey)
            Refuse("table " + Bracketed(name) + " does not say which column is its key; " + WhyWithoutKeys(table));
        for (std::size_t field = 0; field < isKnown.size(); ++field)
            if (!isKnown[field])
                plan_.unknown.push_back(Bracketed(name) + '.' + Bracketed(rows.FieldName(field)));
    }

    void AddColumn(ExportTable& table, const ValueColumn& column, const ColumnOrigin& origin)
    {
        switch (origin.kind) {
        case Kind::Child:
        case Kind::Attribute: {
            CheckName(origin.name, table.Name());
            auto& values = origin.kind == Kind::Child ? table.leaves : table.attributes;
            const auto same = std::ranges::find(values, origin.name, &NamedValue::name);
            if (same != values.end())
                same->columns.push_back(column);
            else
                values.push_back({origin.name, origin.place, {column}});
            break;
        }
        case Kind::Text:
            table.text.push_back(column);
            break;
        case Kind::Overflow:
            AddOverflow(table, column, origin.name);
            break;
        case Kind::Parent:
            table.parentField = column.field;
            break;
        case Kind::Master:
            table.masterField = column.field;
            break;
        case Kind::Key:
            break;
        }
    }

    /// Beside the column whose type it did not fit.
    void AddOverflow(ExportTable& table, const ValueColumn& column, const std::string& besides)
    {
        const auto stands = [&](const ValueColumn& other) { return other.name == besides; };
        const auto addTo = [&](std::vector<ValueColumn>& columns) {
            if (!std::ranges::any_of(columns, stands))
                return false;
            columns.push_back(column);
            return true;
        };
        for (auto* values : {&table.leaves, &table.attributes})
            for (NamedValue& value : *values)
                if (addTo(value.columns))
                    return;
        if (!addTo(table.text))
            plan_.unknown.push_back(Bracketed(table.Name()) + '.' + Bracketed(column.name));
    }

    /// Somebody may have written into the property.
    static void CheckName(std::string_view name, const std::string& table)
    {
        if (!IsXmlName(name))
            Refuse("table " + Bracketed(table) + " tells of the name \"" + std::string(name) +
                   "\", which no element and no attribute can have");
    }

    static std::string WhyWithoutKeys(const ExportTable& table)
    {
        return table.wasThereBefore
                   ? "it was there before a run with +complete filled it: only a database that +complete has made "
                     "can be written as XML"
                   : "the database was made with -relations";
    }

    void CheckKeys(const ExportTable& table)
    {
        if (!table.isRoot && !table.parentField)
            Refuse("table " + Bracketed(table.Name()) + " does not say which record its own stand in; " +
                   WhyWithoutKeys(table));
        for (const TablePart& part : table.parts)
            CheckIndex(part.name, part.keyField);
        if (table.parentField && !IsOnlyRoot(table))
            CheckIndex(table.Name(), *table.parentField);
    }

    /// The records of such a table stand in no others: nobody looks for them.
    [[nodiscard]] static bool IsOnlyRoot(const ExportTable& table) { return table.isRoot && !table.masterField; }

    void CheckIndex(const std::string& table, std::size_t field)
    {
        Recordset rows = session_.OpenTable(table);
        const std::string column = Bracketed(table) + '.' + Bracketed(rows.FieldName(field));
        if (!rows.IsLong(field))
            Refuse("column " + column + " holds no keys any more: it is no whole number (Long)");
        if (!rows.WalkBy(field))
            Refuse("the index on column " + column + " alone is missing; make it again in Access");
    }

    void TieTables()
    {
        orders_.resize(plan_.tables.size());
        for (std::size_t i = 0; i < plan_.tables.size(); ++i)
            for (std::size_t leaf = 0; leaf < plan_.tables[i].leaves.size(); ++leaf)
                orders_[i].AddLeaf(plan_.tables[i].leaves[leaf], leaf);
        const std::unordered_map<std::string, std::string> relations = ReadRelations(session_);
        for (std::size_t child = 0; child < plan_.tables.size(); ++child)
            for (const TablePath& path : paths_[child])
                TieToParents(child, path, relations);
    }

    void TieToParents(std::size_t child, const TablePath& path,
                      const std::unordered_map<std::string, std::string>& relations)
    {
        if (!path.path.starts_with(kRootMark)) {
            const std::vector<std::string> steps = StepsOf(path.path);
            const auto parents = byElement_.find(steps.front());
            if (steps.size() < 2 || parents == byElement_.end())
                return;
            for (const std::size_t parent : parents->second)
                Tie(parent, child, {steps.begin() + 1, steps.end()}, path.places);
            return;
        }
        std::optional<std::string> around;
        if (const auto relation = relations.find(plan_.tables[child].Name()); relation != relations.end())
            if (const auto related = byName_.find(relation->second); related != byName_.end())
                around = PathAround(path.path, related->second);
        if (!around)
            around = NearestPath(path.path);
        if (around)
            Tie(byPath_.at(*around), child, StepsOf(std::string_view(path.path).substr(around->size() + 1)),
                path.places);
    }

    /// The path of the table `parent` in which `path` lies.
    [[nodiscard]] std::optional<std::string> PathAround(const std::string& path, std::size_t parent) const
    {
        for (const TablePath& own : paths_[parent])
            if (path.starts_with(own.path) && path.size() > own.path.size() && path[own.path.size()] == '/')
                return own.path;
        return std::nullopt;
    }

    [[nodiscard]] std::optional<std::string> NearestPath(std::string path) const
    {
        for (std::size_t end = path.rfind('/'); end != std::string::npos && end > kRootMark.size();
             end = path.rfind('/')) {
            path.resize(end);
            if (byPath_.contains(path))
                return path;
        }
        return std::nullopt;
    }

    /// `steps` lead from the record around to the element; all but the last have no records.
    void Tie(std::size_t parent, std::size_t child, const std::vector<std::string>& steps,
             const std::vector<std::size_t>& places)
    {
        // Between two shared tables one way in is all that the records tell of.
        if (!edges_.emplace(parent, child).second)
            return;
        for (const std::string& step : steps)
            CheckName(step, plan_.tables[child].Name());
        orders_[parent].AddRecords(steps, places, plan_.edges.size());
        plan_.edges.push_back({parent, child});
    }

    DatabaseSession& session_;
    ExportPlan plan_;
    std::vector<std::vector<TablePath>> paths_; ///< by table, as what follows
    std::vector<ContentOrder> orders_;
    std::vector<std::pair<std::string, Origins>> continued_;
    std::unordered_map<std::string, std::size_t> byName_, byPath_;
    std::unordered_map<std::string, std::vector<std::size_t>> byElement_;
    std::set<std::pair<std::size_t, std::size_t>> edges_;
};

} // namespace

ExportPlan MakeExportPlan(DatabaseSession& session)
{
    return PlanMaker(session).Run();
}

} // namespace velmora
