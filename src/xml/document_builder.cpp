#include "xml/document_builder.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

namespace velmora {

namespace {

constexpr std::size_t kMaxText = std::numeric_limits<std::uint32_t>::max();

} // namespace

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
    if (length > kMaxText)
        throw std::length_error("a text is longer than 4 GB");
    if (begin / kTextSlotBytes > kMaxText)
        throw std::length_error("the document holds more than 16 GB of text");
    data_.text.SetSize((data_.text.Size() + kTextSlotBytes - 1) / kTextSlotBytes * kTextSlotBytes);
    return {static_cast<std::uint32_t>(begin / kTextSlotBytes), static_cast<std::uint32_t>(length)};
}

/// Takes the piece of text before or behind a child out of the arena; white space alone may be no content there.
inline void DocumentBuilder::ClosePieceBesideChild()
{
    if (data_.text.Size() != pieceBegin_)
        TakePieceBesideChild();
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
inline DocumentBuilder::Guesses<PathId>& DocumentBuilder::GuessesBehindLast(const OpenElement& parent)
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
    const PathId path = data_.paths.Child(parent.path, id);
    if (path >= states_.size())
        states_.resize(path + std::size_t{1});
    GuessesBehindLast(parent).Learn(data_.names.Text(id), path);
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

/// The group of the children of `parent` at `path`, counted up by one. When another group of this path was made after
/// it, `parent` is closed: elements of one path never stand inside each other. So only the last one has to be
/// remembered.
inline std::uint32_t DocumentBuilder::GroupOf(ElementId parent, PathId path)
{
    std::uint32_t& group = states_[path].lastGroup;
    if (group == kNoGroup || data_.groups[group].parent != parent) {
        group = static_cast<std::uint32_t>(data_.groups.Size());
        data_.groups.Add({parent, path, 0});
    }
    ++data_.groups[group].count;
    return group;
}

void DocumentBuilder::StartElement(std::string_view name, const char* const* attributes)
{
    if (data_.elements.Size() >= kNoElement - 1 || data_.attributes.Size() >= kMaxText / 2)
        throw std::length_error("the document has too many elements or attributes");
    const auto id = static_cast<ElementId>(data_.elements.Size());
    ClosePieceBesideChild();
    OpenElement& above = open_.back();
    const PathId path = PathOf(above, name);
    if (above.lastChild != kNoElement)
        data_.elements[above.lastChild].nextSibling = id;
    above.lastChild = id;
    above.lastChildPath = path;
    ++above.childCount;
    ElementRecord record;
    record.group = GroupOf(above.id, path);
    record.firstAttribute = static_cast<std::uint32_t>(data_.attributes.Size());
    data_.elements.Add(record);
    open_.push_back({.id = id, .path = path, .mixedBegin = mixed_.size()});
    AddAttributes(path, attributes);
    pieceBegin_ = data_.text.Size();
    if (data_.budget.isExceeded)
        GiveBackPassed(id);
}

void DocumentBuilder::GiveBackPassed(ElementId element) const noexcept
{
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
    return open_.size() == 1 ? std::string_view{} : data_.names.Text(data_.paths.Name(open_.back().path));
}

} // namespace velmora
