#include "xml/document_builder.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

namespace velmora {

namespace {

constexpr std::size_t kMaxText = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t kNoGroup = ~std::uint32_t{0};
constexpr NameId kNoName = ~NameId{0};

template <class Id>
Id& SlotOf(std::vector<Id>& slots, std::size_t index, Id empty)
{
    if (index >= slots.size())
        slots.resize(index + 1, empty);
    return slots[index];
}

} // namespace

DocumentBuilder::DocumentBuilder(MemoryBudget budget, Blanks blanks)
    : data_(*(document_.impl_ = std::make_unique<Document::Impl>(std::move(budget)))), blanks_(blanks)
{
}

void DocumentBuilder::StartElement(std::string_view name, const char* const* attributes)
{
    if (data_.elements.Size() >= kNoElement - 1 || data_.attributes.Size() >= kMaxText / 2)
        throw std::length_error("the document has too many elements or attributes");
    const auto id = static_cast<ElementId>(data_.elements.Size());
    ElementId parent = kNoElement;
    PathId parentPath = 0;
    PathId before = 0;
    if (!open_.empty()) {
        ClosePieceBesideChild();
        OpenElement& above = open_.back();
        parent = above.id;
        parentPath = above.path;
        before = above.lastChildPath;
        if (above.lastChild != kNoElement)
            data_.elements[above.lastChild].nextSibling = id;
        above.lastChild = id;
        ++above.childCount;
    }
    const PathId path = PathOf(parentPath, before, name);
    if (!open_.empty())
        open_.back().lastChildPath = path;
    ElementRecord record;
    record.group = GroupOf(parent, path);
    record.firstAttribute = static_cast<std::uint32_t>(data_.attributes.Size());
    data_.elements.Add(record);
    open_.push_back({.id = id, .path = path, .mixedBegin = mixed_.size()});
    AddAttributes(path, attributes);
    pieceBegin_ = data_.text.Size();
    data_.NotePassage(id, pieceBegin_ / kTextSlotBytes);
}

/// The path of the child of `parent` named `name` that follows a sibling at `before`; 0: it is the first.
PathId DocumentBuilder::PathOf(PathId parent, PathId before, std::string_view name)
{
    PathId& path = before == 0 ? SlotOf(firstChild_, parent, PathId{0}) : SlotOf(nextSibling_, before, PathId{0});
    if (path == 0 || data_.names.Text(data_.paths.Name(path)) != name)
        path = data_.paths.Child(parent, data_.names.Intern(name));
    return path;
}

void DocumentBuilder::AddAttributes(PathId path, const char* const* attributes)
{
    NameId before = kNoName;
    for (; *attributes != nullptr; attributes += 2) {
        const std::string_view name = attributes[0];
        NameId& id =
            before == kNoName ? SlotOf(firstAttribute_, path, kNoName) : SlotOf(nextAttribute_, before, kNoName);
        if (id == kNoName || data_.names.Text(id) != name)
            id = data_.names.Intern(name);
        before = id;
        const std::string_view value = attributes[1];
        const std::size_t begin = data_.text.Size();
        data_.text.Append(value.data(), value.size());
        data_.attributes.Add({before, CloseText(begin)});
    }
}

/// The group of the children of `parent` at `path`, counted up by one. When another group of this path was made after
/// it, `parent` is closed: elements of one path never stand inside each other. So only the last one has to be
/// remembered.
std::uint32_t DocumentBuilder::GroupOf(ElementId parent, PathId path)
{
    if (path >= lastGroup_.size())
        lastGroup_.resize(data_.paths.Size(), kNoGroup);
    std::uint32_t& group = lastGroup_[path];
    if (group == kNoGroup || data_.groups[group].parent != parent) {
        group = static_cast<std::uint32_t>(data_.groups.Size());
        data_.groups.Add({parent, path, 0});
    }
    ++data_.groups[group].count;
    return group;
}

void DocumentBuilder::Text(std::string_view piece)
{
    data_.text.Append(piece.data(), piece.size());
}

/// Takes the piece of text before or behind a child out of the arena; white space alone may be no content there.
void DocumentBuilder::ClosePieceBesideChild()
{
    const std::size_t length = data_.text.Size() - pieceBegin_;
    if (length == 0)
        return;
    const char* const piece = &data_.text[pieceBegin_];
    if (blanks_ == Blanks::KeptBesideText || !IsBlank({piece, length}))
        mixed_.append(piece, length);
    data_.text.SetSize(pieceBegin_);
}

void DocumentBuilder::EndElement()
{
    const OpenElement& element = open_.back();
    if (element.childCount != 0) {
        ClosePieceBesideChild();
        const char* const text = mixed_.data() + element.mixedBegin;
        const std::size_t length = mixed_.size() - element.mixedBegin;
        if (blanks_ != Blanks::KeptBesideText || !IsBlank({text, length}))
            data_.text.Append(text, length);
        mixed_.resize(element.mixedBegin);
    }
    ElementRecord& record = data_.elements[element.id];
    record.childCount = element.childCount;
    record.content = CloseText(pieceBegin_);
    open_.pop_back();
    pieceBegin_ = data_.text.Size();
}

/// The arena from `begin` to its end as one text; the arena's end moves to where the next one may begin.
TextRange DocumentBuilder::CloseText(std::size_t begin)
{
    const std::size_t length = data_.text.Size() - begin;
    if (length == 0)
        return {};
    if (length > kMaxText)
        throw std::length_error("a text is longer than 4 GB");
    if (begin / kTextSlotBytes > kMaxText)
        throw std::length_error("the document holds more than 16 GB of text");
    data_.text.SetSize((data_.text.Size() + kTextSlotBytes - 1) / kTextSlotBytes * kTextSlotBytes);
    return {static_cast<std::uint32_t>(begin / kTextSlotBytes), static_cast<std::uint32_t>(length)};
}

Document DocumentBuilder::Take() noexcept
{
    document_.arrays_ = {data_.elements.Data(),   data_.groups.Data(),
                         data_.attributes.Data(), data_.text.Data(),
                         data_.elements.Size(),   static_cast<std::uint32_t>(data_.attributes.Size()),
                         data_.budget.isExceeded};
    return std::move(document_);
}

std::string_view DocumentBuilder::OpenTag() const noexcept
{
    return open_.empty() ? std::string_view{} : data_.names.Text(data_.paths.Name(open_.back().path));
}

} // namespace velmora
