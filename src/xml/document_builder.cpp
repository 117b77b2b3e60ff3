#include "xml/document_builder.h"

#include "xml/document_limits.h"

#include <algorithm>
#include <utility>

namespace velmora {

DocumentBuilder::DocumentBuilder(MemoryBudget budget, Blanks blanks)
    : data_(*(document_.impl_ = std::make_unique<Document::Impl>(std::move(budget)))), blanks_(blanks)
{
}

/// The arena from `begin` to its end as one text; the arena's end moves to where the next one may begin.
inline TextRange DocumentBuilder::CloseText(std::size_t begin)
{
    const std::size_t length = data_.text.Size() - begin;
    if (length == 0)
        return {static_cast<std::uint32_t>(begin / kTextSlotBytes), 0};
    CheckTextLength(length);
    CheckTextBegin(begin);
    AlignText();
    return {static_cast<std::uint32_t>(begin / kTextSlotBytes), static_cast<std::uint32_t>(length)};
}

/// The arena's end moves to where the next text may begin.
inline void DocumentBuilder::AlignText()
{
    data_.text.SetSize((data_.text.Size() + kTextSlotBytes - 1) / kTextSlotBytes * kTextSlotBytes);
}

/// The arena from the beginning of the last piece as an element's content.
inline TextRange DocumentBuilder::CloseContent()
{
    valueCount_ += HasText({data_.text.Data() + pieceBegin_, data_.text.Size() - pieceBegin_}) ? 1 : 0;
    return CloseText(pieceBegin_);
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
void DocumentBuilder::BeginChildren(OpenElement& parent)
{
    ElementRecord& record = data_.elements[parent.id];
    record.isParent = 1;
    record.content.slot = static_cast<std::uint32_t>(data_.parents.Size());
    data_.parents.Add({});
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
    record.firstAttribute = static_cast<std::uint32_t>(data_.attributes.Size());
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
    data_.text.Append(piece.data(), piece.size());
}

void DocumentBuilder::EndElement()
{
    const OpenElement& element = open_.back();
    if (element.childCount != 0) {
        EndParent(element);
    } else {
        data_.elements[element.id].content = CloseContent();
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
    ParentRecord& record = data_.parents[data_.elements[element.id].content.slot];
    record = {static_cast<ElementId>(data_.elements.Size()), element.childCount, CloseContent()};
}

/// The last piece of text stays where it is, and another one begins.
void DocumentBuilder::BeginPiece()
{
    AlignText();
    pieceBegin_ = data_.text.Size();
}

/// As it was at the beginning, but for the memory that the arrays have.
void DocumentBuilder::Clear()
{
    data_.elements.SetSize(0);
    data_.parents.SetSize(0);
    data_.attributes.SetSize(0);
    data_.text.SetSize(0);
    data_.names = {};
    data_.paths = {};
    open_.assign(1, {});
    pieceBegin_ = 0;
    mixed_.clear();
    valueCount_ = 0;
    states_.assign(1, {});
    nextAttribute_.clear();
}

Document DocumentBuilder::Take()
{
    if (data_.elements.Size() != 0)
        data_.elements[0].isLast = 1;
    data_.mostTwins.reserve(states_.size());
    for (const PathState& state : states_)
        data_.mostTwins.push_back(state.twins.most);
    document_.arrays_ = {
        data_.elements.Data(), data_.parents.Data(),   data_.attributes.Data(),
        data_.text.Data(),     data_.elements.Size(),  static_cast<std::uint32_t>(data_.attributes.Size()),
        valueCount_,           data_.budget.isExceeded};
    return std::move(document_);
}

std::string_view DocumentBuilder::OpenTag() const noexcept
{
    return open_.size() == 1 ? std::string_view{} : data_.names.Text(data_.paths.Name(open_.back().path));
}

} // namespace velmora
