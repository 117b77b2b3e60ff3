#include "plan/complete_model.h"

#include <algorithm>

namespace velmora {

namespace {

using Kind = ColumnOrigin::Kind;

/// "//doc": of the document element, also in a table that elements of one name share.
constexpr std::string_view kRootMark = "//";

class KnownReader {
public:
    explicit KnownReader(CompleteModel& model) : model_(model) {}

    void Read();

private:
    void MakeFamilies();
    void ReadPath(std::size_t table, const TablePath& path);
    void ReadColumnsAndParts();
    void ReadColumns(Family family, const KnownTable& table);
    [[nodiscard]] PathId FindPath(const std::vector<std::string_view>& steps, std::size_t count);

    CompleteModel& model_;
};

void KnownReader::Read()
{
    MakeFamilies();
    for (std::size_t i = 0; i < model_.known.tables.size(); ++i) {
        const KnownTable& table = model_.known.tables[i];
        if (!table.origin) {
            model_.there.untoldByName.emplace(model_.known.names.key(table.name), i);
            continue;
        }
        for (const TablePath& path : table.origin->paths)
            ReadPath(i, path);
    }
    ReadColumnsAndParts();
}

/// One for each path; for each name, those that only the database has included, when these share tables.
void KnownReader::MakeFamilies()
{
    NameId names = 0;
    for (PathId path = 1; path < model_.facts.size(); ++path)
        names = std::max(names, model_.document.Paths().Name(path));
    for (const KnownTable& table : model_.known.tables)
        if (table.origin)
            for (const TablePath& path : table.origin->paths)
                for (const std::string_view step : CompleteModel::StepsOf(path.path))
                    names = std::max(names, model_.document.Intern(step));
    model_.families.resize(model_.shares ? names + std::size_t{1} : model_.facts.size());
}

void KnownReader::ReadColumnsAndParts()
{
    std::unordered_map<std::string_view, Family> familyOfTable;
    for (Family family = 0; family < model_.families.size(); ++family)
        if (model_.families[family].known != kNoKnownTable)
            familyOfTable.emplace(model_.known.tables[model_.families[family].known].name, family);
    for (std::size_t i = 0; i < model_.known.tables.size(); ++i) {
        const KnownTable& table = model_.known.tables[i];
        if (!table.origin)
            continue;
        const bool continues = !table.origin->continues.empty();
        const auto family = familyOfTable.find(continues ? table.origin->continues : table.name);
        if (family == familyOfTable.end())
            continue;
        if (continues)
            model_.families[family->second].parts.push_back(i);
        ReadColumns(family->second, table);
    }
}

/// The path of the first `count` steps, 0 when the document has no such element.
PathId KnownReader::FindPath(const std::vector<std::string_view>& steps, std::size_t count)
{
    PathId path = 0;
    for (std::size_t i = 0; i < count; ++i) {
        path = model_.document.Paths().FindChild(path, model_.document.Intern(steps[i]));
        if (path == PathTree::kNoPath)
            return 0;
    }
    return path;
}

void KnownReader::ReadPath(std::size_t table, const TablePath& known)
{
    const bool isWhole = known.path.starts_with(kRootMark);
    const std::vector<std::string_view> steps =
        CompleteModel::StepsOf(std::string_view(known.path).substr(isWhole ? kRootMark.size() : 0));
    if (steps.empty())
        return;
    const NameId last = model_.document.Intern(steps.back());
    const bool isRoot = isWhole && steps.size() == 1;
    if (isRoot ? false : isWhole == model_.shares)
        return; // made with the other setting: its elements get tables of their own
    // Where siblings have their places: below each step from the record around on.
    const std::size_t stepCount = std::min(known.places.size(), steps.size() - 1);
    for (std::size_t i = steps.size() - stepCount; i < steps.size(); ++i) {
        const Family above = model_.shares ? model_.document.Intern(steps[i - 1]) : FindPath(steps, i);
        if (above != 0 || model_.shares)
            model_.childPlaces.Know(above, model_.document.Intern(steps[i]),
                                    known.places[i - (steps.size() - known.places.size())]);
    }
    if (model_.shares) {
        model_.families[last].known = table;
        if (isRoot)
            return;
        model_.there.inside.insert(CompleteModel::Pair(model_.document.Intern(steps[steps.size() - 2]), last));
        std::string between;
        for (std::size_t i = 1; i + 1 < steps.size(); ++i)
            between.append(steps[i]).append("/");
        model_.there.wayIn.emplace(CompleteModel::Pair(model_.document.Intern(steps.front()), last), between);
        return;
    }
    const PathId path = FindPath(steps, steps.size());
    if (path == 0)
        return;
    model_.families[path].known = table;
    model_.there.stepsToParent.emplace(path, isRoot ? 0 : known.places.size());
}

void KnownReader::ReadColumns(Family family, const KnownTable& table)
{
    for (const KnownColumn& column : table.columns) {
        if (!column.origin)
            continue;
        const NameId name = model_.document.Intern(column.origin->name);
        if (column.origin->kind == Kind::Child)
            model_.childPlaces.Know(family, name, column.origin->place);
        else if (column.origin->kind == Kind::Attribute)
            model_.attributePlaces.Know(family, name, column.origin->place);
    }
}

} // namespace

void ReadWhatIsKnown(CompleteModel& model)
{
    KnownReader(model).Read();
}

} // namespace velmora
