#include "jet/index/index_tree.h"

#include "jet/error.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <optional>
#include <string>

namespace jet {

namespace {

constexpr std::size_t kMaxLevels = 16;

/// key · page, slot: the bytes by which entries are ordered.
void MakeEntry(Bytes& entry, ByteSpan key, RowId row)
{
    entry.assign(key.begin(), key.end());
    entry.resize(key.size() + kRowPointerSize);
    StoreBigU32(entry, key.size(), row.Pointer());
}

void AppendChild(Bytes& entry, PageNumber child)
{
    entry.resize(entry.size() + 4);
    StoreBigU32(entry, entry.size() - 4, child);
}

PageNumber ChildOf(ByteSpan nodeEntry) noexcept
{
    return LoadBigU32(nodeEntry, nodeEntry.size() - 4);
}

/// The part of a node's entry that takes part in comparisons.
ByteSpan WithoutChild(ByteSpan nodeEntry) noexcept
{
    return nodeEntry.first(nodeEntry.size() - 4);
}

Bytes NodeEntry(ByteSpan last, PageNumber child)
{
    Bytes entry(last.begin(), last.end());
    AppendChild(entry, child);
    return entry;
}

bool Less(ByteSpan a, ByteSpan b) noexcept
{
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end());
}

/// Do two leaf entries have the same key?
bool SameKey(ByteSpan a, ByteSpan b) noexcept
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() - kRowPointerSize) == 0;
}

/// The prefix with which `entries` fit a page: the one the page has now when that will do, else the longest; nullopt
/// when even that is not enough.
std::optional<std::size_t> FittingPrefix(const IndexEntries& entries, std::size_t room)
{
    if (entries.PackedSize(0) <= room)
        return 0;
    const std::size_t prefix = entries.CommonPrefix();
    if (entries.PackedSize(prefix) <= room)
        return prefix;
    return std::nullopt;
}

} // namespace

ByteSpan IndexTree::Cursor::Key() const noexcept
{
    const ByteSpan entry = entries_[at_];
    return entry.first(entry.size() - kRowPointerSize);
}

RowId IndexTree::Cursor::Row() const noexcept
{
    const ByteSpan entry = entries_[at_];
    return RowId::FromPointer(LoadBigU32(entry, entry.size() - kRowPointerSize));
}

void IndexTree::Cursor::Load(PageNumber leaf)
{
    if (++pagesSeen_ > pager_->PageCount())
        throw CorruptPage(leaf, "the chain of index leaves goes round");
    const PageRef ref = pager_->Read(leaf);
    const IndexPage page(ref.Bytes(), leaf, pager_->GetFormat());
    if (!page.IsLeaf())
        throw CorruptPage(leaf, "an index leaf is expected here");
    page.ReadEntries(entries_);
    next_ = page.Next();
    at_ = 0;
}

void IndexTree::Cursor::Next()
{
    ++at_;
    while (at_ >= entries_.Count() && next_ != 0)
        Load(next_);
}

IndexTree::IndexTree(Pager& pager, PageNumber root, RowId usageMap, PageNumber definitionPage)
    : pager_(&pager), root_(root), pages_(pager, usageMap), definitionPage_(definitionPage)
{
}

void IndexTree::MakeEmpty(const MutablePageRef& root, const Format& format, PageNumber definitionPage)
{
    IndexPageEditor(root, format).MakeEmpty(definitionPage, 0);
}

/// The leaf in which `target` belongs, and the way to it.
PageRef IndexTree::Descend(ByteSpan target, Path* path) const
{
    PageRef ref = pager_->Read(root_);
    for (std::size_t depth = 0;; ++depth) {
        const IndexPage page(ref.Bytes(), ref.Number(), GetFormat());
        if (page.IsLeaf())
            return ref;
        if (depth == kMaxLevels)
            throw CorruptPage(ref.Number(), "the index has too many levels");
        page.ReadEnds(ends_);
        const std::size_t child = page.LowerBound(target, ends_);
        if (path != nullptr)
            path->push_back({ref.Number(), child});
        ref = pager_->Read(page.Child(child, ends_));
    }
}

/// The rightmost leaf, and the way to it.
PageRef IndexTree::DescendToLast(Path& path) const
{
    PageRef ref = pager_->Read(root_);
    for (std::size_t depth = 0;; ++depth) {
        const IndexPage page(ref.Bytes(), ref.Number(), GetFormat());
        if (page.IsLeaf())
            return ref;
        if (depth == kMaxLevels)
            throw CorruptPage(ref.Number(), "the index has too many levels");
        page.ReadEnds(ends_);
        path.push_back({ref.Number(), ends_.size()});
        ref = pager_->Read(page.Tail());
    }
}

IndexTree::Cursor IndexTree::Seek(ByteSpan key) const
{
    const PageRef leaf = Descend(key, nullptr);
    Cursor cursor;
    cursor.pager_ = pager_;
    cursor.Load(leaf.Number());
    while (!cursor.AtEnd() && Less(cursor.entries_[cursor.at_], key))
        cursor.Next();
    if (cursor.AtEnd() && cursor.next_ != 0)
        cursor.Next();
    return cursor;
}

bool IndexTree::Contains(ByteSpan key) const
{
    // Counters only grow and records refer to the parent just made: most questions are answered by the very last entry.
    if (lastLeaf_ != 0) {
        LastOf(lastLeaf_, last_);
        const ByteSpan lastKey = ByteSpan(last_).first(last_.empty() ? 0 : last_.size() - kRowPointerSize);
        if (Less(lastKey, key))
            return false;
        if (std::ranges::equal(lastKey, key))
            return true;
    }
    PageRef ref = Descend(key, nullptr);
    std::size_t at = 0;
    for (;;) {
        const IndexPage leaf(ref.Bytes(), ref.Number(), GetFormat());
        leaf.ReadEnds(ends_);
        at = leaf.LowerBound(key, ends_);
        if (at < ends_.size() || leaf.Next() == 0)
            break;
        // A separator is only an upper bound once its entry was deleted: the first entry behind it stands in the next
        // leaf, which is not empty.
        ref = pager_->Read(leaf.Next());
    }
    if (at == ends_.size())
        return false;
    Bytes entry;
    IndexPage(ref.Bytes(), ref.Number(), GetFormat()).ReadEntry(at, ends_, entry);
    return entry.size() == key.size() + kRowPointerSize && std::memcmp(entry.data(), key.data(), key.size()) == 0;
}

bool IndexTree::Insert(ByteSpan key, RowId row)
{
    MakeEntry(entry_, key, row);
    if (entry_.size() > GetFormat().indexPage.room / 3)
        throw Error(ErrorNumber::RecordTooLarge, {},
                    "An index key of " + std::to_string(key.size()) + " bytes is too long.");
    bool isNew = false;
    if (InsertBehindLast(isNew))
        return isNew;

    Path path;
    const PageNumber leafNumber = Descend(entry_, &path).Number();
    const MutablePageRef leaf = pager_->Write(leafNumber);
    const IndexPage page(leaf.Bytes(), leafNumber, GetFormat());
    page.ReadEnds(ends_);
    const std::size_t at = page.LowerBound(entry_, ends_);
    isNew = !HasNeighbourKey(page, at);
    if (!IndexPageEditor(leaf, GetFormat()).InsertInPlace(at, at == 0 ? 0 : ends_[at - 1], entry_))
        InsertRewriting(path, leaf, at);
    return isNew;
}

/// The append path: an entry behind all others goes to the rightmost leaf without a search. False when it is none.
bool IndexTree::InsertBehindLast(bool& isNew)
{
    if (lastLeaf_ == 0) {
        Path path;
        lastLeaf_ = DescendToLast(path).Number();
    }
    const MutablePageRef leaf = pager_->Write(lastLeaf_);
    IndexPage(leaf.Bytes(), lastLeaf_, GetFormat()).ReadLast(last_);
    if (!last_.empty() && !Less(last_, entry_))
        return false;
    isNew = last_.empty() || !SameKey(last_, entry_);
    AppendToLeaf(leaf);
    return true;
}

/// A leaf stays unpacked until it is full for the first time, is then packed once, and takes further entries as long as
/// they share that prefix; then a new leaf begins.
void IndexTree::AppendToLeaf(const MutablePageRef& leaf)
{
    const Format& format = GetFormat();
    IndexPageEditor editor(leaf, format);
    const auto append = [&] {
        const IndexPage page(leaf.Bytes(), leaf.Number(), format);
        return editor.InsertInPlace(page.Used() == 0 ? 0 : 1, page.Used(), entry_);
    };
    if (append())
        return;
    const IndexPage page(leaf.Bytes(), leaf.Number(), format);
    if (page.PrefixLength() == 0) {
        IndexEntries entries;
        page.ReadEntries(entries);
        editor.WriteEntries(entries, entries.CommonPrefix());
        if (append())
            return;
    }
    StartLeaf(leaf, last_);
}

/// The new entry begins a leaf of its own behind `leaf`, the rightmost, whose last entry is `last`.
void IndexTree::StartLeaf(const MutablePageRef& leaf, ByteSpan last)
{
    Path path;
    (void)DescendToLast(path);
    IndexEntries upper;
    upper.Append(entry_);
    if (path.empty()) {
        IndexEntries lower;
        IndexPage(leaf.Bytes(), leaf.Number(), GetFormat()).ReadEntries(lower);
        SplitRoot(lower, upper, last, 0);
        return;
    }
    const MutablePageRef fresh = NewPage(0);
    IndexPageEditor(fresh, GetFormat()).WriteEntries(upper, 0);
    LinkBehind(leaf.Number(), fresh);
    AddToParent(path, last, leaf.Number(), fresh.Number());
    lastLeaf_ = fresh.Number();
}

/// Does an entry beside place `at` of the leaf have the key of entry_?
bool IndexTree::HasNeighbourKey(const IndexPage& page, std::size_t at) const
{
    Bytes other;
    if (at < ends_.size()) {
        page.ReadEntry(at, ends_, other);
        if (SameKey(other, entry_))
            return true;
    }
    if (at > 0)
        page.ReadEntry(at - 1, ends_, other);
    else if (page.Previous() != 0)
        LastOf(page.Previous(), other);
    else
        return false;
    return SameKey(other, entry_);
}

void IndexTree::LastOf(PageNumber page, Bytes& entry) const
{
    const PageRef ref = pager_->Read(page);
    IndexPage(ref.Bytes(), page, GetFormat()).ReadLast(entry);
}

void IndexTree::InsertRewriting(Path& path, const MutablePageRef& leaf, std::size_t at)
{
    IndexEntries entries;
    IndexPage(leaf.Bytes(), leaf.Number(), GetFormat()).ReadEntries(entries);
    entries.Insert(at, entry_);
    StoreOrSplit(path, leaf.Number(), entries, false);
}

/// Writes `entries` to `page`, the child that `path` ends in, splitting it when they do not fit. `atEnd`: the newest
/// entry is the last of the rightmost node, so what comes next will come behind it.
void IndexTree::StoreOrSplit(Path& path, PageNumber page, IndexEntries& entries, bool atEnd)
{
    if (const auto prefix = FittingPrefix(entries, GetFormat().indexPage.room))
        IndexPageEditor(pager_->Write(page), GetFormat()).WriteEntries(entries, *prefix);
    else
        Split(path, page, entries, atEnd);
}

/// The lower half stays, the upper half goes to a new page behind it. Of a node the entry in the middle goes up: its
/// child becomes the lower half's tail.
void IndexTree::Split(Path& path, PageNumber page, IndexEntries& entries, bool atEnd)
{
    const PageRef ref = pager_->Read(page);
    const IndexPage view(ref.Bytes(), page, GetFormat());
    const std::size_t count = entries.Count();
    const bool isLeaf = view.IsLeaf();
    std::size_t keep = atEnd ? count - 2 : count / 2;
    // Halves by count may still be too large when the entries differ much in size.
    const auto fits = [&](std::size_t from, std::size_t to) {
        IndexEntries part;
        entries.CopyTo(part, from, to);
        return FittingPrefix(part, GetFormat().indexPage.room).has_value();
    };
    const std::size_t taken = isLeaf ? 0 : 1;
    while (keep > 1 && !fits(0, keep))
        --keep;
    while (keep + taken + 1 < count && !fits(keep + taken, count))
        ++keep;

    IndexEntries lower;
    IndexEntries upper;
    entries.CopyTo(lower, 0, keep);
    entries.CopyTo(upper, keep + taken, count);
    const ByteSpan middle = entries[isLeaf ? keep - 1 : keep];
    const Bytes separator(middle.begin(), middle.end() - (isLeaf ? 0 : 4));
    const PageNumber lowerTail = isLeaf ? 0 : ChildOf(middle);
    if (page == root_) {
        SplitRoot(lower, upper, separator, lowerTail);
        return;
    }

    const MutablePageRef fresh = NewPage(view.Level());
    IndexPageEditor upperEditor(fresh, GetFormat());
    upperEditor.WriteEntries(upper, *FittingPrefix(upper, GetFormat().indexPage.room));
    upperEditor.SetTail(view.Tail());
    IndexPageEditor lowerEditor(pager_->Write(page), GetFormat());
    lowerEditor.WriteEntries(lower, *FittingPrefix(lower, GetFormat().indexPage.room));
    lowerEditor.SetTail(lowerTail);
    LinkBehind(page, fresh);
    if (page == lastLeaf_)
        lastLeaf_ = 0;
    AddToParent(path, separator, page, fresh.Number());
}

/// Both halves of the root go to new pages, and the root, which keeps its place, becomes a node above them.
void IndexTree::SplitRoot(IndexEntries& lower, IndexEntries& upper, ByteSpan separator, PageNumber lowerTail)
{
    const MutablePageRef root = pager_->Write(root_);
    const IndexPage view(root.Bytes(), root_, GetFormat());
    const std::uint8_t level = view.Level();
    const PageNumber upperTail = view.Tail();
    const std::size_t room = GetFormat().indexPage.room;

    const MutablePageRef a = NewPage(level);
    const MutablePageRef b = NewPage(level);
    IndexPageEditor lowerEditor(a, GetFormat());
    // A leaf that was packed when it ran full stays packed.
    lowerEditor.WriteEntries(lower, lower.PackedSize(view.PrefixLength()) <= room &&
                                            view.PrefixLength() <= lower.CommonPrefix()
                                        ? view.PrefixLength()
                                        : *FittingPrefix(lower, room));
    lowerEditor.SetTail(lowerTail);
    lowerEditor.SetNext(b.Number());
    IndexPageEditor upperEditor(b, GetFormat());
    upperEditor.WriteEntries(upper, *FittingPrefix(upper, room));
    upperEditor.SetTail(upperTail);
    upperEditor.SetPrevious(a.Number());

    IndexPageEditor rootEditor(root, GetFormat());
    rootEditor.MakeEmpty(definitionPage_, static_cast<std::uint8_t>(level + 1));
    IndexEntries entries;
    entries.Append(NodeEntry(separator, a.Number()));
    rootEditor.WriteEntries(entries, 0);
    rootEditor.SetTail(b.Number());
    lastLeaf_ = level == 0 ? b.Number() : 0;
}

/// The child in which `path` ends was split: `lower` keeps its place under `separator`, what named it now names
/// `upper`.
void IndexTree::AddToParent(Path& path, ByteSpan separator, PageNumber lower, PageNumber upper)
{
    const Step step = path.back();
    path.pop_back();
    const MutablePageRef node = pager_->Write(step.page);
    const IndexPage view(node.Bytes(), step.page, GetFormat());
    IndexEntries entries;
    view.ReadEntries(entries);
    const bool wasTail = step.child == entries.Count();
    if (wasTail) {
        IndexPageEditor(node, GetFormat()).SetTail(upper);
    } else {
        const Bytes renamed = NodeEntry(WithoutChild(entries[step.child]), upper);
        entries.Erase(step.child);
        entries.Insert(step.child, renamed);
    }
    entries.Insert(step.child, NodeEntry(separator, lower));
    StoreOrSplit(path, step.page, entries, wasTail && view.Next() == 0 && entries.Count() > 2);
}

MutablePageRef IndexTree::NewPage(std::uint8_t level)
{
    MutablePageRef page = pager_->Allocate();
    IndexPageEditor(page, GetFormat()).MakeEmpty(definitionPage_, level);
    pages_.Add(page.Number());
    return page;
}

void IndexTree::LinkBehind(PageNumber page, const MutablePageRef& fresh)
{
    const MutablePageRef before = pager_->Write(page);
    const PageNumber next = IndexPage(before.Bytes(), page, GetFormat()).Next();
    IndexPageEditor(before, GetFormat()).SetNext(fresh.Number());
    IndexPageEditor editor(fresh, GetFormat());
    editor.SetPrevious(page);
    editor.SetNext(next);
    if (next != 0)
        IndexPageEditor(pager_->Write(next), GetFormat()).SetPrevious(fresh.Number());
}

void IndexTree::Unlink(PageNumber page)
{
    const PageRef ref = pager_->Read(page);
    const IndexPage view(ref.Bytes(), page, GetFormat());
    if (view.Previous() != 0)
        IndexPageEditor(pager_->Write(view.Previous()), GetFormat()).SetNext(view.Next());
    if (view.Next() != 0)
        IndexPageEditor(pager_->Write(view.Next()), GetFormat()).SetPrevious(view.Previous());
}

void IndexTree::FreePage(PageNumber page)
{
    pages_.Remove(page);
    pager_->Free(page);
    lastLeaf_ = 0;
}

bool IndexTree::Remove(ByteSpan key, RowId row)
{
    MakeEntry(entry_, key, row);
    Path path;
    const PageNumber leafNumber = Descend(entry_, &path).Number();
    IndexEntries entries;
    std::size_t at = 0;
    std::size_t prefix = 0;
    {
        const PageRef ref = pager_->Read(leafNumber);
        const IndexPage leaf(ref.Bytes(), leafNumber, GetFormat());
        leaf.ReadEnds(ends_);
        at = leaf.LowerBound(entry_, ends_);
        leaf.ReadEntries(entries);
        prefix = leaf.PrefixLength();
    }
    if (at == entries.Count() || !std::ranges::equal(entries[at], entry_))
        return false;

    entries.Erase(at);
    if (entries.Count() == 0 && leafNumber != root_) {
        Unlink(leafNumber);
        FreePage(leafNumber);
        RemoveChild(path);
        return true;
    }
    // Without its first entry the page still shares the prefix; a page of one entry needs none.
    IndexPageEditor(pager_->Write(leafNumber), GetFormat()).WriteEntries(entries, entries.Count() < 2 ? 0 : prefix);
    if (at == entries.Count() && !path.empty())
        ReplaceSeparator(path, entries[at - 1]);
    return true;
}

/// The child in which `path` ends has `last` as its last entry now; the entry that names it follows. A tail has none.
void IndexTree::ReplaceSeparator(Path& path, ByteSpan last)
{
    const Step step = path.back();
    path.pop_back();
    IndexEntries entries;
    {
        const PageRef ref = pager_->Read(step.page);
        IndexPage(ref.Bytes(), step.page, GetFormat()).ReadEntries(entries);
    }
    if (step.child == entries.Count())
        return;
    const Bytes replaced = NodeEntry(last, ChildOf(entries[step.child]));
    entries.Erase(step.child);
    entries.Insert(step.child, replaced);
    StoreOrSplit(path, step.page, entries, false);
}

/// The child in which `path` ends is gone: its entry goes too, or the last entry's child becomes the tail in its place.
void IndexTree::RemoveChild(Path& path)
{
    const Step step = path.back();
    path.pop_back();
    const MutablePageRef node = pager_->Write(step.page);
    IndexEntries entries;
    IndexPage(node.Bytes(), step.page, GetFormat()).ReadEntries(entries);
    IndexPageEditor editor(node, GetFormat());
    if (step.child < entries.Count()) {
        entries.Erase(step.child);
    } else {
        editor.SetTail(ChildOf(entries[entries.Count() - 1]));
        entries.Erase(entries.Count() - 1);
    }
    lastLeaf_ = 0;
    editor.WriteEntries(entries, entries.PackedSize(0) <= GetFormat().indexPage.room ? 0 : entries.CommonPrefix());
    if (entries.Count() > 0)
        return;
    if (step.page == root_)
        Collapse(IndexPage(node.Bytes(), root_, GetFormat()).Tail());
    else
        JoinNeighbour(path);
}

/// The root has one child left: it takes that child's content.
void IndexTree::Collapse(PageNumber child)
{
    {
        const PageRef from = pager_->Read(child);
        std::ranges::copy(from.Bytes(), pager_->Write(root_).Data().begin());
    }
    FreePage(child);
}

/// The node in which `path` ends has no entry left, only a tail. It and a neighbour below the same parent become one
/// node, or share their children when one page cannot hold them.
void IndexTree::JoinNeighbour(Path& path)
{
    IndexEntries parent;
    PageNumber parentTail = 0;
    {
        const PageRef ref = pager_->Read(path.back().page);
        const IndexPage view(ref.Bytes(), path.back().page, GetFormat());
        view.ReadEntries(parent);
        parentTail = view.Tail();
    }
    const std::size_t left = std::min(path.back().child, parent.Count() - 1);
    path.back().child = left;
    const PageNumber leftPage = ChildOf(parent[left]);
    const PageNumber rightPage = left + 1 == parent.Count() ? parentTail : ChildOf(parent[left + 1]);

    IndexEntries children;
    {
        const PageRef ref = pager_->Read(leftPage);
        const IndexPage view(ref.Bytes(), leftPage, GetFormat());
        view.ReadEntries(children);
        Bytes last(WithoutChild(parent[left]).begin(), WithoutChild(parent[left]).end());
        if (view.Level() == 1)
            LastOf(view.Tail(), last);
        children.Append(NodeEntry(last, view.Tail()));
    }
    IndexEntries right;
    const MutablePageRef rightRef = pager_->Write(rightPage);
    IndexPage(rightRef.Bytes(), rightPage, GetFormat()).ReadEntries(right);
    right.CopyTo(children, 0, right.Count());

    const std::size_t room = GetFormat().indexPage.room;
    IndexPageEditor rightEditor(rightRef, GetFormat());
    if (const auto prefix = FittingPrefix(children, room)) {
        rightEditor.WriteEntries(children, *prefix);
        Unlink(leftPage);
        FreePage(leftPage);
        RemoveChild(path);
        return;
    }
    const std::size_t middle = children.Count() / 2;
    IndexEntries lower;
    IndexEntries upper;
    children.CopyTo(lower, 0, middle);
    children.CopyTo(upper, middle + 1, children.Count());
    IndexPageEditor leftEditor(pager_->Write(leftPage), GetFormat());
    leftEditor.WriteEntries(lower, *FittingPrefix(lower, room));
    leftEditor.SetTail(ChildOf(children[middle]));
    rightEditor.WriteEntries(upper, *FittingPrefix(upper, room));
    ReplaceSeparator(path, WithoutChild(children[middle]));
}

void IndexTree::Clear()
{
    for (const PageNumber page : pages_.Pages()) {
        if (page != root_)
            FreePage(page);
    }
    IndexPageEditor(pager_->Write(root_), GetFormat()).MakeEmpty(definitionPage_, 0);
    lastLeaf_ = 0;
}

void IndexTree::Destroy()
{
    for (const PageNumber page : pages_.Pages())
        FreePage(page);
}

} // namespace jet
