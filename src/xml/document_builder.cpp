#include "xml/document_builder.h"

#include "xml/document_limits.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace velmora {

namespace {

/// Where a text may begin behind one that ends there, and the byte behind that.
constexpr std::size_t SlotBehind(std::size_t end)
{
    return (end / kTextSlotBytes + 1) * kTextSlotBytes;
}

} // namespace

DocumentBuilder::DocumentBuilder(MemoryBudget budget, Blanks blanks)
    : data_(*(document_.impl_ = std::make_unique<Document::Impl>(std::move(budget)))), blanks_(blanks)
{
    BeginArena();
}

/// The text of no bytes is the first one.
void DocumentBuilder::BeginArena()
{
    data_.text.SetSize(0);
    data_.text.Append("\0\0\0", kTextSlotBytes);
    pieceBegin_ = kTextSlotBytes;
}

/// The arena from `begin` to its end as one text; the arena's end moves to where the next one may begin.
inline TextSlot DocumentBuilder::CloseText(std::size_t begin)
{
    const std::size_t end = data_.text.Size();
    if (end == begin)
        return kNoText;
    CheckTextLength(end - begin);
    CheckTextBegin(begin);
    data_.text.SetSize(SlotBehind(end));
    data_.text[end] = '\0';
    return static_cast<TextSlot>(begin / kTextSlotBytes);
}

/// The arena from the beginning of the last piece becomes the element's content.
inline void DocumentBuilder::CloseContent(ElementRecord& element)
{
    valueCount_ += HasText({data_.text.Data() + pieceBegin_, data_.text.Size() - pieceBegin_}) ? 1 : 0;
    const TextSlot content = CloseText(pieceBegin_);
    if (element.hasFurther != 0)
        data_.further[element.content].content = content;
    else
        element.content = content;
}

void DocumentBuilder::TakePieceBesideChild()
{
    const std::size_t length = data_.text.Size() - pieceBegin_;
    const char* const piece = &data_.text[pieceBegin_];
    if (blanks_ == Blanks::KeptBesideText || !IsBlank({piece, length}))
        mixed_.append(piece, length);
    data_.text.SetSize(pieceBegin_);
}

/// What came behind the last child of `parent`; as long as it has none, what came first.
inline Guesses<PathId>& DocumentBuilder::GuessesBehindLast(const OpenElement& parent)
{
    return parent.lastChildPath == 0 ? states_[parent.path].firstChild : states_[parent.lastChildPath].nextSibling;
}

/// The path of the next child of `parent`, named `name`.
inline PathId DocumentBuilder::PathOf(const OpenElement& parent, std::string_view name)
{
    const PathId* const path = GuessesBehindLast(parent).Find(name);
    return path != nullptr ? *path : LearnPath(parent, name);
}

PathId DocumentBuilder::LearnPath(const OpenElement& parent, std::string_view name)
{
    const NameId id = data_.names.Intern(name);
    const PathId path = AddPath(parent.path, id);
    GuessesBehindLast(parent).Learn(data_.names.Text(id), path);
    return path;
}

PathId DocumentBuilder::AddPath(PathId parent, NameId name)
{
    const PathId path = data_.paths.Child(parent, name);
    CheckPath(path);
    if (path >= states_.size())
        states_.resize(path + std::size_t{1});
    return path;
}

inline void DocumentBuilder::AddAttributes(PathId path, const char* const* attributes)
{
    Guesses<NameId>* guesses = &states_[path].firstAttribute;
    for (; *attributes != nullptr; attributes += 2) {
        const std::string_view name = attributes[0];
        const std::string_view value = attributes[1];
        const NameId* const known = guesses->Find(name);
        const NameId id = known != nullptr ? *known : LearnAttribute(*guesses, name);
        guesses = &nextAttribute_[id];
        const std::size_t begin = data_.text.Size();
        valueCount_ += value.empty() ? 0 : 1;
        data_.text.Append(value.data(), value.size());
        data_.attributes.Add({id, CloseText(begin)});
    }
}

NameId DocumentBuilder::LearnAttribute(Guesses<NameId>& guesses, std::string_view name)
{
    const NameId id = data_.names.Intern(name);
    guesses.Learn(data_.names.Text(id), id);
    if (id >= nextAttribute_.size())
        nextAttribute_.resize(id + std::size_t{1});
    return id;
}

/// Counts `element`, a child of `parent`. True when it is not the first one.
inline bool DocumentBuilder::CountTwin(Twins& twins, ElementId parent, ElementId element)
{
    if (twins.count == 0 || twins.parent != parent) {
        twins = {.parent = parent, .first = element, .count = 1, .hasLeaf = false, .most = twins.most};
        return false;
    }
    if (++twins.count == 2)
        data_.elements[twins.first].isRepeated = 1;
    if (twins.hasLeaf)
        twins.most = std::max(twins.most, twins.count - 1);
    return true;
}

/// Its first child has come.
void DocumentBuilder::BeginChildren(const OpenElement& parent)
{
    ElementRecord& record = data_.elements[parent.id];
    record.isParent = 1;
    if (record.hasFurther == 0)
        AddFurther(record);
}

/// There are no attributes yet of what begins at the element or behind it.
void DocumentBuilder::AddFurther(ElementRecord& element)
{
    element.hasFurther = 1;
    element.content = static_cast<std::uint32_t>(data_.further.Size());
    data_.further.Add({.firstAttribute = static_cast<std::uint32_t>(data_.attributes.Size())});
}

void DocumentBuilder::StartElement(std::string_view name, const char* const* attributes)
{
    CheckNumbers(data_.elements.Size(), data_.attributes.Size());
    const auto id = static_cast<ElementId>(data_.elements.Size());
    ClosePieceBesideChild();
    OpenElement& above = open_.back();
    const PathId path = PathOf(above, name);
    if (above.childCount++ == 0 && above.id != kNoElement)
        BeginChildren(above);
    above.lastChild = id;
    above.lastChildPath = path;
    ElementRecord record;
    record.path = path;
    record.isRepeated = CountTwin(states_[path].twins, above.id, id);
    if (*attributes != nullptr)
        AddFurther(record);
    data_.elements.Add(record);
    open_.push_back({.id = id, .path = path, .mixedBegin = mixed_.size()});
    AddAttributes(path, attributes);
    pieceBegin_ = data_.text.Size();
    if (data_.budget.isExceeded)
        GiveBackPassed();
}

void DocumentBuilder::GiveBackPassed() const noexcept
{
    const std::size_t element = data_.elements.Size();
    const std::size_t slot = pieceBegin_ / kTextSlotBytes;
    if (document_.passage_.IsFar(element, slot))
        document_.GiveBack({element, slot});
}

void DocumentBuilder::Text(std::string_view piece)
{
    assert(piece.find('\0') == std::string_view::npos);
    data_.text.Append(piece.data(), piece.size());
}

void DocumentBuilder::EndElement()
{
    const OpenElement& element = open_.back();
    if (element.childCount != 0) {
        EndParent(element);
    } else {
        CloseContent(data_.elements[element.id]);
        Twins& twins = states_[element.path].twins;
        twins.hasLeaf = true;
        twins.most = std::max(twins.most, twins.count - 1);
    }
    open_.pop_back();
    pieceBegin_ = data_.text.Size();
}

void DocumentBuilder::EndParent(const OpenElement& element)
{
    ClosePieceBesideChild();
    const std::string_view text = std::string_view(mixed_).substr(element.mixedBegin);
    if (blanks_ != Blanks::KeptBesideText || !IsBlank(text))
        data_.text.Append(text.data(), text.size());
    mixed_.resize(element.mixedBegin);
    data_.elements[element.lastChild].isLast = 1;
    ElementRecord& record = data_.elements[element.id];
    data_.further[record.content].end = static_cast<ElementId>(data_.elements.Size());
    CloseContent(record);
    std::uint32_t& most = states_[element.path].mostChildren;
    most = std::max(most, element.childCount);
}

/// The last piece of text stays where it is, and another one begins.
void DocumentBuilder::BeginPiece()
{
    data_.text.SetSize(SlotBehind(data_.text.Size()));
    pieceBegin_ = data_.text.Size();
}

/// As it was at the beginning, but for the memory that the arrays have.
void DocumentBuilder::Clear()
{
    data_.elements.SetSize(0);
    data_.further.SetSize(0);
    data_.attributes.SetSize(0);
    BeginArena();
    data_.names = {};
    data_.paths = {};
    open_.assign(1, {});
    mixed_.clear();
    valueCount_ = 0;
    states_.assign(1, {});
    nextAttribute_.clear();
}

Document DocumentBuilder::Take()
{
    if (data_.elements.Size() != 0)
        data_.elements[0].isLast = 1;
    data_.further.Add({.firstAttribute = static_cast<std::uint32_t>(data_.attributes.Size())});
    data_.most.reserve(states_.size());
    for (const PathState& state : states_)
        data_.most.push_back({state.mostChildren, state.twins.most});
    document_.arrays_ = {data_.elements.Data(), data_.further.Data(), data_.attributes.Data(), data_.text.Data(),
                         data_.elements.Size(), valueCount_,          data_.budget.isExceeded};
    return std::move(document_);
}

std::string_view DocumentBuilder::OpenTag() const noexcept
{
    return open_.size() == 1 ? std::string_view{} : data_.names.Text(data_.paths.Name(open_.back().path));
}

} // namespace velmora
