#include "jet/index/index_tree.h"

#include "jet/base/error.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace jet {

namespace {

/// More than any tree has: even a page of two children a level would fill the largest file before.
constexpr std::size_t kMaxLevels = 32;

/// Fetches what a search looks at first: the mask, and the entries in the middle and the quarters. In trees that
/// outgrow the processor's cache, waiting for these one after another is most of what a search costs.
void Prefetch(const PageRef& page, const Format& format)
{
    const Byte* const bytes = page.Bytes().data();
    const Format::IndexPageLayout& layout = format.indexPage;
    for (std::size_t at = 0; at < layout.entries; at += kCacheLine)
        __builtin_prefetch(bytes + at);
    for (std::size_t quarter = 1; quarter < 4; ++quarter)
        __builtin_prefetch(bytes + layout.entries + quarter * layout.room / 4);
}

void RequireLeaf(const IndexPage& page)
{
    if (!page.IsLeaf())
        throw CorruptPage(page.Number(), "a leaf is linked with an index page of another level");
}

} // namespace

IndexTree::IndexTree(Pager& pager, PageNumber root, RowId usageMap, PageNumber definitionPage,
                     std::uint32_t distinctKeys)
    : pager_(&pager), distinctKeys_(distinctKeys), root_(root), pages_(pager, usageMap), definitionPage_(definitionPage)
{
}

void IndexTree::MakeEmpty(const MutablePageRef& root, const Format& format, PageNumber definitionPage)
{
    IndexPageEditor::MakeEmpty(root, format, definitionPage, 0);
}

/// The leaf with the first entry that is not less than `wanted`, and its place; or a leaf before, and its end, where
/// `wanted` itself belongs.
IndexTree::Found IndexTree::Find(ByteSpan wanted) const
{
    if (guessedLeaf_ != 0) {
        PageRef ref = pager_->Read(guessedLeaf_);
        const IndexPage leaf = View(ref);
        // Between two entries of a leaf, or behind the last of all, it can stand nowhere else.
        if (leaf.IsLowerBound(guessedPlace_, wanted) && (guessedPlace_ != leaf.End() || leaf.Next() == 0))
            return {std::move(ref), guessedPlace_};
    }
    PageRef ref = FindLeaf(wanted);
    guessedLeaf_ = ref.Number();
    guessedPlace_ = View(ref).LowerBound(wanted);
    return {std::move(ref), guessedPlace_};
}

/// The leaf with the first entry that is not less than `wanted`, or one before it in which `wanted` itself belongs.
PageRef IndexTree::FindLeaf(ByteSpan wanted) const
{
    if (lastLeaf_ != 0) {
        PageRef last = pager_->Read(lastLeaf_);
        const IndexPage leaf = View(last);
        // Not before the leaf's first entry: else what is wanted may stand further left.
        if (leaf.IsLeaf() && leaf.Next() == 0 && !leaf.IsEmpty() && leaf.Compare(leaf.Begin(), wanted) <= 0)
            return last;
    }
    return Descend(wanted, nullptr);
}

/// Goes down from the root: in each node to the child of the first entry that is not less than `wanted`, to the tail
/// when there is none.
PageRef IndexTree::Descend(ByteSpan wanted, Path* path) const
{
    PageRef ref = pager_->Read(root_);
    for (std::size_t depth = 0; depth < kMaxLevels; ++depth) {
        const IndexPage page = View(ref);
        if (page.IsLeaf())
            return ref;
        std::size_t place = page.LowerBound(wanted);
        const bool isTail = place == page.End() && page.Tail() != 0;
        if (place == page.End() && !isTail) {
            // Other writers leave nodes without a tail. Their last entry leads to what would be there.
            if (page.IsEmpty())
                throw CorruptPage(page.Number(), "the index node has no children");
            place = page.Before(place);
        }
        if (path != nullptr)
            path->push_back({page.Number(), page.Ordinal(place), place, isTail});
        ref = pager_->Read(isTail ? page.Tail() : page.Child(place));
        Prefetch(ref, GetFormat());
    }
    throw CorruptPage(ref.Number(), "the index has more levels than an index can have");
}

/// Has an entry beside `place` exactly this key? Equal keys stand together, so these two are all that matter.
bool IndexTree::HasNeighbour(const IndexPage& leaf, std::size_t place, ByteSpan key) const
{
    if (place != leaf.Begin()) {
        if (leaf.HasKey(leaf.Before(place), key))
            return true;
    } else if (leaf.Previous() != 0) {
        const PageRef ref = pager_->Read(leaf.Previous());
        const IndexPage previous = View(ref);
        if (!previous.IsEmpty() && previous.HasKey(previous.Before(previous.End()), key))
            return true;
    }
    if (place != leaf.End())
        return leaf.HasKey(place, key);
    if (leaf.Next() == 0)
        return false;
    const PageRef ref = pager_->Read(leaf.Next());
    const IndexPage next = View(ref);
    return !next.IsEmpty() && next.HasKey(next.Begin(), key);
}

bool IndexTree::Insert(ByteSpan key, RowId row)
{
    const Standing standing = StandingOf(key);
    if (const PageAtHand leaf = LeafToAppend(key, standing, row)) {
        Append(leaf, key, standing, row);
        return standing.isBehind;
    }
    MakeEntry(entry_, key, row);
    if (entry_.size() > MaxEntrySize())
        throw Error(ErrorNumber::RecordTooLarge, {},
                    "Its key in an index would have " + std::to_string(key.size()) + " bytes.");
    const auto [ref, place] = Find(entry_);
    const IndexPage leaf = View(ref);
    if (place != leaf.End() && leaf.Compare(place, entry_) == 0)
        throw CorruptPage(leaf.Number(), "the index has an entry for a row that is new");
    // Before the entry is in, which would be its own neighbour.
    const bool isNew = !HasNeighbour(leaf, place, key);
    const bool isLast = leaf.Next() == 0 && place == leaf.End();
    if (leaf.Next() == 0)
        lastLeaf_ = leaf.Number();
    lastUsed_ = 0;
    if (!IndexPageEditor(pager_->Write(leaf.Number()), GetFormat()).Insert(leaf, place, entry_)) {
        guessedLeaf_ = 0;
        InsertRebuilding();
    }
    if (isLast) {
        const PageRef last = pager_->Read(lastLeaf_);
        lastPrefix_ = static_cast<std::uint32_t>(View(last).Begin());
        lastUsed_ = static_cast<std::uint32_t>(View(last).End());
        greatest_ = entry_;
    }
    distinctKeys_ += isNew ? 1 : 0;
    return isNew;
}

bool IndexTree::Remove(ByteSpan key, RowId row)
{
    MakeEntry(entry_, key, row);
    const auto [ref, place] = Find(entry_);
    const IndexPage leaf = View(ref);
    if (place == leaf.End() || leaf.Compare(place, entry_) != 0)
        return false;
    greatest_.clear();
    lastUsed_ = 0;
    guessedLeaf_ = 0;
    const bool isOnly = place == leaf.Begin() && leaf.After(place) == leaf.End();
    if (isOnly && leaf.Number() != root_)
        RemoveLeaf(leaf.Number());
    else // where this was the leaf's last, a node's entry for it stays, as a bound
        IndexPageEditor(pager_->Write(leaf.Number()), GetFormat()).Remove(leaf, place);
    return true;
}

IndexTree::Cursor IndexTree::Seek(ByteSpan key) const
{
    Cursor cursor;
    cursor.pager_ = pager_;
    auto [leaf, place] = Find(key);
    cursor.page_ = std::move(leaf);
    cursor.place_ = place;
    cursor.Settle();
    return cursor;
}

IndexTree::Cursor IndexTree::Seek(ByteSpan key, RowId row) const
{
    Bytes entry;
    MakeEntry(entry, key, row);
    return Seek(entry);
}

bool IndexTree::Contains(ByteSpan key) const
{
    if (const Standing standing = StandingOf(key); standing.isLast || standing.isBehind)
        return standing.isLast;
    const auto [ref, place] = Find(key);
    const IndexPage leaf = View(ref);
    if (place != leaf.End())
        return leaf.HasKey(place, key);
    if (leaf.Next() == 0)
        return false;
    // A node's entry may be greater than what is left on its child's page: then the next leaf has the answer.
    const Cursor cursor = Seek(key);
    return !cursor.AtEnd() && CompareBytes(cursor.Key(), key) == 0;
}

void IndexTree::Clear()
{
    for (const PageNumber page : pages_.Pages()) {
        if (page != root_)
            FreePage(page);
    }
    MakeEmpty(pager_->Write(root_), GetFormat(), definitionPage_);
    Forget();
}

void IndexTree::Destroy()
{
    for (const PageNumber page : pages_.Pages())
        FreePage(page);
    Forget();
}

void IndexTree::Cursor::Next()
{
    place_ = IndexPage(page_, pager_->GetFormat()).After(place_);
    Settle();
}

/// From the end of a leaf to the next that has an entry, and takes the entry there.
void IndexTree::Cursor::Settle()
{
    for (;;) {
        const IndexPage leaf(page_, pager_->GetFormat());
        RequireLeaf(leaf);
        if (place_ != leaf.End())
            return leaf.CopyEntry(place_, entry_);
        const PageNumber next = leaf.Next();
        if (next == 0) {
            page_ = {};
            return;
        }
        if (++pagesSeen_ > pager_->PageCount())
            throw CorruptPage(next, "the leaves of the index go round in a circle");
        page_ = pager_->Read(next);
        place_ = IndexPage(page_, pager_->GetFormat()).Begin();
    }
}

} // namespace jet
