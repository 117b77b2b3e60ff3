#include "plan/rules.h"

#include "plan/plain_names.h"

#include <unordered_map>
#include <utility>

namespace velmora {

namespace {

/// Whether attributes are imported is not asked here: an element that bears some is a table either way.
bool GetsTable(const ElementInfo& element)
{
    return element.lngMaxChildren >= 1 || element.lngAttributes >= 1 || element.lngMaxTwins >= 1;
}

bool IsPlainLeaf(const ElementInfo& element)
{
    return element.lngMaxChildren == 0 && element.lngMaxTwins == 0;
}

/// Texts longer than a text column become memos. Numbers too are kept as text, so that nothing of their spelling is
/// lost.
ColumnType TypeOf(const ElementInfo& element)
{
    constexpr double kTextCharacters = 255;
    return element.lngDataType == kTextContent && element.dblMaxSize > kTextCharacters ? ColumnType::Memo
                                                                                       : ColumnType::Text;
}

/// Work is linear in the number of entries: the children of a path are found through the tree of paths.
class PlainRules {
public:
    PlainRules(const Document& document, const StructureModel& model, const ConversionSettings& settings,
               const TagMap& map)
        : document_(document), model_(model), settings_(settings), map_(map), count_(model.UpperBound() + 1)
    {
    }

    MappingPlan Plan();

private:
    /// The columns of one table by their names.
    using Columns = std::unordered_map<std::string, ColumnNumber>;

    void LinkChildren();
    void NumberTables();
    void PlanTable(std::size_t entry);
    void PlanMadeColumns(std::size_t entry, PlannedTable& table, Columns& columns);
    void PlanValues(std::size_t entry, Columns& columns);
    void PlanPath(std::size_t entry);
    [[nodiscard]] bool HasOnlyLeaves(std::size_t entry) const;
    [[nodiscard]] ColumnNumber ColumnFor(std::string name, std::size_t entry, Columns& columns);
    [[nodiscard]] ColumnNumber ColumnOfTag(std::size_t entry, Columns& columns);
    [[nodiscard]] PathPlan& PathOf(std::size_t entry) { return plan_.paths[model_.Element(entry).strPath]; }

    const Document& document_;
    const StructureModel& model_;
    const ConversionSettings& settings_;
    const TagMap& map_;
    const std::size_t count_;
    MappingPlan plan_;

    // By number of the model's entry; 0 stands for none.
    std::vector<std::size_t> parent_ = std::vector<std::size_t>(count_);
    std::vector<std::size_t> firstChild_ = std::vector<std::size_t>(count_);
    std::vector<std::size_t> nextSibling_ = std::vector<std::size_t>(count_);
    std::vector<TableNumber> table_ = std::vector<TableNumber>(count_);
};

MappingPlan PlainRules::Plan()
{
    plan_.importsAttributes = settings_.blImportAttributes;
    plan_.recordEstimate = model_.lngRecordEstimate;
    plan_.paths.resize(document_.Paths().Size());
    LinkChildren();
    NumberTables();
    for (std::size_t entry = 1; entry < count_; ++entry) { // a parent stands before its children
        if (table_[entry] != kNoTable)
            PlanTable(entry);
        PlanPath(entry);
    }
    return std::move(plan_);
}

void PlainRules::LinkChildren()
{
    for (std::size_t entry = count_; --entry > 0;) { // backwards, so that lists come out in the model's order
        const std::size_t parent = model_.Find(document_.Paths().Parent(model_.Element(entry).strPath));
        parent_[entry] = parent;
        nextSibling_[entry] = firstChild_[parent];
        firstChild_[parent] = entry;
    }
}

void PlainRules::NumberTables()
{
    for (std::size_t entry = 1; entry < count_; ++entry) {
        if (!GetsTable(model_.Element(entry)))
            continue;
        table_[entry] = static_cast<TableNumber>(plan_.tables.size());
        plan_.tables.emplace_back();
    }
}

void PlainRules::PlanTable(std::size_t entry)
{
    const ElementInfo& element = model_.Element(entry);
    PlannedTable& table = plan_.tables[table_[entry]];
    table.name = settings_.strTablePrefix + MappedName(element.strName, settings_, map_) + settings_.strTableSuffix;
    table.relation = RelationName(element.strName);
    table.path = element.strPath;
    table.level = element.intLevel;
    table.isShared = element.blSharedTable;
    table.hasTextFile = element.lngTableNo > 0;
    const bool makesKeys = settings_.blCreateTableRelations;
    table.keys = {.primary = settings_.strKeyPrimary,
                  .foreign = settings_.strKeyForeign,
                  .master = std::string(kMasterTable),
                  .makesPrimary = makesKeys,
                  .makesForeign = makesKeys,
                  .makesMaster = makesKeys && settings_.blOneTablePerElement,
                  .dropsMaster = !table.isShared,
                  .primaryIndex = table.name + "_" + settings_.strKeyPrimary,
                  .foreignIndex = table.name + "_" + settings_.strKeyForeign};
    const PlannedTable& around = plan_.tables[table_[parent_[entry]]];
    table.parent = around.isWrapper ? around.parent : table_[parent_[entry]];

    Columns columns;
    PlanMadeColumns(entry, table, columns);
    table.isWrapper = settings_.blSkipEmptyWrappingTags && columns.empty();
    PlanValues(entry, columns);
}

/// A repeated leaf's own text, and the leaves and attributes one level below; the first of equal names wins.
void PlainRules::PlanMadeColumns(std::size_t entry, PlannedTable& table, Columns& columns)
{
    table.firstColumn = static_cast<ColumnNumber>(plan_.columns.size());
    const auto ask = [&](std::size_t candidate) {
        const std::string& name = model_.Element(candidate).strName;
        table.asked.push_back(ColumnFor(MappedName(name, settings_, map_), candidate, columns));
    };
    const ElementInfo& element = model_.Element(entry);
    if (element.lngMaxChildren == 0 && element.lngMaxTwins > 0)
        ask(entry);
    for (std::size_t child = firstChild_[entry]; child != 0; child = nextSibling_[child])
        if (IsPlainLeaf(model_.Element(child)))
            ask(child);
    table.endOfMade = static_cast<ColumnNumber>(plan_.columns.size());
}

/// Values go by the tags as they are written, without the suffixes that tables get, and into whatever column of that
/// name the database has.
void PlainRules::PlanValues(std::size_t entry, Columns& columns)
{
    PathPlan& path = PathOf(entry);
    path.ownText.column = ColumnOfTag(entry, columns);
    path.firstAttribute = static_cast<std::uint32_t>(plan_.attributes.size());
    for (std::size_t child = firstChild_[entry]; child != 0; child = nextSibling_[child]) {
        const ColumnNumber column = ColumnOfTag(child, columns);
        PathOf(child).outerText.column = column;
        // Every attribute gets a column, unless an element of the same name stands in its place.
        if (const NameId attribute = model_.Element(child).attribute; attribute != ElementInfo::kNoAttribute)
            plan_.attributes.push_back({attribute, {column, LossReason::ColumnTaken}});
    }
    path.attributeCount = static_cast<std::uint32_t>(plan_.attributes.size()) - path.firstAttribute;
}

void PlainRules::PlanPath(std::size_t entry)
{
    const ElementInfo& element = model_.Element(entry);
    const PlannedTable& table = plan_.tables[table_[entry]];
    const auto made = static_cast<std::int32_t>(plan_.MadeColumns(table).size());
    PathPlan& path = PathOf(entry);
    path.table = table.isWrapper ? kNoTable : table_[entry];
    path.isRepeatedLeaf = path.table != kNoTable && element.lngMaxTwins > 0;
    // An element whose columns are no more than its attributes has no leaf to look for. Repeated leaves that stand
    // beside nothing else are not found by it either. Meant so.
    path.readsLeaves = made > (settings_.blImportAttributes ? element.lngAttributes : 0);
    path.hasOnlyLeaves = HasOnlyLeaves(entry);
    path.endsRunInWrapper = settings_.blSkipEmptyWrappingTags && path.table == kNoTable;
}

/// Without attributes of their own, as far as those are imported.
bool PlainRules::HasOnlyLeaves(std::size_t entry) const
{
    for (std::size_t child = firstChild_[entry]; child != 0; child = nextSibling_[child]) {
        if (model_.Element(child).lngMaxChildren > 0)
            return false;
        for (std::size_t below = firstChild_[child]; below != 0; below = nextSibling_[below])
            if (model_.Element(below).attribute != ElementInfo::kNoAttribute)
                return false;
    }
    return true;
}

ColumnNumber PlainRules::ColumnFor(std::string name, std::size_t entry, Columns& columns)
{
    const auto next = static_cast<ColumnNumber>(plan_.columns.size());
    const auto [column, isNew] = columns.try_emplace(std::move(name), next);
    if (isNew) {
        const ElementInfo& element = model_.Element(entry);
        plan_.columns.push_back({column->first, element.strPath, TypeOf(element)});
    }
    return column->second;
}

ColumnNumber PlainRules::ColumnOfTag(std::size_t entry, Columns& columns)
{
    const NameId tag = document_.Paths().Name(model_.Element(entry).strPath);
    return ColumnFor(MappedName(document_.NameText(tag), settings_, map_), entry, columns);
}

} // namespace

MappingPlan PlanByPlainRules(const Document& document, StructureModel& model, const ConversionSettings& settings,
                             const TagMap& map)
{
    ResolveTableNames(model, settings);
    return PlainRules(document, model, settings, map).Plan();
}

} // namespace velmora
