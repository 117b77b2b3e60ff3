#include "xml/document_part.h"

#include "xml/document_limits.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>

namespace velmora {

namespace {

/// Of the elements around a part, among the names in it.
constexpr NameId kOuterName = ~NameId{0};

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();
constexpr std::size_t kMostKeptBytes = std::size_t{4} << 20;

} // namespace

/// Joins one part to a document. The numbers of its elements, texts and so on grow by as much as the document has more
/// of them, which is another number for each stretch; they wrap around where it has less.
class DocumentPart::Joint {
public:
    Joint(DocumentBuilder& whole, const DocumentBuilder& part)
        : whole_(whole), part_(part), to_(whole.data_), from_(part.data_), paths_(from_.paths.Size())
    {
        for (NameId name = 0; name < from_.names.Size(); ++name)
            names_.push_back(to_.names.Intern(from_.names.Text(name)));
        whole_.valueCount_ += part.valueCount_;
    }

    void Add(const Stretch& stretch)
    {
        if (stretch.parent.childCount != 0)
            AddChildren(stretch);
        else // there is text at the most
            whole_.Text({from_.text.Data() + stretch.pieceBegin, stretch.end.textBytes - stretch.pieceBegin});
    }
    /// Behind the last stretch: the elements that are open there.
    void AddOpen();

private:
    struct Shift {
        std::uint32_t elements, further, attributes, slots;
        std::size_t mixedBytes;

        [[nodiscard]] TextSlot Moved(TextSlot slot) const noexcept { return slot == kNoText ? slot : slot + slots; }
    };

    void AddChildren(const Stretch& stretch);
    void AddPaths(const Stretch& stretch);
    void SetShift(const Extent& begin);
    void AddToParent(const DocumentBuilder::OpenElement& parent);
    void AddElements(std::size_t begin, std::size_t end);
    void AddFurther(std::size_t begin, std::size_t end);
    void AddAttributes(std::size_t begin, std::size_t end);
    void AddTexts(const Stretch& stretch);
    void AddStates(const Stretch& stretch);
    void AddTwinsOfParent(Twins& known, const Twins& more);

    DocumentBuilder& whole_;
    const DocumentBuilder& part_;
    DocumentBuilder::Data& to_;
    const DocumentBuilder::Data& from_;
    std::vector<NameId> names_; ///< in the document, by those in the part
    std::vector<PathId> paths_; ///< the same
    Shift shift_{};             ///< of the stretch
};

void DocumentPart::Joint::AddChildren(const Stretch& stretch)
{
    const Extent& begin = stretch.begin;
    const Extent& end = stretch.end;
    CheckNumbers(to_.elements.Size() + end.elements - 1 - begin.elements,
                 to_.attributes.Size() + end.attributes - begin.attributes);
    whole_.ClosePieceBesideChild();
    AddPaths(stretch);
    if (DocumentBuilder::OpenElement& above = whole_.open_.back(); above.childCount == 0 && above.id != kNoElement)
        whole_.BeginChildren(above);
    SetShift(begin);
    AddToParent(stretch.parent);
    AddElements(begin.elements, end.elements);
    AddFurther(begin.further, end.further);
    AddAttributes(begin.attributes, end.attributes);
    AddTexts(stretch);
    AddStates(stretch);
    if (to_.budget.isExceeded)
        whole_.GiveBackPassed();
}

/// Those that are new have come in the order of their numbers.
void DocumentPart::Joint::AddPaths(const Stretch& stretch)
{
    paths_[stretch.around] = whole_.open_.back().path;
    for (PathId path = stretch.around + 1; path < stretch.end.paths; ++path)
        paths_[path] = whole_.AddPath(paths_[from_.paths.Parent(path)], names_[from_.paths.Name(path)]);
}

void DocumentPart::Joint::SetShift(const Extent& begin)
{
    const auto difference = [](std::size_t to, std::size_t from) { return static_cast<std::uint32_t>(to - from); };
    shift_ = {difference(to_.elements.Size(), begin.elements), difference(to_.further.Size(), begin.further),
              difference(to_.attributes.Size(), begin.attributes),
              difference(to_.text.Size() / kTextSlotBytes, begin.textBytes / kTextSlotBytes),
              whole_.mixed_.size() - begin.mixedBytes};
}

/// The innermost open element gets the children that `parent` has in the part.
void DocumentPart::Joint::AddToParent(const DocumentBuilder::OpenElement& parent)
{
    DocumentBuilder::OpenElement& above = whole_.open_.back();
    above.childCount += parent.childCount;
    above.lastChild = parent.lastChild + shift_.elements;
    above.lastChildPath = paths_[parent.lastChildPath];
}

void DocumentPart::Joint::AddElements(std::size_t begin, std::size_t end)
{
    const auto moved = [paths = paths_.data(), shift = shift_](ElementRecord record) {
        record.path = paths[record.path];
        record.content = record.hasFurther != 0 ? record.content + shift.further : shift.Moved(record.content);
        return record;
    };
    const ElementRecord* const from = from_.elements.Data();
    std::transform(from + begin, from + end, to_.elements.Extend(end - begin), moved);
}

/// What is not known yet of those that are open at the part's end is written when they end.
void DocumentPart::Joint::AddFurther(std::size_t begin, std::size_t end)
{
    const auto moved = [shift = shift_](FurtherRecord record) {
        record.end += shift.elements;
        record.firstAttribute += shift.attributes;
        record.content = shift.Moved(record.content);
        return record;
    };
    const FurtherRecord* const from = from_.further.Data();
    std::transform(from + begin, from + end, to_.further.Extend(end - begin), moved);
}

void DocumentPart::Joint::AddAttributes(std::size_t begin, std::size_t end)
{
    const auto moved = [names = names_.data(), shift = shift_](AttributeRecord record) {
        record.name = names[record.name];
        record.value = shift.Moved(record.value);
        return record;
    };
    const AttributeRecord* const from = from_.attributes.Data();
    std::transform(from + begin, from + end, to_.attributes.Extend(end - begin), moved);
}

void DocumentPart::Joint::AddTexts(const Stretch& stretch)
{
    const std::size_t begin = stretch.begin.textBytes;
    whole_.pieceBegin_ = to_.text.Size() + stretch.pieceBegin - begin;
    CheckTextBegin(whole_.pieceBegin_);
    to_.text.Append(from_.text.Data() + begin, stretch.end.textBytes - begin);
    whole_.mixed_.append(part_.mixed_, stretch.begin.mixedBytes, stretch.end.mixedBytes - stretch.begin.mixedBytes);
}

/// What was known of a path's elements is of parents that are closed, unless these are children of the element around.
void DocumentPart::Joint::AddStates(const Stretch& stretch)
{
    for (PathId path = stretch.around + 1; path < stretch.end.paths; ++path) {
        const bool isOuter = from_.paths.Parent(path) == stretch.around;
        PathState& state = whole_.states_[paths_[path]];
        state.mostChildren = std::max(state.mostChildren, part_.states_[path].mostChildren);
        Twins more = part_.states_[path].twins;
        more.parent = isOuter ? whole_.open_.back().id : more.parent + shift_.elements;
        more.first += shift_.elements;
        Twins& known = state.twins;
        if (known.count != 0 && known.parent == more.parent) {
            AddTwinsOfParent(known, more);
        } else {
            more.most = std::max(more.most, known.most);
            known = more;
        }
    }
}

void DocumentPart::Joint::AddTwinsOfParent(Twins& known, const Twins& more)
{
    to_.elements[known.first].isRepeated = 1;
    to_.elements[more.first].isRepeated = 1;
    known.count += more.count;
    known.hasLeaf = known.hasLeaf || more.hasLeaf;
    if (known.hasLeaf)
        known.most = std::max(known.most, known.count - 1);
}

void DocumentPart::Joint::AddOpen()
{
    for (std::size_t depth = 1; depth < part_.open_.size(); ++depth) {
        const DocumentBuilder::OpenElement& element = part_.open_[depth];
        whole_.open_.push_back({.id = element.id + shift_.elements,
                                .path = paths_[element.path],
                                .mixedBegin = element.mixedBegin + shift_.mixedBytes});
        if (element.childCount != 0)
            AddToParent(element);
    }
}

DocumentPart::DocumentPart(Blanks blanks) : builder_(std::make_unique<DocumentBuilder>(MemoryBudget(kNoLimit), blanks))
{
    BeginStretch(0);
}

void DocumentPart::EndOuter(std::string_view tag, std::size_t behind)
{
    EndStretch();
    Stretch& stretch = stretches_.back();
    stretch.endTag = tag;
    stretch.behindEnd = behind;
    builder_->BeginPiece();
    BeginStretch(builder_->AddPath(stretch.around, kOuterName));
}

void DocumentPart::JoinTo(DocumentBuilder& whole, const OnOuterEnd& onOuterEnd)
{
    EndStretch();
    Joint joint(whole, *builder_);
    for (const Stretch& stretch : stretches_) {
        joint.Add(stretch);
        if (&stretch == &stretches_.back())
            joint.AddOpen();
        else if (!onOuterEnd(stretch.endTag, stretch.behindEnd))
            return;
    }
}

void DocumentPart::Clear()
{
    if (builder_->data_.budget.usedBytes > kMostKeptBytes)
        builder_ = std::make_unique<DocumentBuilder>(MemoryBudget(kNoLimit), builder_->BlanksRule());
    else
        builder_->Clear();
    stretches_.clear();
    BeginStretch(0);
}

std::size_t DocumentPart::Bytes() const noexcept
{
    const DocumentBuilder::Data& data = builder_->data_;
    return data.elements.Size() * sizeof(ElementRecord) + data.further.Size() * sizeof(FurtherRecord) +
           data.attributes.Size() * sizeof(AttributeRecord) + data.text.Size() + builder_->mixed_.size() +
           (stretches_.size() - 1) * sizeof(Stretch);
}

DocumentPart::Extent DocumentPart::Here() const noexcept
{
    const DocumentBuilder::Data& data = builder_->data_;
    return {data.elements.Size(), data.further.Size(),     data.attributes.Size(),
            data.text.Size(),     builder_->mixed_.size(), data.paths.Size()};
}

void DocumentPart::BeginStretch(PathId around)
{
    builder_->open_.back() = {.path = around, .mixedBegin = builder_->mixed_.size()};
    stretches_.push_back({.around = around, .begin = Here()});
}

void DocumentPart::EndStretch()
{
    Stretch& stretch = stretches_.back();
    stretch.end = Here();
    stretch.pieceBegin = builder_->pieceBegin_;
    stretch.parent = builder_->open_.front();
}

} // namespace velmora
