#include "jet/relations/integrity.h"

#include "jet/base/error.h"

#include <algorithm>
#include <cassert>
#include <map>
#include <optional>
#include <set>
#include <utility>

/// References between rows. What holds whenever no plan is under way; asserts name the rule that they hold:
///
///  I1  The columns by which a row refers hold a Null in one of them, or the key of a row that is there, the row itself
///      included, or a key that a record begun and not yet saved has been given.
///  I2  `lastFound` of a link is empty or a key that the parent has: it is forgotten before rows of the parent change.
///
/// How a change of one row becomes changes of many:
///
///  I3  A plan is made whole before it changes anything. All that can refuse it, rows that stay and refer to one that
///      goes or that would refer to nothing, does so then.
///  I4  A plan has each row once, however many ways lead to it and however often they go round. Values that relations
///      pass on to one another without end are refused.
///  I5  While a plan is carried out the hook lets all pass: the rows in between refer to what is already gone, or not
///      yet there. Plans do not nest.
///  I6  Rows are deleted from the last found to the first, so a row before the one through which it was found. The row
///      that the caller named stays for the caller.
namespace jet {

namespace {

using RowRef = std::pair<Table*, RowId>;

/// Puts the key of `record` into `key`; false when one of its columns is Null, which refers to nothing.
bool MakeWhole(const KeyMaker& maker, Bytes& key, const Record& record)
{
    return !maker.Make(key, record).anyNull;
}

/// The rows of the child whose key is `key`.
std::vector<RowId> RowsReferring(const Link& link, ByteSpan key)
{
    std::vector<RowId> rows;
    auto at = link.child->Tree(link.childIndex).Seek(key);
    for (; !at.AtEnd() && std::ranges::equal(at.Key(), key); at.Next())
        rows.push_back(at.Row());
    return rows;
}

/// Gives the referencing columns of `child` the values that the referenced ones have in `parent`.
void CopyKey(const Link& link, const Record& parent, Record& child)
{
    const std::vector<std::size_t>& from = link.parentKeyOfParent.Columns();
    const std::vector<std::size_t>& to = link.parentKeyOfChild.Columns();
    for (std::size_t i = 0; i < to.size(); ++i) {
        if (const std::optional<ByteSpan> value = parent.Stored(from[i]))
            child.SetStored(to[i], *value);
        else
            child.SetNull(to[i]);
    }
}

void ClearKey(const Link& link, Record& child)
{
    for (const std::size_t position : link.parentKeyOfChild.Columns())
        child.SetNull(position);
}

Error RelatedRecords(const Link& link)
{
    return Error(ErrorNumber::RelatedRecords, {link.child->Name()})
        .About({.table = link.child->Name(), .relation = link.name});
}

Error RelatedRecordRequired(const Link& link)
{
    ErrorSubject subject{.table = link.child->Name(), .relation = link.name};
    for (const std::size_t position : link.parentKeyOfChild.Columns())
        subject.columns.push_back(link.child->Definition().columns[position].name);
    return Error(ErrorNumber::RelatedRecordRequired, {link.parent->Name()}).About(std::move(subject));
}

/// Takes lookups of the links' parents back: their rows are about to change.
void ForgetFound(const LinkCache::TableLinks& links)
{
    for (Link* link : links.toChildren)
        link->lastFound.clear();
}

} // namespace

/// While one lives, the hook lets every change pass: the plan has been checked as a whole.
class ReferentialIntegrity::Suspension {
public:
    explicit Suspension(bool& suspended) : suspended_(suspended)
    {
        assert(!suspended_); // I5
        suspended_ = true;
    }
    ~Suspension() { suspended_ = false; }
    Suspension(const Suspension&) = delete;
    Suspension& operator=(const Suspension&) = delete;

private:
    bool& suspended_;
};

/// Everything that deleting some rows takes with it, found breadth first so that no depth is too much.
class ReferentialIntegrity::DeletePlan {
public:
    explicit DeletePlan(LinkCache& links) : links_(links) {}

    void AddRow(Table& table, RowId row)
    {
        if (planned_.insert({&table, row}).second)
            rows_.emplace_back(&table, row);
    }

    /// Throws RelatedRecords when a row that stays refers to one that goes.
    void Complete()
    {
        Record record;
        for (std::size_t i = 0; i < rows_.size(); ++i) {
            const auto [table, row] = rows_[i];
            const LinkCache::TableLinks& links = links_.Of(*table);
            if (links.toChildren.empty())
                continue;
            table->Read(row, record);
            for (Link* link : links.toChildren)
                FollowLink(*link, record);
            ForgetFound(links);
        }
        for (const auto& [row, link] : blockers_)
            if (!planned_.contains(row))
                throw RelatedRecords(*link);
    }

    /// Carries it out, from the last row found to the first; the first `keep` rows are left to the caller.
    void Apply(std::size_t keep)
    {
        assert(rows_.size() == planned_.size()); // I4
        assert(keep <= rows_.size());            // I6
        Record record;
        for (const auto& [row, link] : cleared_) {
            if (planned_.contains(row))
                continue;
            row.first->Read(row.second, record);
            ClearKey(*link, record);
            row.first->Update(row.second, record);
        }
        for (std::size_t i = rows_.size(); i-- > keep;)
            rows_[i].first->Delete(rows_[i].second);
    }

private:
    void FollowLink(Link& link, const Record& parent)
    {
        if (!MakeWhole(link.childKeyOfParent, key_, parent))
            return;
        for (const RowId row : RowsReferring(link, key_)) {
            if (link.onDelete == DeleteRule::Cascade)
                AddRow(*link.child, row);
            else if (link.onDelete == DeleteRule::SetNull)
                cleared_.push_back({{link.child, row}, &link});
            else
                blockers_.push_back({{link.child, row}, &link});
        }
    }

    LinkCache& links_;
    std::vector<RowRef> rows_;
    std::set<RowRef> planned_;
    std::vector<std::pair<RowRef, const Link*>> blockers_, cleared_;
    Bytes key_;
};

/// Everything that new values of one row change in other rows.
class ReferentialIntegrity::UpdatePlan {
public:
    UpdatePlan(ReferentialIntegrity& integrity, Table& table, RowId row, const Record& before, const Record& after)
        : integrity_(integrity)
    {
        changes_.emplace(RowRef{&table, row}, Change{before, after, 0});
        order_.emplace_back(&table, row);
        queue_ = order_;
    }

    /// Throws RelatedRecords, RelatedRecordRequired.
    void Complete()
    {
        for (std::size_t i = 0; i < queue_.size(); ++i) {
            const LinkCache::TableLinks& links = integrity_.links_.Of(*queue_[i].first);
            for (Link* link : links.toChildren)
                FollowLink(*link, changes_.at(queue_[i]));
            ForgetFound(links);
        }
        for (const auto& [row, change] : changes_)
            for (Link* link : integrity_.links_.Of(*row.first).toChildren)
                if (MakeWhole(link->parentKeyOfParent, key_, change.after))
                    newKeys_.emplace(link, key_);
        for (const auto& [row, change] : changes_)
            CheckParents(*row.first, change);
    }

    [[nodiscard]] bool IsOneRow() const noexcept { return order_.size() == 1; }

    /// Carries it out, the first row first.
    void Apply()
    {
        assert(order_.size() == changes_.size()); // I4
        for (const auto& [table, row] : order_)
            table->Update(row, changes_.at({table, row}).after);
    }

private:
    struct Change {
        Record before, after;
        std::size_t times; ///< how often it was given another value
    };

    void FollowLink(Link& link, const Change& parent)
    {
        Bytes newKey;
        if (!MakeWhole(link.childKeyOfParent, key_, parent.before))
            return;
        // By keys, not by values: a name that changes its letter case only is the same key.
        if (MakeWhole(link.childKeyOfParent, newKey, parent.after) && newKey == key_)
            return;
        // A copy, as the parent itself may be among the rows that refer to it, and change here.
        const Record values = parent.after;
        for (const RowId row : RowsReferring(link, key_)) {
            if (!link.cascadeUpdates)
                throw RelatedRecords(link);
            Redirect(link, {link.child, row}, values);
        }
    }

    /// Lets a row of the child refer to the parent's new key.
    void Redirect(const Link& link, const RowRef& row, const Record& parent)
    {
        auto found = changes_.find(row);
        if (found == changes_.end()) {
            Change change{{}, {}, 0};
            row.first->Read(row.second, change.before);
            change.after = change.before;
            found = changes_.emplace(row, std::move(change)).first;
            order_.push_back(row);
        }
        Change& change = found->second;
        Bytes had, wanted;
        const bool hadKey = MakeWhole(link.parentKeyOfChild, had, change.after);
        CopyKey(link, parent, change.after);
        if (MakeWhole(link.parentKeyOfChild, wanted, change.after) == hadKey && had == wanted)
            return;
        // Several relations over the same columns may pass a value round and round between them.
        if (++change.times > kMaxIndexColumns)
            throw RelatedRecords(link);
        queue_.push_back(row);
    }

    void CheckParents(Table& table, const Change& change)
    {
        for (Link* link : integrity_.links_.Of(table).toParents) {
            const bool hadParent = MakeWhole(link->parentKeyOfChild, otherKey_, change.before);
            if (!MakeWhole(link->parentKeyOfChild, key_, change.after) || (hadParent && key_ == otherKey_))
                continue;
            if (!newKeys_.contains({link, key_}) && !integrity_.HasParent(*link, table, change.after))
                throw RelatedRecordRequired(*link);
        }
    }

    ReferentialIntegrity& integrity_;
    std::map<RowRef, Change> changes_;
    std::vector<RowRef> order_; ///< each row once, as found
    std::vector<RowRef> queue_; ///< rows whose keys have still to be followed, as often as they changed
    std::set<std::pair<const Link*, Bytes>> newKeys_;
    Bytes key_, otherKey_;
};

ReferentialIntegrity::ReferentialIntegrity(Catalog& catalog) : links_(catalog)
{
    catalog.SetRowHook(this);
}

bool ReferentialIntegrity::HasParents(Table& table, const Record& record)
{
    return std::ranges::all_of(links_.Of(table).toParents, [&](Link* link) { return HasParent(*link, table, record); });
}

ReferenceFacts ReferentialIntegrity::FactsOf(Table& table)
{
    const std::vector<Link*>& links = links_.Of(table).toParents;
    using enum ReferenceFacts::Kind;
    if (links.size() != 1)
        return {.kind = links.empty() ? None : Other};
    const Link& link = *links.front();
    const std::vector<std::size_t>& to = link.parentKeyOfParent.Columns();
    if (to.size() != 1 || !link.parent->Definition().columns[to.front()].IsAutonumber())
        return {};
    const std::size_t from = link.parentKeyOfChild.Columns().front();
    return {.kind = ToNumber, .field = static_cast<std::uint32_t>(from), .parent = link.parent};
}

void ReferentialIntegrity::RemovePending(const PendingRecord& record) noexcept
{
    std::erase(pending_, &record);
}

/// Looks for key_ among the keys that pending records have been given: of the last one begun first, as the parts of a
/// whole are saved while that waits.
bool ReferentialIntegrity::IsPendingKey(const Link& link)
{
    for (std::size_t i = pending_.size(); i-- > 0;)
        if (&pending_[i]->PendingTable() == link.parent &&
            MakeWhole(link.parentKeyOfParent, otherKey_, pending_[i]->PendingValues()) && SameBytes(otherKey_, key_))
            return true;
    return false;
}

bool ReferentialIntegrity::HasParent(Link& link, const Table& table, const Record& record)
{
    if (!MakeWhole(link.parentKeyOfChild, key_, record) || SameBytes(key_, link.lastFound) || IsPendingKey(link))
        return true;
    if (link.parent->Tree(link.parentIndex).Contains(key_)) {
        link.lastFound.swap(key_);
        return true;
    }
    // A row may refer to itself.
    return &table == link.parent && MakeWhole(link.parentKeyOfParent, otherKey_, record) && otherKey_ == key_;
}

void ReferentialIntegrity::BeforeInsert(Table& table, const Record& record)
{
    for (Link* link : links_.Of(table).toParents)
        if (!HasParent(*link, table, record))
            throw RelatedRecordRequired(*link);
}

void ReferentialIntegrity::BeforeUpdate(Table& table, RowId row, const Record& before, const Record& after)
{
    if (suspended_)
        return;
    const LinkCache::TableLinks& links = links_.Of(table);
    if (links.toChildren.empty() && links.toParents.empty())
        return;
    UpdatePlan plan(*this, table, row, before, after);
    plan.Complete();
    // What came here by way of the table alone has no leave to carry on: the caller would not know of the other rows.
    if (!plan.IsOneRow())
        throw Error(ErrorNumber::RelatedRecords, {table.Name()});
}

void ReferentialIntegrity::BeforeDelete(Table& table, RowId row, const Record&)
{
    if (suspended_ || links_.Of(table).toChildren.empty())
        return;
    DeletePlan plan(links_);
    plan.AddRow(table, row);
    plan.Complete();
    const Suspension suspension(suspended_);
    plan.Apply(1);
}

void ReferentialIntegrity::UpdateRow(Table& table, RowId row, const Record& after)
{
    const LinkCache::TableLinks& links = links_.Of(table);
    if (links.toChildren.empty() && links.toParents.empty())
        return table.Update(row, after);
    Record before;
    table.Read(row, before);
    UpdatePlan plan(*this, table, row, before, after);
    plan.Complete();
    const Suspension suspension(suspended_);
    plan.Apply();
}

/// Is there a relation on the way of a delete in `table` that does not simply cascade?
bool ReferentialIntegrity::MayRefuseDelete(Table& table)
{
    std::vector<Table*> reached{&table};
    for (std::size_t i = 0; i < reached.size(); ++i) {
        for (const Link* link : links_.Of(*reached[i]).toChildren) {
            if (link->onDelete != DeleteRule::Cascade)
                return true;
            if (std::ranges::find(reached, link->child) == reached.end())
                reached.push_back(link->child);
        }
    }
    return false;
}

void ReferentialIntegrity::DeleteAll(Table& table)
{
    // Row by row then, without a list of all that goes: each row's own plan takes what refers to it.
    if (!MayRefuseDelete(table)) {
        for (auto row = table.NextRow(std::nullopt); row; row = table.NextRow(row))
            table.Delete(*row);
        return;
    }
    DeletePlan plan(links_);
    for (auto row = table.NextRow(std::nullopt); row; row = table.NextRow(row))
        plan.AddRow(table, *row);
    plan.Complete();
    const Suspension suspension(suspended_);
    plan.Apply(0);
}

} // namespace jet
