#include "jet/error.h"
#include "jet/index/index_tree.h"

#include <algorithm>
#include <array>
#include <cassert>

/// What an insert or a removal does to the tree beyond one page.
///
/// A page that overflows becomes several pieces. Their pages are allocated first and the parent is changed before they
/// are written, so a database that runs full is noticed on the way up, before anything has changed.
namespace jet {

namespace {

bool Fits(const Format& format, const PagePacking& packing)
{
    return packing.usedBytes <= format.indexPage.room;
}

} // namespace

/// The children of a node, in order.
struct IndexTree::Children {
    EntryList keys; ///< the last entry on each child's page, without child pointer; empty where not known
    std::vector<PageNumber> pages;

    [[nodiscard]] std::size_t Count() const noexcept { return pages.size(); }
    void Add(ByteSpan key, PageNumber page)
    {
        keys.Add(key);
        pages.push_back(page);
    }
    void AddFrom(const Children& other, std::size_t first, std::size_t count)
    {
        for (std::size_t i = first; i < first + count; ++i)
            Add(other.keys[i], other.pages[i]);
    }
    /// The key that the node's last entry has: that of the last child but one.
    [[nodiscard]] ByteSpan LastKey() const noexcept { return Count() < 2 ? ByteSpan() : keys[Count() - 2]; }
};

/// A run of entries that becomes one page.
struct IndexTree::Piece {
    std::size_t first = 0;
    std::size_t count = 0;
    PagePacking packing;
    PageNumber tail = 0;
};

/// The entries for all children; that of the last is used only when it does not become the tail.
EntryList IndexTree::NodeEntries(const Children& children)
{
    EntryList entries;
    for (std::size_t i = 0; i < children.Count(); ++i) {
        std::array<Byte, kChildPointerSize> pointer{};
        StoreBigU32(pointer, 0, children.pages[i]);
        entries.Add(children.keys[i], pointer);
    }
    return entries;
}

/// The children `first` up to `end` as one node: the last of them becomes its tail. Nodes stay unpacked as long as they
/// have room.
IndexTree::Piece IndexTree::NodePiece(const Format& format, const Children& children, const EntryList& entries,
                                      std::size_t first, std::size_t end)
{
    const std::size_t count = end - first - 1;
    const PagePacking unpacked = Unpacked(entries, first, count);
    return {first, count, Fits(format, unpacked) ? unpacked : Packed(format, entries, first, count),
            children.pages[end - 1]};
}

/// Pages for a split, in the index's map. They go back unless Keep() is called.
class IndexTree::NewPages {
public:
    explicit NewPages(IndexTree& tree) : tree_(&tree) {}
    NewPages(const NewPages&) = delete;
    NewPages& operator=(const NewPages&) = delete;
    ~NewPages()
    {
        for (const PageNumber page : numbers_) {
            try {
                tree_->FreePage(page);
            } catch (const Error&) {
                // The error that brought us here is the one to report.
            }
        }
    }

    PageNumber Take()
    {
        const PageNumber page = tree_->pager_->Allocate().Number();
        numbers_.push_back(page);
        tree_->pages_.Add(page);
        return page;
    }
    void Keep() noexcept { numbers_.clear(); }

private:
    IndexTree* tree_;
    std::vector<PageNumber> numbers_;
};

namespace {

/// The entries of `leaf` with `entry` put at `place`.
EntryList EntriesWith(const IndexPage& leaf, std::size_t place, ByteSpan entry)
{
    const EntryList before = leaf.Entries();
    const std::size_t at = leaf.Ordinal(place);
    EntryList entries;
    entries.Reserve(before.Count() + 1, before.Size(0, before.Count()) + entry.size());
    for (std::size_t i = 0; i <= before.Count(); ++i) {
        if (i == at)
            entries.Add(entry);
        if (i < before.Count())
            entries.Add(before[i]);
    }
    return entries;
}

} // namespace

/// Inserts entry_ where its leaf cannot simply take it.
void IndexTree::InsertRebuilding()
{
    Path path;
    const PageRef ref = Descend(entry_, &path);
    const IndexPage leaf = View(ref);
    const Format& format = GetFormat();
    const std::size_t place = leaf.LowerBound(entry_);
    const EntryList entries = EntriesWith(leaf, place, entry_);
    const std::size_t count = entries.Count();
    std::array<Piece, 3> pieces;
    std::size_t used = 0;
    const auto cut = [&](std::initializer_list<std::size_t> ends) {
        used = 0;
        std::size_t first = 0;
        bool fits = true;
        for (const std::size_t end : ends) {
            if (end == first)
                continue;
            pieces[used] = {first, end - first, Packed(format, entries, first, end - first), 0};
            fits = fits && Fits(format, pieces[used++].packing);
            first = end;
        }
        return fits;
    };

    if (place == leaf.End() && leaf.Next() == 0) {
        // Behind all others: the leaf is packed when it is full for the first time, goes on taking entries that share
        // its prefix, and is then left as it is. The new leaf begins unpacked.
        const std::size_t old = count - 1;
        const PagePacking packing =
            leaf.Begin() == 0 ? Packed(format, entries, 0, old) : PagePacking{leaf.Begin(), leaf.UsedBytes()};
        const ByteSpan prefix = entries[0].first(packing.prefixSize);
        const std::size_t grown = packing.usedBytes + entry_.size() - packing.prefixSize;
        if (entry_.size() > prefix.size() && std::ranges::equal(prefix, ByteSpan(entry_).first(prefix.size())) &&
            grown <= format.indexPage.room) {
            pieces[used++] = {0, count, {packing.prefixSize, grown}, 0};
        } else {
            pieces[used++] = {0, old, packing, 0};
            pieces[used++] = {old, 1, Unpacked(entries, old, 1), 0};
        }
    } else {
        // One page, or halves by count. An entry that spoils the prefix of its half stands at the page's edge, or
        // alone between the rest, which fits as it did before.
        const std::size_t at = leaf.Ordinal(place);
        (void)(cut({count}) || cut({count / 2, count}) || cut({at, count}) || cut({at + 1, count}) ||
               cut({at, at + 1, count}));
    }

    const std::size_t depth = path.size();
    if (used == 1 && place == leaf.End())
        RenameInParent(path, depth, leaf.Number(), entry_);
    StorePage(path, depth, leaf.Number(), 0, entries, std::span(pieces).first(used));
}

/// Removes entry_, the last of its leaf, which is not the root.
void IndexTree::RemoveLast()
{
    Path path;
    PageNumber number = 0;
    Bytes last;
    {
        const PageRef ref = Descend(entry_, &path);
        const IndexPage leaf = View(ref);
        number = leaf.Number();
        const std::size_t place = leaf.Before(leaf.End());
        if (place != leaf.Begin())
            leaf.CopyEntry(leaf.Before(place), last);
    }
    if (last.empty())
        return RemovePage(path, path.size(), number);
    RenameInParent(path, path.size(), number, last);
    const MutablePageRef page = pager_->Write(number);
    const IndexPage leaf = View(page);
    IndexPageEditor(page, GetFormat()).Remove(leaf, leaf.Before(leaf.End()));
}

/// Writes `pieces` of `entries` in the place of `page`, at `depth` of the path: the first stays on the page, the others
/// go to new ones behind it. All pieces of the root go to new pages, and the root becomes a node above them.
void IndexTree::StorePage(const Path& path, std::size_t depth, PageNumber page, std::uint8_t level,
                          const EntryList& entries, std::span<const Piece> pieces)
{
    for (const Piece& piece : pieces) {
        if (!Fits(GetFormat(), piece.packing)) // not by our hand: see the limit in Insert
            throw CorruptPage(page, "the entries of the index are too large for its pages");
    }
    NewPages fresh(*this);
    std::vector<PageNumber> numbers;
    const PageNumber previous = View(pager_->Read(page)).Previous();
    const PageNumber next = NextOf(page);
    if (pieces.size() == 1) {
        numbers.push_back(page);
    } else {
        Children children;
        for (const Piece& piece : pieces) {
            const bool stays = numbers.empty() && depth != 0;
            numbers.push_back(stays ? page : fresh.Take());
            const ByteSpan last = entries[piece.first + piece.count - 1];
            children.Add(last.first(last.size() - (level == 0 ? 0 : kChildPointerSize)), numbers.back());
        }
        if (depth == 0)
            StoreNode(path, 0, static_cast<std::uint8_t>(level + 1), children);
        else
            ReplaceChildren(path, depth - 1, path[depth - 1].child, 1, children);
    }
    fresh.Keep();

    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const MutablePageRef ref = pager_->Write(numbers[i]);
        IndexPageEditor::MakeEmpty(ref, GetFormat(), definitionPage_, level);
        IndexPageEditor editor(ref, GetFormat());
        editor.SetPrevious(i == 0 ? previous : numbers[i - 1]);
        editor.SetNext(i + 1 == pieces.size() ? next : numbers[i + 1]);
        editor.SetTail(pieces[i].tail);
        editor.SetEntries(entries, pieces[i].first, pieces[i].count, pieces[i].packing);
    }
    if (next != 0)
        IndexPageEditor(pager_->Write(next), GetFormat()).SetPrevious(numbers.back());
    if (level == 0)
        lastLeaf_ = next == 0 ? numbers.back() : lastLeaf_;
}

/// Makes the node at `depth` of the path have these children, two or more.
void IndexTree::StoreNode(const Path& path, std::size_t depth, std::uint8_t level, const Children& children)
{
    const Format& format = GetFormat();
    const PageNumber page = depth < path.size() ? path[depth].page : root_;
    const EntryList entries = NodeEntries(children);
    const std::size_t count = children.Count();
    std::vector<Piece> pieces{NodePiece(format, children, entries, 0, count)};
    if (Fits(format, pieces[0].packing)) {
        RenameInParent(path, depth, page, children.LastKey());
    } else {
        // Entries that come up from an append stand at the end of the rightmost node: it stays full, a new one begins.
        const bool isAppend = depth < path.size() && path[depth].isTail && NextOf(page) == 0;
        std::vector<std::size_t> ends{count, isAppend ? count - 2 : count / 2}; // the next one last
        pieces.clear();
        for (std::size_t first = 0; first != count;) {
            const std::size_t end = ends.back();
            const Piece piece = NodePiece(format, children, entries, first, end);
            if (!Fits(format, piece.packing) && end - first > 3) {
                ends.push_back(first + (end - first) / 2);
                continue;
            }
            pieces.push_back(piece);
            ends.pop_back();
            first = end;
        }
    }
    StorePage(path, depth, page, level, entries, pieces);
}

/// The node at `depth` of the path is about to have `key` as its last: where its parent has an entry for it, that entry
/// follows.
void IndexTree::RenameInParent(const Path& path, std::size_t depth, PageNumber page, ByteSpan key)
{
    if (depth == 0 || path[depth - 1].isTail)
        return;
    const Step& step = path[depth - 1];
    const Children siblings = ReadChildren(step.page);
    if (std::ranges::equal(siblings.keys[step.child], key))
        return;
    Children renamed;
    renamed.Add(key, page);
    ReplaceChildren(path, depth - 1, step.child, 1, renamed);
}

/// Puts other children in the place of `count` ones from `first` of the node at `depth` of the path. The keys of the
/// new ones must be known, except when the last of them becomes the tail.
void IndexTree::ReplaceChildren(const Path& path, std::size_t depth, std::size_t first, std::size_t count,
                                const Children& replacement)
{
    const PageNumber page = path[depth].page;
    const Children before = ReadChildren(page);
    Children after;
    after.AddFrom(before, 0, first);
    after.AddFrom(replacement, 0, replacement.Count());
    after.AddFrom(before, first + count, before.Count() - first - count);

    if (after.Count() == 0)
        return depth == 0 ? MakeEmpty(pager_->Write(root_), GetFormat(), definitionPage_)
                          : RemovePage(path, depth, page);
    if (after.Count() == 1)
        return depth == 0 ? TakeContentOf(after.pages[0]) : JoinSibling(path, depth, after);
    StoreNode(path, depth, LevelOf(page), after);
}

/// Takes a page that has nothing left, at `depth` of the path and not the root, out of the tree.
void IndexTree::RemovePage(const Path& path, std::size_t depth, PageNumber page)
{
    Unlink(page);
    ReplaceChildren(path, depth - 1, path[depth - 1].child, 1, {});
    FreePage(page);
}

/// The node at `depth` of the path, not the root, has one child left, which is one too few: it takes a child from the
/// node beside it, or the two become one.
void IndexTree::JoinSibling(const Path& path, std::size_t depth, const Children& only)
{
    const Step& step = path[depth - 1];
    const Children siblings = ReadChildren(step.page);
    const std::uint8_t level = LevelOf(path[depth].page);
    const auto store = [&](PageNumber page, const Children& children, std::size_t first, std::size_t end) {
        const EntryList entries = NodeEntries(children);
        const Piece piece = NodePiece(GetFormat(), children, entries, first, end);
        StorePage(path, depth, page, level, entries, {&piece, 1});
    };
    if (siblings.Count() < 2) // not by our hand: nodes have two children
        return store(path[depth].page, only, 0, 1);

    const bool isLeft = step.child == 0;
    const std::size_t left = isLeft ? 0 : step.child - 1;
    const PageNumber leftPage = siblings.pages[left];
    const PageNumber rightPage = siblings.pages[left + 1];
    // What was a tail and comes to stand before others needs a key.
    Children all;
    const auto addWithKey = [&](const Children& part) {
        all.AddFrom(part, 0, part.Count() - 1);
        all.Add(LastEntry(part.pages.back()), part.pages.back());
    };
    addWithKey(isLeft ? only : ReadChildren(leftPage));
    const Children right = isLeft ? ReadChildren(rightPage) : only;
    all.AddFrom(right, 0, right.Count());

    const std::size_t count = all.Count();
    const std::size_t cut = count <= 3 ? count : isLeft ? 2 : count - 2;
    Children replacement;
    store(leftPage, all, 0, cut);
    replacement.Add(all.keys[cut - 2], leftPage);
    if (cut != count) {
        store(rightPage, all, cut, count);
        replacement.Add(all.keys[count - 2], rightPage);
    } else {
        Unlink(rightPage);
    }
    ReplaceChildren(path, depth - 1, left, 2, replacement);
    if (cut == count)
        FreePage(rightPage);
}

/// The root has one child left: it takes that child's content, and the tree loses a level.
void IndexTree::TakeContentOf(PageNumber child)
{
    {
        const PageRef from = pager_->Read(child);
        const MutablePageRef root = pager_->Write(root_);
        std::ranges::copy(from.Bytes(), root.Data().begin());
        IndexPageEditor editor(root, GetFormat());
        editor.SetPrevious(0);
        editor.SetNext(0);
    }
    FreePage(child);
}

void IndexTree::Unlink(PageNumber page)
{
    const PageRef ref = pager_->Read(page);
    const IndexPage view = View(ref);
    if (view.Previous() != 0)
        IndexPageEditor(pager_->Write(view.Previous()), GetFormat()).SetNext(view.Next());
    if (view.Next() != 0)
        IndexPageEditor(pager_->Write(view.Next()), GetFormat()).SetPrevious(view.Previous());
}

void IndexTree::FreePage(PageNumber page)
{
    pages_.Remove(page);
    pager_->Free(page);
    if (page == lastLeaf_)
        lastLeaf_ = 0;
}

PageNumber IndexTree::NextOf(PageNumber page) const
{
    const PageRef ref = pager_->Read(page);
    return View(ref).Next();
}

std::uint8_t IndexTree::LevelOf(PageNumber page) const
{
    const PageRef ref = pager_->Read(page);
    return View(ref).Level();
}

IndexTree::Children IndexTree::ReadChildren(PageNumber node) const
{
    const PageRef ref = pager_->Read(node, PageType::IndexNode);
    const IndexPage page = View(ref);
    const EntryList entries = page.Entries();
    Children children;
    for (std::size_t i = 0; i < entries.Count(); ++i) {
        const std::size_t keySize = entries[i].size() - kChildPointerSize;
        children.Add(entries[i].first(keySize), LoadBigU32(entries[i], keySize));
    }
    if (page.Tail() != 0)
        children.Add({}, page.Tail());
    if (children.Count() == 0)
        throw CorruptPage(node, "the index node has no children");
    return children;
}

/// Key and row pointer of the last entry on the page.
Bytes IndexTree::LastEntry(PageNumber page) const
{
    const PageRef ref = pager_->Read(page);
    const IndexPage view = View(ref);
    if (view.IsEmpty())
        throw CorruptPage(page, "the index page below a node is empty");
    Bytes entry;
    view.CopyEntry(view.Before(view.End()), entry);
    if (!view.IsLeaf())
        entry.resize(entry.size() - kChildPointerSize);
    return entry;
}

} // namespace jet
