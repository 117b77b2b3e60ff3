#include "plan/complete_rules.h"

#include "plan/name_set.h"
#include "plan/plain_names.h"
#include "plan/sibling_places.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace velmora {

namespace {

using Kind = ColumnOrigin::Kind;

/// Elements that have one table when they are records: those of one path, or, with one table per element, of one name.
using Family = std::uint32_t;

constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
constexpr std::size_t kWholePath = std::numeric_limits<std::size_t>::max();
/// "//doc": of the document element, also in a table that elements of one name share.
constexpr std::string_view kRootMark = "//";

/// A value that elements of a family can have.
struct Want {
    Kind kind = Kind::Text;
    NameId name = 0;   ///< of the child or attribute
    PathId origin = 0; ///< where it first appeared
    bool isLong = false;
    ValuePlace place{};
};

/// What is planned for a family's records.
struct FamilyPlan {
    PathId first = 0; ///< its first path whose elements are records; 0: none
    bool hasRoot = false;
    std::vector<PathId> paths{}; ///< of its records
    std::vector<Want> wants{};
    std::size_t known = kNone;        ///< table of the database
    std::vector<std::size_t> parts{}; ///< tables that continue it there
    TableNumber table = kNoTable;     ///< none: its elements are passed through
};

std::uint64_t Pair(std::uint32_t high, std::uint32_t low)
{
    return std::uint64_t{high} << 32 | low;
}

std::vector<std::string_view> StepsOf(std::string_view path)
{
    std::vector<std::string_view> steps;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        steps.push_back(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return steps;
}

std::string Bracketed(std::string_view name)
{
    return std::string("[").append(name).append("]");
}

class CompleteRules {
public:
    CompleteRules(Document& document, const std::vector<PathFacts>& facts, const KnownDatabase& known,
                  const ConversionSettings& settings, const TagMap& map)
        : document_(document), facts_(facts), known_(known), settings_(settings), map_(map),
          shares_(settings.blOneTablePerElement)
    {
    }

    MappingPlan Plan();

private:
    // What the database knows.
    void ReadKnown();
    void ReadKnownPath(std::size_t table, const TablePath& path);
    void ReadKnownColumns(Family family, const KnownTable& table);
    [[nodiscard]] PathId FindPath(const std::vector<std::string_view>& steps, std::size_t count);

    // What is a record, and with which values.
    [[nodiscard]] bool IsRecord(PathId path) const;
    [[nodiscard]] bool HasAttributes(PathId path) const
    {
        return settings_.blImportAttributes && !facts_[path].attributes.empty();
    }
    void FindRecords();
    void CollectWants(PathId path);
    void AddWant(Family family, Want want);
    void FindWrappers();
    [[nodiscard]] bool HasOneWayIn();
    [[nodiscard]] bool NeedsNoTable(const FamilyPlan& family) const;
    void FindRecordsAround();

    // Tables, columns and their names.
    void ReserveNames();
    void PlanTables();
    void PlanTable(Family number);
    void ChooseTable(FamilyPlan& family);
    void ChooseKeys(PlannedTable& table, const FamilyPlan& family, NameSet& columns) const;
    void NameLinks(PlannedTable& table);
    void PlanColumns(Family number, NameSet& names);
    void PlanPart(TableNumber first, std::string name);
    void TellOfTable(Family number, PlannedTable& table);
    void PlanPath(PathId path);

    [[nodiscard]] Family FamilyOf(PathId path) const { return shares_ ? document_.Paths().Name(path) : path; }
    [[nodiscard]] PathId ParentOf(PathId path) const { return document_.Paths().Parent(path); }
    [[nodiscard]] std::string_view TagOf(PathId path) const { return document_.NameText(document_.Paths().Name(path)); }
    [[nodiscard]] std::string PathText(PathId path) const { return document_.PathText(path, kWholePath); }
    [[nodiscard]] std::string WantedName(const Want& want, Family family) const;
    [[nodiscard]] std::string RelativePath(PathId path) const;
    [[nodiscard]] ColumnOrigin OriginOf(const Want& want, Family family) const;
    [[nodiscard]] const ValuePlace& PlaceOf(Family family, Kind kind, NameId name) const;
    void NoteName(const std::string& what, const std::string& name, const std::string& wanted, PathId path);

    Document& document_;
    const std::vector<PathFacts>& facts_;
    const KnownDatabase& known_;
    const ConversionSettings& settings_;
    const TagMap& map_;
    const bool shares_;
    MappingPlan plan_;

    std::vector<FamilyPlan> families_;
    std::unordered_map<std::uint64_t, std::size_t> wants_[3]; ///< by kind; family and name: position in its wants
    std::vector<bool> isRecord_;                              ///< by path
    std::vector<PathId> around_;                              ///< by path: that of the record around, 0: none
    SiblingPlaces childPlaces_, attributePlaces_;

    std::unordered_map<PathId, std::size_t> stepsToParent_;      ///< of paths that the database knows as records
    std::unordered_set<std::uint64_t> knownInside_;              ///< names of parent and element, in shared tables
    std::unordered_map<std::string, std::size_t> unknownByName_; ///< tables that say nothing of themselves, by key
    std::unordered_map<std::uint64_t, std::string> wayIn_; ///< names of record around and element: the tags between
    NameSet tableNames_{known_.names};
    NameSet relationNames_{known_.names};
    NameSet indexNames_{known_.names}; ///< those of all tables: people tell them apart by their names
};

MappingPlan CompleteRules::Plan()
{
    plan_.importsAttributes = settings_.blImportAttributes;
    plan_.keepsEmptyAttributes = true;
    plan_.widensByTag = false;
    plan_.importsEverything = true;
    ReadKnown();
    FindRecords();
    FindWrappers();
    FindRecordsAround();
    ReserveNames();
    PlanTables();
    plan_.paths.resize(facts_.size());
    for (PathId path = 1; path < facts_.size(); ++path)
        if (facts_[path].count > 0)
            PlanPath(path);
    return std::move(plan_);
}

// ---- What the database knows

void CompleteRules::ReadKnown()
{
    std::unordered_map<std::string_view, Family> familyOfTable;
    const auto count = known_.tables.size();
    NameId names = 0;
    for (PathId path = 1; path < facts_.size(); ++path)
        names = std::max(names, document_.Paths().Name(path));
    for (const KnownTable& table : known_.tables)
        if (table.origin)
            for (const TablePath& path : table.origin->paths)
                for (const std::string_view step : StepsOf(path.path))
                    names = std::max(names, document_.Intern(step));
    families_.resize(shares_ ? names + std::size_t{1} : facts_.size());
    for (std::size_t i = 0; i < count; ++i) {
        const KnownTable& table = known_.tables[i];
        if (!table.origin) {
            unknownByName_.emplace(known_.names.key(table.name), i);
            continue;
        }
        for (const TablePath& path : table.origin->paths)
            ReadKnownPath(i, path);
    }
    for (Family family = 0; family < families_.size(); ++family)
        if (families_[family].known != kNone)
            familyOfTable.emplace(known_.tables[families_[family].known].name, family);
    for (std::size_t i = 0; i < count; ++i) {
        const KnownTable& table = known_.tables[i];
        if (!table.origin)
            continue;
        const bool continues = !table.origin->continues.empty();
        const auto family = familyOfTable.find(continues ? table.origin->continues : table.name);
        if (family == familyOfTable.end())
            continue;
        if (continues)
            families_[family->second].parts.push_back(i);
        ReadKnownColumns(family->second, table);
    }
}

/// The path of the first `count` steps, 0 when the document has no such element.
PathId CompleteRules::FindPath(const std::vector<std::string_view>& steps, std::size_t count)
{
    PathId path = 0;
    for (std::size_t i = 0; i < count; ++i) {
        path = document_.Paths().FindChild(path, document_.Intern(steps[i]));
        if (path == PathTree::kNoPath)
            return 0;
    }
    return path;
}

void CompleteRules::ReadKnownPath(std::size_t table, const TablePath& known)
{
    const bool isWhole = known.path.starts_with(kRootMark);
    const std::vector<std::string_view> steps =
        StepsOf(std::string_view(known.path).substr(isWhole ? kRootMark.size() : 0));
    if (steps.empty())
        return;
    const NameId last = document_.Intern(steps.back());
    const bool isRoot = isWhole && steps.size() == 1;
    if (isRoot ? false : isWhole == shares_)
        return; // made with the other setting: its elements get tables of their own
    // Where siblings have their places: below each step from the record around on.
    const std::size_t stepCount = std::min(known.places.size(), steps.size() - 1);
    for (std::size_t i = steps.size() - stepCount; i < steps.size(); ++i) {
        const Family above = shares_ ? document_.Intern(steps[i - 1]) : FindPath(steps, i);
        if (above != 0 || shares_)
            childPlaces_.Know(above, document_.Intern(steps[i]),
                              known.places[i - (steps.size() - known.places.size())]);
    }
    if (shares_) {
        families_[last].known = table;
        if (isRoot)
            return;
        knownInside_.insert(Pair(document_.Intern(steps[steps.size() - 2]), last));
        std::string between;
        for (std::size_t i = 1; i + 1 < steps.size(); ++i)
            between.append(steps[i]).append("/");
        wayIn_.emplace(Pair(document_.Intern(steps.front()), last), between);
        return;
    }
    const PathId path = FindPath(steps, steps.size());
    if (path == 0)
        return;
    families_[path].known = table;
    stepsToParent_.emplace(path, isRoot ? 0 : known.places.size());
}

void CompleteRules::ReadKnownColumns(Family family, const KnownTable& table)
{
    for (const KnownColumn& column : table.columns) {
        if (!column.origin)
            continue;
        const NameId name = document_.Intern(column.origin->name);
        if (column.origin->kind == Kind::Child)
            childPlaces_.Know(family, name, column.origin->place);
        else if (column.origin->kind == Kind::Attribute)
            attributePlaces_.Know(family, name, column.origin->place);
    }
}

// ---- What is a record, and with which values

bool CompleteRules::IsRecord(PathId path) const
{
    const PathFacts& facts = facts_[path];
    if (ParentOf(path) == 0 || facts.hasChildren || facts.isRepeated || HasAttributes(path))
        return true;
    if (!shares_)
        return families_[path].known != kNone;
    return knownInside_.contains(Pair(document_.Paths().Name(ParentOf(path)), document_.Paths().Name(path)));
}

void CompleteRules::FindRecords()
{
    isRecord_.resize(facts_.size());
    for (PathId path = 1; path < facts_.size(); ++path) {
        if (facts_[path].count == 0)
            continue;
        isRecord_[path] = IsRecord(path);
        if (ParentOf(path) != 0)
            childPlaces_.Note(FamilyOf(ParentOf(path)), document_.Paths().Name(path));
        CollectWants(path);
    }
}

void CompleteRules::CollectWants(PathId path)
{
    const PathFacts& facts = facts_[path];
    if (!isRecord_[path]) {
        AddWant(FamilyOf(ParentOf(path)), {Kind::Child, document_.Paths().Name(path), path, facts.hasLongText});
        return;
    }
    const Family number = FamilyOf(path);
    FamilyPlan& family = families_[number];
    family.first = family.first == 0 ? path : family.first;
    family.paths.push_back(path);
    family.hasRoot = family.hasRoot || ParentOf(path) == 0;
    if (facts.hasText || (!facts.hasChildren && !HasAttributes(path)))
        AddWant(number, {Kind::Text, 0, path, facts.hasLongText});
    if (!settings_.blImportAttributes)
        return;
    for (const AttributeFacts& attribute : facts.attributes) {
        attributePlaces_.Note(number, attribute.name);
        AddWant(number, {Kind::Attribute, attribute.name, path, attribute.isLong});
    }
}

void CompleteRules::AddWant(Family number, Want want)
{
    std::vector<Want>& wants = families_[number].wants;
    const auto [at, isNew] =
        wants_[static_cast<std::size_t>(want.kind)].try_emplace(Pair(number, want.name), wants.size());
    if (isNew)
        wants.push_back(want);
    else
        wants[at->second].isLong = wants[at->second].isLong || want.isLong;
}

bool CompleteRules::NeedsNoTable(const FamilyPlan& family) const
{
    if (!family.wants.empty() || family.known != kNone)
        return false;
    // Without keys and values a table would have no column at all.
    return !settings_.blCreateTableRelations || (settings_.blSkipEmptyWrappingTags && !family.hasRoot);
}

/// Families with a table get the mark for one; its number comes later.
void CompleteRules::FindWrappers()
{
    for (FamilyPlan& family : families_)
        family.table = family.first != 0 && !NeedsNoTable(family) ? 1 : kNoTable;
    while (shares_ && settings_.blCreateTableRelations && !HasOneWayIn())
        ;
}

/// From a record of one shared table to those of another leads one way only: else nobody could tell by the records
/// through which wrapping tags. Where a second one appears its tags become records; false then.
bool CompleteRules::HasOneWayIn()
{
    std::unordered_map<std::uint64_t, std::string> wayIn = wayIn_;
    for (PathId path = 1; path < facts_.size(); ++path) {
        if (facts_[path].count == 0 || !isRecord_[path] || families_[FamilyOf(path)].table == kNoTable)
            continue;
        std::vector<PathId> between;
        PathId above = ParentOf(path);
        for (; above != 0 && families_[FamilyOf(above)].table == kNoTable; above = ParentOf(above))
            between.push_back(above);
        if (above == 0)
            continue;
        std::string tags;
        for (auto wrapper = between.rbegin(); wrapper != between.rend(); ++wrapper)
            tags.append(TagOf(*wrapper)).append("/");
        const auto [way, isNew] = wayIn.try_emplace(Pair(FamilyOf(above), FamilyOf(path)), tags);
        if (isNew || way->second == tags)
            continue;
        for (const PathId wrapper : between)
            families_[FamilyOf(wrapper)].table = 1;
        if (!between.empty())
            return false;
        // It stands there without tags between: those of the way that came first become records.
        bool hasChanged = false;
        for (const std::string_view tag : StepsOf(way->second)) {
            FamilyPlan& wrapper = families_[document_.Intern(tag)];
            hasChanged = hasChanged || (wrapper.table == kNoTable && wrapper.first != 0);
            wrapper.table = wrapper.first != 0 ? 1 : kNoTable;
        }
        if (hasChanged)
            return false;
    }
    return true;
}

void CompleteRules::FindRecordsAround()
{
    around_.resize(facts_.size());
    for (PathId path = 1; path < facts_.size(); ++path) {
        const PathId parent = ParentOf(path);
        if (facts_[path].count == 0 || parent == 0)
            continue;
        around_[path] = families_[FamilyOf(parent)].table != kNoTable ? parent : around_[parent];
        // Records that are there refer to the one that was around them then.
        const auto known = stepsToParent_.find(path);
        if (known == stepsToParent_.end())
            continue;
        PathId above = path;
        for (std::size_t i = 0; i < known->second && above != 0; ++i)
            above = ParentOf(above);
        if (above != 0 && above != path && families_[above].known != kNone)
            around_[path] = above;
    }
}

// ---- Tables, columns and their names

void CompleteRules::ReserveNames()
{
    for (const KnownTable& table : known_.tables)
        tableNames_.Reserve(table.name);
    for (const std::string& name : known_.otherNames)
        tableNames_.Reserve(name);
    for (const std::string& name : known_.relations)
        relationNames_.Reserve(name);
    for (const std::string& name : known_.indexes)
        indexNames_.Reserve(name);
}

void CompleteRules::PlanTables()
{
    for (PathId path = 1; path < facts_.size(); ++path) {
        const Family number = FamilyOf(path);
        if (families_[number].first != path)
            continue;
        if (families_[number].table != kNoTable)
            PlanTable(number);
    }
    for (PlannedTable& table : plan_.tables) // a parent's first path may stand behind its child's
        if (table.path != 0 && table.continues == kNoTable && around_[table.path] != 0)
            table.parent = families_[FamilyOf(around_[table.path])].table;
}

void CompleteRules::PlanTable(Family number)
{
    FamilyPlan& family = families_[number];
    family.table = static_cast<TableNumber>(plan_.tables.size());
    ChooseTable(family);
    PlannedTable& table = plan_.tables.emplace_back();
    table.path = family.first;
    for (PathId above = ParentOf(family.first); above != 0; above = ParentOf(above))
        ++table.level;
    table.isShared = shares_;
    table.indexesParents = settings_.blCreateTableRelations && (shares_ || ParentOf(family.first) != 0);
    table.hasTextFile = table.keepsTextOfRun = true;
    const std::string wanted =
        settings_.strTablePrefix + MappedName(TagOf(family.first), settings_, map_) + settings_.strTableSuffix;
    NameSet columns(known_.names);
    if (family.known != kNone) {
        table.name = known_.tables[family.known].name;
    } else {
        table.name = tableNames_.Take(wanted);
        NoteName("Table " + Bracketed(table.name), table.name, wanted, family.first);
    }
    ChooseKeys(table, family, columns);
    NameLinks(table);
    TellOfTable(number, table);
    PlanColumns(number, columns); // may add tables
}

/// A table that says nothing of itself is taken by its name, by the first that comes.
void CompleteRules::ChooseTable(FamilyPlan& family)
{
    if (family.known != kNone)
        return;
    const std::string wanted =
        settings_.strTablePrefix + MappedName(TagOf(family.first), settings_, map_) + settings_.strTableSuffix;
    const auto found = unknownByName_.find(known_.names.key(known_.names.valid(wanted, 64)));
    if (found == unknownByName_.end())
        return;
    family.known = found->second;
    unknownByName_.erase(found);
}

/// Those of a table that is there are known by what they are, else by their names.
void CompleteRules::ChooseKeys(PlannedTable& table, const FamilyPlan& family, NameSet& columns) const
{
    PlannedKeys& keys = table.keys;
    const bool makesKeys = settings_.blCreateTableRelations;
    if (family.known != kNone) {
        const KnownTable& there = known_.tables[family.known];
        const auto choose = [&](Kind kind, std::string_view name) {
            for (const KnownColumn& column : there.columns)
                if (column.origin ? column.origin->kind == kind : !there.origin && column.name == name)
                    return column.name;
            return std::string();
        };
        keys.primary = choose(Kind::Key, settings_.strKeyPrimary);
        keys.foreign = choose(Kind::Parent, settings_.strKeyForeign);
        keys.master = choose(Kind::Master, kMasterTable);
        for (const KnownColumn& column : there.columns)
            columns.Reserve(column.name);
        for (const std::size_t part : family.parts)
            for (const KnownColumn& column : known_.tables[part].columns)
                columns.Reserve(column.name);
    }
    keys.makesPrimary = makesKeys && family.known == kNone;
    keys.makesForeign = makesKeys && family.known == kNone;
    keys.makesMaster = makesKeys && shares_ && family.known == kNone;
    keys.addsMaster = makesKeys && shares_ && family.known != kNone && keys.master.empty();
    // A continued table has its key whatever was asked for: without it nobody could tell which records are one.
    const std::size_t values = family.wants.size();
    if (!makesKeys && family.known == kNone && values > known_.maxDataColumns)
        keys.makesPrimary = true;
    if (keys.makesPrimary)
        keys.primary = columns.Take(settings_.strKeyPrimary);
    if (keys.makesForeign)
        keys.foreign = columns.Take(settings_.strKeyForeign);
    if (keys.makesMaster || keys.addsMaster)
        keys.master = columns.Take(kMasterTable);
    columns.Reserve(kMasterTable); // which says the same wherever it stands
}

/// A relation stands among the indexes of its table as well.
void CompleteRules::NameLinks(PlannedTable& table)
{
    do
        table.relation = relationNames_.Take(table.name + "_LINK");
    while (indexNames_.Contains(table.relation));
    indexNames_.Reserve(table.relation);
    table.keys.primaryIndex = indexNames_.Take(table.name + "_" + table.keys.primary);
    table.keys.foreignIndex = indexNames_.Take(table.name + "_" + table.keys.foreign);
}

void CompleteRules::TellOfTable(Family number, PlannedTable& table)
{
    const FamilyPlan& family = families_[number];
    TableOrigin origin;
    if (family.known != kNone && known_.tables[family.known].origin)
        origin = *known_.tables[family.known].origin;
    const std::size_t before = origin.paths.size();
    std::unordered_set<std::string> paths;
    for (const TablePath& path : origin.paths)
        paths.insert(path.path);
    const auto add = [&](PathId path) {
        const bool isRoot = ParentOf(path) == 0;
        TablePath told{shares_ && !isRoot ? RelativePath(path) : PathText(path), {}};
        if (!paths.insert(told.path).second)
            return;
        for (PathId step = path; step != around_[path]; step = ParentOf(step))
            told.places.insert(
                told.places.begin(),
                ParentOf(step) == 0 ? 0 : childPlaces_.Of(FamilyOf(ParentOf(step)), document_.Paths().Name(step)));
        origin.paths.push_back(std::move(told));
    };
    if (!shares_) {
        if (before == 0)
            add(family.first);
    } else {
        for (const PathId path : family.paths)
            add(path);
    }
    if (origin.paths.size() != before)
        table.told = std::move(origin);
}

std::string CompleteRules::RelativePath(PathId path) const
{
    std::string text(TagOf(path));
    for (PathId step = path; step != around_[path]; step = ParentOf(step))
        if (ParentOf(step) != 0)
            text.insert(0, std::string(TagOf(ParentOf(step))).append("/"));
    return text;
}

// ---- Columns

/// The columns of one table and of those that continue it, while they are planned.
class ColumnLayout {
public:
    struct Part {
        const KnownTable* known = nullptr;
        std::vector<PlannedColumn> columns{};
        std::size_t count = 0; ///< of data columns, those that are there included
    };
    struct Position {
        std::size_t part = 0, index = 0;
    };
    ColumnLayout(std::size_t maxColumns, NameSet& names) : maxColumns_(maxColumns), names_(names)
    {
        parts_.emplace_back();
    }

    /// `table` is the first part, or the next one.
    void AddKnown(const KnownTable& table, const NameRules& rules)
    {
        if (parts_.back().known != nullptr)
            parts_.emplace_back();
        Part& part = parts_.back();
        part.known = &table;
        for (const KnownColumn& column : table.columns) {
            if (column.origin)
                byOrigin_.emplace(OriginKey(*column.origin), Found{parts_.size() - 1, &column});
            else if (!table.origin)
                byName_.emplace(rules.key(column.name), Found{parts_.size() - 1, &column});
            const bool isKey =
                column.origin && (column.origin->kind == Kind::Key || column.origin->kind == Kind::Parent ||
                                  column.origin->kind == Kind::Master);
            part.count += isKey ? 0 : 1;
        }
    }

    /// The column that is there for it; nullptr: none.
    std::optional<Position> PlaceKnown(const ColumnOrigin& origin, const std::string& nameKey, PlannedColumn column)
    {
        const auto known = byOrigin_.find(OriginKey(origin));
        if (known != byOrigin_.end())
            return Put(known->second, std::move(column), std::nullopt);
        const auto named = byName_.find(nameKey);
        if (named == byName_.end())
            return std::nullopt;
        const Found found = named->second;
        byName_.erase(named); // for the first that comes
        return Put(found, std::move(column), origin);
    }
    Position PlaceNew(PlannedColumn column)
    {
        if (parts_.back().count >= maxColumns_)
            parts_.emplace_back();
        Part& part = parts_.back();
        ++part.count;
        part.columns.push_back(std::move(column));
        return {parts_.size() - 1, part.columns.size() - 1};
    }
    void Forget(const std::string& nameKey) { byName_.erase(nameKey); }
    [[nodiscard]] std::vector<Part>& Parts() noexcept { return parts_; }

private:
    struct Found {
        std::size_t part;
        const KnownColumn* column;
    };

    static std::string OriginKey(const ColumnOrigin& origin)
    {
        return std::to_string(static_cast<int>(origin.kind)).append(" ").append(origin.name);
    }
    Position Put(const Found& found, PlannedColumn column, std::optional<ColumnOrigin> told)
    {
        column.name = found.column->name;
        column.told = std::move(told);
        if (!found.column->takesText) {
            const auto overflow = byOrigin_.find(OriginKey({.kind = Kind::Overflow, .name = column.name}));
            column.overflow = overflow != byOrigin_.end() && overflow->second.part == found.part
                                  ? overflow->second.column->name
                                  : names_.Take(column.name + "_text");
        }
        Part& part = parts_[found.part];
        part.columns.push_back(std::move(column));
        return {found.part, part.columns.size() - 1};
    }

    std::size_t maxColumns_;
    NameSet& names_;
    std::vector<Part> parts_;
    std::unordered_map<std::string, Found> byOrigin_, byName_;
};

std::string CompleteRules::WantedName(const Want& want, Family family) const
{
    switch (want.kind) {
    case Kind::Text:
        return MappedName(TagOf(families_[family].first), settings_, map_);
    case Kind::Attribute: {
        // Its prefix stays, whatever namespace prefix stands behind it.
        std::string_view name = document_.NameText(want.name);
        if (const std::size_t colon = name.find(':'); colon != name.npos)
            name.remove_prefix(colon + 1);
        return MappedName(settings_.strAttrPrefix + std::string(name), settings_, map_);
    }
    default:
        return MappedName(document_.NameText(want.name), settings_, map_);
    }
}

ColumnOrigin CompleteRules::OriginOf(const Want& want, Family family) const
{
    if (want.kind == Kind::Text)
        return {.kind = Kind::Text};
    const SiblingPlaces& places = want.kind == Kind::Child ? childPlaces_ : attributePlaces_;
    return {want.kind, std::string(document_.NameText(want.name)), places.Of(family, want.name)};
}

void CompleteRules::PlanColumns(Family number, NameSet& names)
{
    FamilyPlan& family = families_[number];
    const TableNumber first = family.table;
    ColumnLayout layout(known_.maxDataColumns, names);
    if (family.known != kNone)
        layout.AddKnown(known_.tables[family.known], known_.names);
    for (const std::size_t part : family.parts)
        layout.AddKnown(known_.tables[part], known_.names);
    const PlannedKeys& keys = plan_.tables[first].keys;
    for (const std::string& key : {keys.primary, keys.foreign, keys.master})
        layout.Forget(known_.names.key(key));

    std::vector<ColumnLayout::Position> positions;
    for (const Want& want : family.wants) {
        PlannedColumn column;
        column.origin = want.origin;
        column.type = want.isLong ? ColumnType::Memo : ColumnType::Text;
        const std::string wanted = WantedName(want, number);
        const ColumnOrigin origin = OriginOf(want, number);
        if (const auto known = layout.PlaceKnown(origin, known_.names.key(known_.names.valid(wanted, 64)), column)) {
            positions.push_back(*known);
            continue;
        }
        column.name = names.Take(wanted);
        column.told = origin;
        NoteName(Bracketed(plan_.tables[first].name) + "." + Bracketed(column.name), column.name, wanted, want.origin);
        positions.push_back(layout.PlaceNew(std::move(column)));
    }

    std::vector<ColumnNumber> firstColumns;
    for (std::size_t i = 0; i < layout.Parts().size(); ++i) {
        ColumnLayout::Part& part = layout.Parts()[i];
        if (i > 0)
            PlanPart(first, part.known == nullptr ? std::string() : part.known->name);
        PlannedTable& table = plan_.tables.back();
        table.firstColumn = static_cast<ColumnNumber>(plan_.columns.size());
        firstColumns.push_back(table.firstColumn);
        std::ranges::move(part.columns, std::back_inserter(plan_.columns));
        table.endOfMade = static_cast<ColumnNumber>(plan_.columns.size());
    }
    for (std::size_t i = 0; i < positions.size(); ++i) {
        const auto [part, index] = positions[i];
        family.wants[i].place = {.column = firstColumns[part] + static_cast<ColumnNumber>(index),
                                 .part = part == 0 ? kNoTable : first + static_cast<TableNumber>(part)};
    }
}

/// A table that continues `first`, behind those that do so already. `name` is empty for one that is not there yet.
void CompleteRules::PlanPart(TableNumber first, std::string name)
{
    PlannedTable part = plan_.tables[first];
    const bool isNew = name.empty();
    const bool isTied = !part.keys.primary.empty();
    if (isNew && isTied && !settings_.blCreateTableRelations)
        plan_.notes.push_back("Table " + Bracketed(part.name) +
                              " has a key in spite of -relations: it is continued in a further table");
    part.name = isNew ? tableNames_.Take(part.name) : std::move(name);
    PlannedKeys keys;
    keys.primary = part.keys.primary;
    keys.makesPrimary = isNew && isTied;
    part.keys = std::move(keys);
    part.continues = first;
    part.parent = first;
    part.isShared = false;
    part.indexesParents = false;
    part.told.reset();
    if (isNew)
        part.told.emplace().continues = plan_.tables[first].name;
    NameLinks(part);
    plan_.tables.push_back(std::move(part));
}

// ---- What the import does with the elements of a path

void CompleteRules::PlanPath(PathId path)
{
    PathPlan& plan = plan_.paths[path];
    plan.keepsEmpty = true;
    if (!isRecord_[path]) {
        plan.outerText = PlaceOf(FamilyOf(ParentOf(path)), Kind::Child, document_.Paths().Name(path));
        return;
    }
    const PathFacts& facts = facts_[path];
    const Family number = FamilyOf(path);
    plan.isEntered = true;
    plan.hasOnlyLeaves = true; // until the first of its records comes
    plan_.paths[ParentOf(path)].hasOnlyLeaves = false;
    plan.table = families_[number].table;
    plan.readsLeaves = facts.hasChildren;
    plan.writesOwnText = facts.hasText || (!facts.hasChildren && !HasAttributes(path));
    if (plan.table == kNoTable)
        return;
    plan_.recordEstimate += static_cast<std::int32_t>(facts.count);
    if (plan.writesOwnText)
        plan.ownText = PlaceOf(number, Kind::Text, 0);
    plan.firstAttribute = static_cast<std::uint32_t>(plan_.attributes.size());
    if (!settings_.blImportAttributes)
        return;
    for (const AttributeFacts& attribute : facts.attributes)
        plan_.attributes.push_back({attribute.name, PlaceOf(number, Kind::Attribute, attribute.name)});
    plan.attributeCount = static_cast<std::uint32_t>(plan_.attributes.size()) - plan.firstAttribute;
}

const ValuePlace& CompleteRules::PlaceOf(Family family, Kind kind, NameId name) const
{
    return families_[family].wants[wants_[static_cast<std::size_t>(kind)].at(Pair(family, name))].place;
}

void CompleteRules::NoteName(const std::string& what, const std::string& name, const std::string& wanted, PathId path)
{
    if (name != wanted)
        plan_.notes.push_back("Name changed: " + what + " for " + document_.PathText(path) + ", not " +
                              Bracketed(wanted));
}

} // namespace

MappingPlan PlanByCompleteRules(Document& document, const std::vector<PathFacts>& facts, const KnownDatabase& known,
                                const ConversionSettings& settings, const TagMap& map)
{
    return CompleteRules(document, facts, known, settings, map).Plan();
}

} // namespace velmora
