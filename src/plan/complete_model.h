#pragma once

#include "mapping/tag_map.h"
#include "plan/known_database.h"
#include "plan/mapping_plan.h"
#include "plan/path_facts.h"
#include "settings/conversion_settings.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace velmora {

/// In which order names have first appeared side by side: of the children, or of the attributes, of the elements that
/// belong together. Numbers that the database knows stay; what is new goes behind them.
class SiblingPlaces {
public:
    /// The database knows it.
    void Know(std::uint32_t above, std::uint32_t name, std::size_t place)
    {
        places_.try_emplace(Key(above, name), place);
        std::size_t& next = next_[above];
        next = std::max(next, place + 1);
    }
    /// It appears in the document.
    void Note(std::uint32_t above, std::uint32_t name)
    {
        std::size_t& next = next_[above];
        next += places_.try_emplace(Key(above, name), next).second ? 1 : 0;
    }
    /// Of one that is known or noted; 0 of any other.
    [[nodiscard]] std::size_t Of(std::uint32_t above, std::uint32_t name) const
    {
        const auto place = places_.find(Key(above, name));
        return place == places_.end() ? 0 : place->second;
    }

private:
    static std::uint64_t Key(std::uint32_t above, std::uint32_t name) { return std::uint64_t{above} << 32 | name; }

    std::unordered_map<std::uint64_t, std::size_t> places_;
    std::unordered_map<std::uint32_t, std::size_t> next_;
};

/// Elements that have one table when they are records: those of one path, or, with one table per element, of one name.
using Family = std::uint32_t;

inline constexpr std::size_t kNoKnownTable = std::numeric_limits<std::size_t>::max();

/// A value that elements of a family can have.
struct Want {
    ColumnOrigin::Kind kind = ColumnOrigin::Kind::Text;
    NameId name = 0;   ///< of the child or attribute
    PathId origin = 0; ///< where it first appeared
    bool isLong = false;
    bool hasEmpty = false;
    std::int64_t count = 0; ///< of the records that have it
    ValuesSeen values{};
    ValuePlace place{};
};

/// What is decided about a family's records.
struct FamilyPlan {
    PathId first = 0; ///< its first path whose elements are records; 0: none
    bool hasRoot = false;
    std::int64_t recordCount = 0;
    std::vector<PathId> paths{}; ///< of its records
    std::vector<Want> wants{};
    std::size_t known = kNoKnownTable; ///< table of the database
    bool isTakenByName = false;        ///< that table says nothing of itself
    std::string refusal{};             ///< why the table of its name is not taken
    std::vector<std::size_t> parts{};  ///< tables that continue it there
    TableNumber table = kNoTable;      ///< none: its elements are passed through
};

/// What the database's tables say of where their records stand, as the document's ids.
struct KnownPlaces {
    std::unordered_map<PathId, std::size_t> stepsToParent;     ///< of paths that have a table
    std::unordered_set<std::uint64_t> inside;                  ///< names of parent and element, in shared tables
    std::unordered_map<std::uint64_t, std::string> wayIn;      ///< names of record around and element: the tags between
    std::unordered_map<std::string, std::size_t> untoldByName; ///< tables that say nothing of themselves, by key
};

/// What the complete rules have found out and decided so far. These steps fill it, in this order, each in a file of its
/// own: what the database knows, what is a record, which of its tables are taken by name, and which tables and columns
/// there are.
struct CompleteModel {
    Document& document;
    const std::vector<PathFacts>& facts;
    const KnownDatabase& known;
    const ConversionSettings& settings;
    const TagMap& map;
    const bool shares = settings.blOneTablePerElement;

    std::vector<FamilyPlan> families{};
    std::unordered_map<std::uint64_t, std::size_t> wants[3]{}; ///< by kind; family and name: position in its wants
    std::vector<bool> isRecord{};                              ///< by path
    std::vector<PathId> around{};                              ///< by path: that of the record around, 0: none
    SiblingPlaces childPlaces{}, attributePlaces{};
    KnownPlaces there{};

    [[nodiscard]] Family FamilyOf(PathId path) const { return shares ? document.Paths().Name(path) : path; }
    [[nodiscard]] PathId ParentOf(PathId path) const { return document.Paths().Parent(path); }
    [[nodiscard]] std::string_view TagOf(PathId path) const { return document.NameText(document.Paths().Name(path)); }
    [[nodiscard]] std::string PathText(PathId path) const;
    [[nodiscard]] bool HasAttributes(PathId path) const
    {
        return settings.blImportAttributes && !facts[path].attributes.empty();
    }
    /// The names that a family's table and the column of a value are to have, valid or not.
    [[nodiscard]] std::string WantedTable(const FamilyPlan& family) const;
    [[nodiscard]] std::string WantedColumn(const Want& want, const FamilyPlan& family) const;
    [[nodiscard]] const ValuePlace& PlaceOf(Family family, ColumnOrigin::Kind kind, NameId name) const;

    /// Two ids as one.
    [[nodiscard]] static std::uint64_t Pair(std::uint32_t high, std::uint32_t low)
    {
        return std::uint64_t{high} << 32 | low;
    }
    [[nodiscard]] static std::vector<std::string_view> StepsOf(std::string_view path);
};

/// Families get the tables that the database has for them, and siblings the places that it knows.
void ReadWhatIsKnown(CompleteModel& model);
/// Which elements are records, and with which values.
void FindRecords(CompleteModel& model);
/// Marks the families that get a table, and finds the record around each; depends on which tables are taken.
void FindTablesAndRecordsAround(CompleteModel& model);
/// Families take tables that say nothing of themselves by their names, where these let all of their records in.
void TakeTablesByName(CompleteModel& model);
/// The tables with their keys and columns; each value gets its place.
void PlanTables(CompleteModel& model, MappingPlan& plan);

} // namespace velmora
