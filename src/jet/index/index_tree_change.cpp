#include "jet/base/error.h"
#include "jet/index/index_tree.h"
#include "jet/index/page_pieces.h"

#include <algorithm>
#include <cassert>

/// What an insert or a removal does to the tree beyond one page.
///
/// A page that overflows becomes several pieces. Their pages are allocated first and the parent is changed before they
/// are written.
///
/// No entry of a node is ever too small, so none is renamed in its place: a page's last piece takes over the entry that
/// named the page, and what is removed leaves entries that are bounds.
///
/// What every public function of the tree finds and leaves; asserts name the rule that they hold:
///
///  T1  Entries ascend, and no two are equal: in a page, and from each page of a level to the next.
///  T2  A node of k children has k - 1 entries and a tail, and k is two or more. Other writers leave nodes of one;
///      such a node is read, and goes with the next change that it meets.
///  T3  The entry of a child, its separator, is not less than the last leaf entry below the child and less than the
///      first leaf entry below the child that follows. It need not be there as a leaf entry any more.
///  T4  The root keeps its page number and has no neighbours. It is a leaf exactly when it has no children.
///  T5  All leaves lie equally deep. The level of a page is its distance from them: 0 in leaves, and in leaves only.
///  T6  No page but the root is empty.
///  T7  `previous` and `next` link all pages of a level from left to right, whoever their parents are.
///  T8  The index's usage map names the tree's pages, the root among them, and no others.
///  T9  lastLeaf_ is 0 or the leaf without a next one; greatest_ is empty or the last entry of lastLeaf_, which is then
///      known; lastUsed_ is 0, or greatest_ is known and the leaf is filled and packed as lastUsed_ and lastPrefix_
///      say.
///  T10 guessedLeaf_ is 0 or a leaf, and guessedPlace_ where one of its entries begins, or its last ends.
///
/// In the midst of a change, from the bottom up: the new pages are in the map (T8), then the parent knows its children
/// (T2, T3), then the pages are written and linked (T1, T7). A file may break each of these rules; what is read from
/// one is checked and ends with CorruptPage, not with an assert.
namespace jet {

/// A page for a split, in the index's map.
PageNumber IndexTree::NewPage()
{
    const PageNumber page = pager_->Allocate().Number();
    pages_.Add(page);
    return page;
}

namespace {

/// A file that is damaged, or in which a node's entries leave out what the tails below lead to, can give others.
void RequireOrder(PageNumber page, const EntryList& entries, std::span<const PagePiece> pieces)
{
    for (const PagePiece& piece : pieces)
        for (std::size_t i = piece.first + 1; i < piece.first + piece.count; ++i)
            if (CompareBytes(entries[i - 1], entries[i]) >= 0)
                throw CorruptPage(page, "the entries of the index are not in order");
}

} // namespace

/// Inserts entry_ where its leaf cannot simply take it.
void IndexTree::InsertRebuilding()
{
    Path path;
    const PageRef ref = Descend(entry_, &path);
    const IndexPage leaf = View(ref);
    const std::size_t place = leaf.LowerBound(entry_);
    if (place == leaf.End() && leaf.Next() == 0)
        return ExtendLastLeaf(path, ref);
    const GrownLeaf entries(ref, GetFormat(), place, entry_);
    StorePage(path, path.size(), leaf.Number(), 0, entries, CutLeaf(entries, GetFormat()));
}

/// Puts entry_ behind the entries of `ref`, the rightmost leaf, which has no room for it as it is. That leaf is packed
/// when it is full for the first time, which its prefix tells, goes on taking entries that share this prefix, and is
/// then left as it is.
void IndexTree::ExtendLastLeaf(const Path& path, const PageRef& ref)
{
    if (View(ref).Begin() == 0 && PackAndInsert(ref))
        return;
    const IndexPage leaf = View(ref);
    if (!path.empty())
        return AddLeaf(path, leaf);
    const GrownLeaf entries(ref, GetFormat(), leaf.End(), entry_);
    StorePage(path, 0, leaf.Number(), 0, entries, CutOffLast(leaf, entries));
}

/// Packs the rightmost leaf, which is not, and puts entry_ behind its entries. False when there is no room even so.
bool IndexTree::PackAndInsert(const PageRef& ref)
{
    const IndexPage leaf = View(ref);
    Bytes first, last;
    leaf.CopyEntry(leaf.Begin(), first);
    leaf.CopyEntry(leaf.Before(leaf.End()), last);
    const std::size_t prefixSize = LongestPrefix(first, last, GetFormat());
    if (prefixSize == 0)
        return false;
    IndexPageEditor editor(pager_->Write(leaf.Number()), GetFormat());
    editor.Pack(leaf, prefixSize);
    const IndexPage packed = editor.View();
    return editor.Insert(packed, packed.End(), entry_);
}

/// Makes a leaf of entry_ alone behind `leaf`, the rightmost and not the root, which stays as it is.
void IndexTree::AddLeaf(const Path& path, const IndexPage& leaf)
{
    Bytes last;
    leaf.CopyEntry(leaf.Before(leaf.End()), last);
    const PageNumber added = NewPage();
    AddChild(path, path.size() - 1, last, leaf.Number(), added);

    IndexPageEditor(pager_->Write(leaf.Number()), GetFormat()).SetNext(added);
    const MutablePageRef ref = pager_->Write(added);
    MakeEmpty(ref, GetFormat(), definitionPage_);
    IndexPageEditor editor(ref, GetFormat());
    editor.SetPrevious(leaf.Number());
    const IndexPage empty = editor.View();
    if (!editor.Insert(empty, empty.Begin(), entry_))
        throw CorruptPage(added, "an entry of the index is too large for a page");
    lastLeaf_ = added;
}

/// Takes `leaf`, which is not the root and has entry_ alone, out of the tree.
void IndexTree::RemoveLeaf(PageNumber leaf)
{
    Path path;
    if (Descend(entry_, &path).Number() != leaf)
        throw CorruptPage(leaf, "the nodes of the index do not lead to this leaf");
    RemovePage(path, path.size(), leaf);
}

/// Writes `pieces` of `entries` in the place of `page`, at `depth` of the path: the first stays on the page, the others
/// go to new ones behind it. All pieces of the root go to new pages, and the root becomes a node above them.
template <typename Entries>
void IndexTree::StorePage(const Path& path, std::size_t depth, PageNumber page, std::uint8_t level,
                          const Entries& entries, std::span<const PagePiece> pieces)
{
    assert(!pieces.empty());                    // T6
    assert(level != 0 || depth == path.size()); // T5
    if (!std::ranges::all_of(pieces, [&](const PagePiece& piece) { return piece.Fits(GetFormat()); }))
        throw CorruptPage(page, "the entries of the index are too large for its pages");
    std::vector<PageNumber> numbers;
    const auto [previous, next] = Neighbours(page);
    for (std::size_t i = 0; i < pieces.size(); ++i)
        numbers.push_back(i == 0 && (depth != 0 || pieces.size() == 1) ? page : NewPage());
    if (pieces.size() == 2 && depth != 0) {
        AddChild(path, depth - 1, pieces[0].key, page, numbers[1]);
    } else if (pieces.size() > 1) {
        NodeChildren children;
        for (std::size_t i = 0; i < pieces.size(); ++i)
            children.Add(pieces[i].key, numbers[i]);
        if (depth == 0)
            StoreNode(path, 0, static_cast<std::uint8_t>(level + 1), children);
        else
            ReplaceChildren(path, depth - 1, path[depth - 1].child, 1, children);
    }

    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const MutablePageRef ref = pager_->Write(numbers[i]);
        IndexPageEditor::MakeEmpty(ref, GetFormat(), definitionPage_, level);
        IndexPageEditor editor(ref, GetFormat());
        editor.SetPrevious(i == 0 ? previous : numbers[i - 1]);
        editor.SetNext(i + 1 == pieces.size() ? next : numbers[i + 1]);
        editor.SetTail(pieces[i].tail);
        EntryWriter writer(ref, GetFormat(), pieces[i].packing.prefixSize);
        entries.WriteTo(writer, pieces[i].first, pieces[i].count);
        writer.Finish();
    }
    if (next != 0)
        IndexPageEditor(pager_->Write(next), GetFormat()).SetPrevious(numbers.back());
    if (level == 0)
        lastLeaf_ = next == 0 ? numbers.back() : lastLeaf_;
}

/// `page`, the child taken at `depth` of the path, was cut in two: `key` is now the last leaf entry below it, and what
/// its node says of it so far is true of `added`.
void IndexTree::AddChild(const Path& path, std::size_t depth, ByteSpan key, PageNumber page, PageNumber added)
{
    const Step& step = path[depth];
    if (AddChildInPlace(step, key, page, added))
        return;
    NodeChildren children;
    children.Add(key, page);
    children.Add({}, added);
    ReplaceChildren(path, depth, step.child, 1, children);
}

/// As long as the node's page can take one more entry, no other is touched. False, and nothing has changed, when it
/// cannot.
bool IndexTree::AddChildInPlace(const Step& step, ByteSpan key, PageNumber page, PageNumber added)
{
    const PageRef ref = pager_->Read(step.page, PageType::IndexNode);
    const IndexPage node = View(ref);
    if (!step.isTail && node.OwnPart(step.place).size() < kChildPointerSize)
        return false; // the prefix has a part of the number that is to be replaced
    Bytes entry(key.begin(), key.end());
    entry.resize(key.size() + kChildPointerSize);
    StoreBigU32(entry, key.size(), page);
    if (node.LowerBound(entry) != step.place)
        return false;
    IndexPageEditor editor(pager_->Write(step.page), GetFormat());
    if (!editor.Insert(node, step.place, entry))
        return false;
    const IndexPage after = editor.View();
    if (step.isTail)
        editor.SetTail(added);
    else
        editor.SetChild(after, after.After(step.place), added);
    return true;
}

/// Makes the node at `depth` of the path have these children, two or more.
void IndexTree::StoreNode(const Path& path, std::size_t depth, std::uint8_t level, const NodeChildren& children)
{
    assert(level != 0);            // T5
    assert(children.Count() >= 2); // T2
    const PageNumber page = depth == 0 ? root_ : path[depth].page;
    const bool isRightEdge =
        depth < path.size() && std::all_of(path.begin(), path.begin() + static_cast<std::ptrdiff_t>(depth) + 1,
                                           [](const Step& step) { return step.isTail; });
    const EntryList entries = children.Entries();
    const std::vector<PagePiece> pieces = CutNode(children, entries, isRightEdge, GetFormat());
    RequireOrder(page, entries, pieces);
    StorePage(path, depth, page, level, entries, pieces);
}

/// Puts other children in the place of `count` ones from `first` of the node at `depth` of the path. The last of the
/// new ones takes over the key of the last that goes: that is the last entry below it, or a bound above it, still.
void IndexTree::ReplaceChildren(const Path& path, std::size_t depth, std::size_t first, std::size_t count,
                                const NodeChildren& replacement)
{
    const PageNumber page = path[depth].page;
    const NodeChildren before = ReadChildren(page);
    if (first + count > before.Count())
        throw CorruptPage(page, "the index node stands in its tree twice");
    NodeChildren after;
    after.AddFrom(before, 0, first);
    if (const std::size_t added = replacement.Count(); added != 0) {
        after.AddFrom(replacement, 0, added - 1);
        after.Add(before.keys[first + count - 1], replacement.pages.back());
    }
    after.AddFrom(before, first + count, before.Count() - first - count);

    if (after.Count() == 0)
        return depth == 0 ? MakeEmpty(pager_->Write(root_), GetFormat(), definitionPage_)
                          : RemovePage(path, depth, page);
    if (after.Count() == 1)
        return depth == 0 ? TakeContentOf(after.pages[0]) : JoinSibling(path, depth, after);
    StoreNode(path, depth, LevelAt(path, depth), after);
}

/// Takes a page that has nothing left, at `depth` of the path and not the root, out of the tree.
void IndexTree::RemovePage(const Path& path, std::size_t depth, PageNumber page)
{
    assert(depth != 0); // T4
    Unlink(page);
    ReplaceChildren(path, depth - 1, path[depth - 1].child, 1, {});
    FreePage(page);
}

/// The node at `depth` of the path, not the root, has one child left, which is one too few: it takes a child from the
/// node beside it, or the two are merged.
void IndexTree::JoinSibling(const Path& path, std::size_t depth, const NodeChildren& only)
{
    assert(depth != 0);        // T4
    assert(only.Count() == 1); // what T2 is restored from
    const Step& step = path[depth - 1];
    const NodeChildren siblings = ReadChildren(step.page);
    const auto store = [&](PageNumber page, const NodeChildren& children, std::size_t first, std::size_t end) {
        const EntryList entries = children.Entries();
        const PagePiece piece = NodePiece(children, entries, first, end, GetFormat());
        RequireOrder(page, entries, {&piece, 1});
        StorePage(path, depth, page, LevelAt(path, depth), entries, std::span(&piece, 1));
    };
    if (siblings.Count() < 2) // not by our hand: nodes have two children
        return store(path[depth].page, only, 0, 1);
    if (step.child >= siblings.Count())
        throw CorruptPage(step.page, "the index node stands in its tree twice");

    const bool isLeft = step.child == 0;
    const std::size_t left = isLeft ? 0 : step.child - 1;
    const PageNumber leftPage = siblings.pages[left];
    const PageNumber rightPage = siblings.pages[left + 1];
    const NodeChildren leftPart = isLeft ? only : ReadChildren(leftPage);
    const NodeChildren rightPart = isLeft ? ReadChildren(rightPage) : only;
    // The tail on the left comes to stand before others: what the parent says of its node is true of it.
    NodeChildren all;
    all.AddFrom(leftPart, 0, leftPart.Count() - 1);
    all.Add(siblings.keys[left], leftPart.pages.back());
    all.AddFrom(rightPart, 0, rightPart.Count());

    const std::size_t count = all.Count();
    if (count <= 3) {
        store(leftPage, all, 0, count);
        Unlink(rightPage);
        NodeChildren joined;
        joined.Add({}, leftPage);
        ReplaceChildren(path, depth - 1, left, 2, joined);
        FreePage(rightPage);
    } else {
        const std::size_t cut = isLeft ? 2 : count - 2;
        store(leftPage, all, 0, cut);
        store(rightPage, all, cut, count);
        NodeChildren shared;
        shared.Add(all.keys[cut - 1], leftPage);
        shared.Add({}, rightPage);
        ReplaceChildren(path, depth - 1, left, 2, shared);
    }
}

/// The root has one child left: it takes that child's content, and the tree loses a level.
void IndexTree::TakeContentOf(PageNumber child)
{
    if (child == root_)
        throw CorruptPage(root_, "the index node stands in its tree twice");
    {
        const PageRef from = pager_->Read(child);
        (void)View(from);
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
    const auto [previous, next] = Neighbours(page);
    if (previous != 0)
        IndexPageEditor(pager_->Write(previous), GetFormat()).SetNext(next);
    if (next != 0)
        IndexPageEditor(pager_->Write(next), GetFormat()).SetPrevious(previous);
}

void IndexTree::FreePage(PageNumber page)
{
    pages_.Remove(page);
    pager_->Free(page);
    if (page == lastLeaf_)
        Forget();
}

/// Nothing is at hand any more.
void IndexTree::Forget() noexcept
{
    lastLeaf_ = 0;
    greatest_.clear();
    lastUsed_ = 0;
    guessedLeaf_ = 0;
}

/// The pages before and behind `page` on its level, 0 where there is none. Both are pages of an index.
std::pair<PageNumber, PageNumber> IndexTree::Neighbours(PageNumber page) const
{
    const PageRef ref = pager_->Read(page);
    const IndexPage view = View(ref);
    for (const PageNumber neighbour : {view.Previous(), view.Next()})
        if (neighbour != 0)
            (void)View(pager_->Read(neighbour));
    return {view.Previous(), view.Next()};
}

NodeChildren IndexTree::ReadChildren(PageNumber node) const
{
    const PageRef ref = pager_->Read(node, PageType::IndexNode);
    const IndexPage page = View(ref);
    const EntryList entries = page.Entries();
    NodeChildren children;
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

} // namespace jet
