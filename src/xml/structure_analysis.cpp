#include "xml/structure_model.h"

#include "settings/job.h"
#include "xml/content_kind.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace velmora {

namespace {

/// What one occurrence of an element or attribute tells.
struct Occurrence {
    std::int32_t childCount = 0;
    std::int32_t twinCount = 0; ///< siblings with the same tag, itself not counted; 0 for an element with children
    std::int32_t attributeCount = 0;
    std::string_view content;
    NameId attribute = ElementInfo::kNoAttribute; ///< for one of those

    [[nodiscard]] bool IsRepeatedLeaf() const noexcept
    {
        return childCount == 0 && attributeCount == 0 && twinCount >= 1;
    }
    /// Is the element, a leaf, a column of its parent's record?
    [[nodiscard]] bool IsPlainLeaf() const noexcept
    {
        return twinCount == 0 && (attributeCount == 0 || !content.empty());
    }
};

class StructureAnalyser {
public:
    StructureAnalyser(Job& job, Document& document, StructureModel& model)
        : job_(job), importsAttributes_(job.settings.blImportAttributes), document_(document), paths_(document.Paths()),
          model_(model)
    {
    }

    void WalkDocument();
    void TakeWrappingTagsOut();

private:
    void BeginRun(PathId parentPath);
    [[nodiscard]] Occurrence Look(ElementId element) const;
    void RegisterAttributes(ElementId element, PathId path, std::uint32_t count);

    void Register(PathId path, const Occurrence& seen);
    void Append(PathId path, const Occurrence& seen);
    void RegisterInnerEntry(PathId path, std::string_view content);
    static void MergeContent(ElementInfo& entry, std::string_view content);
    [[nodiscard]] NameId WithAttributePrefix(NameId attribute);

    Job& job_;
    const bool importsAttributes_;
    Document& document_;
    PathTree& paths_;
    StructureModel& model_;
    std::vector<NameId> prefixed_; ///< by attribute name: the name of its column, kNoName until it is asked for
    static constexpr NameId kNoName = ~NameId{0};

    struct AttributeEntry {
        NameId attribute = kNoName;
        std::size_t number = 0; ///< of its entry in the model
    };
    /// By the element's path and the attribute's place in the tag: what stood there last, which mostly comes again.
    std::vector<std::vector<AttributeEntry>> attributeEntries_;
};

/// From start tag to start tag, as elements stand in the document.
void StructureAnalyser::WalkDocument()
{
    constexpr ElementId kElementsOfPiece = 0x1000;
    BeginRun(0);
    const auto count = static_cast<ElementId>(document_.ElementCount());
    for (ElementId element = 0; element < count; ++element) {
        if (element % kElementsOfPiece == 0)
            job_.ProcessEvents();
        document_.Passed(element);
        const Occurrence seen = Look(element);
        const PathId path = document_.Path(element);
        Register(path, seen);
        if (seen.attributeCount > 0 && importsAttributes_)
            RegisterAttributes(element, path, static_cast<std::uint32_t>(seen.attributeCount));
        if (seen.childCount > 0)
            BeginRun(path);
        else if (!seen.IsPlainLeaf())
            ++model_.lngRecordEstimate;
    }
}

/// The children of one element come.
void StructureAnalyser::BeginRun(PathId parentPath)
{
    if (job_.log.IsTracing())
        job_.log.Trace("velAnalyseNode: " + document_.PathText(parentPath));
    ++model_.lngRecordEstimate;
}

/// Siblings without a plain leaf among them are wrapping tags only, and make no record of the element around them. With
/// attributes imported, the attributes of the last sibling count against the plain leaves of all: an estimate, and
/// meant so.
void StructureAnalyser::TakeWrappingTagsOut()
{
    std::vector<std::int32_t> plainLeaves{0}; // among the siblings at each level, the innermost last
    std::vector<ElementId> open;              // elements that they stand in
    const auto count = static_cast<ElementId>(document_.ElementCount());
    for (ElementId element = 0; element < count; ++element) {
        document_.Passed(element);
        if (document_.HasChildren(element)) {
            open.push_back(element);
            plainLeaves.push_back(0);
            continue;
        }
        plainLeaves.back() += Look(element).IsPlainLeaf() ? 1 : 0;
        for (ElementId last = element; document_.NextSibling(last) == kNoElement; open.pop_back()) {
            const auto attributes = static_cast<std::int32_t>(importsAttributes_ ? document_.AttributeCount(last) : 0);
            model_.lngRecordEstimate -= plainLeaves.back() == attributes ? 1 : 0;
            plainLeaves.pop_back();
            if (open.empty())
                break;
            last = open.back();
        }
    }
}

inline Occurrence StructureAnalyser::Look(ElementId element) const
{
    Occurrence seen;
    // The greatest number at its path stands for each: nobody asks for more than that, and whether there are any.
    if (document_.HasChildren(element))
        seen.childCount = static_cast<std::int32_t>(document_.MostChildren(document_.Path(element)));
    else if (document_.IsRepeated(element))
        seen.twinCount = static_cast<std::int32_t>(document_.MostTwins(document_.Path(element)));
    seen.attributeCount = static_cast<std::int32_t>(document_.AttributeCount(element));
    seen.content = document_.Content(element);
    return seen;
}

inline void StructureAnalyser::RegisterAttributes(ElementId element, PathId path, std::uint32_t count)
{
    if (path >= attributeEntries_.size())
        attributeEntries_.resize(path + std::size_t{1});
    std::vector<AttributeEntry>& entries = attributeEntries_[path];
    if (count > entries.size())
        entries.resize(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        const NameId attribute = document_.AttributeName(element, i);
        const std::string_view value = document_.AttributeValue(element, i);
        if (entries[i].attribute == attribute) {
            MergeContent(model_.Element(entries[i].number), value);
            continue;
        }
        const PathId pathOfAttribute = paths_.Child(path, WithAttributePrefix(attribute));
        Register(pathOfAttribute, {.content = value, .attribute = attribute});
        entries[i] = {attribute, model_.Find(pathOfAttribute)};
    }
}

inline void StructureAnalyser::Register(PathId path, const Occurrence& seen)
{
    const std::size_t number = model_.Find(path);
    if (number == 0) {
        Append(path, seen);
        return;
    }
    ElementInfo& entry = model_.Element(number);
    if (seen.IsRepeatedLeaf() && entry.lngMaxChildren == 0 && entry.lngMaxTwins == 0) {
        entry.lngMaxTwins = seen.twinCount;
        RegisterInnerEntry(path, seen.content);
        return;
    }
    entry.lngMaxChildren = std::max(entry.lngMaxChildren, seen.childCount);
    entry.lngMaxTwins = std::max(entry.lngMaxTwins, seen.twinCount);
    if (seen.attribute != ElementInfo::kNoAttribute)
        entry.attribute = seen.attribute;
    MergeContent(entry, seen.content);
}

void StructureAnalyser::Append(PathId path, const Occurrence& seen)
{
    const ContentKind kind = ClassifyContent(seen.content);
    const PathId parent = paths_.Parent(path);
    ElementInfo entry;
    entry.strPath = path;
    entry.lngMaxChildren = seen.childCount;
    entry.lngMaxTwins = seen.twinCount;
    entry.lngAttributes = seen.attributeCount;
    entry.intLevel = parent == 0 ? 0 : model_.Element(model_.Find(parent)).intLevel + 1;
    entry.strName = std::string(document_.NameText(paths_.Name(path)));
    entry.dblMaxSize = kind.size;
    entry.lngDataType = kind.dataType;
    entry.attribute = seen.attribute;
    model_.Append(std::move(entry));
    if (seen.IsRepeatedLeaf())
        RegisterInnerEntry(path, seen.content);
}

/// A repeated leaf is a table with one column of its own name.
void StructureAnalyser::RegisterInnerEntry(PathId path, std::string_view content)
{
    Register(paths_.Child(path, paths_.Name(path)), {.content = content});
}

/// A text entry keeps the length that it got first: the import widens a column when a value does not fit.
inline void StructureAnalyser::MergeContent(ElementInfo& entry, std::string_view content)
{
    if (entry.lngDataType != kNumericContent || content.empty())
        return;
    const ContentKind kind = ClassifyContent(content);
    if (kind.size <= 0)
        return;
    entry.lngDataType = kind.dataType;
    entry.dblMaxSize = std::max(entry.dblMaxSize, kind.size);
}

NameId StructureAnalyser::WithAttributePrefix(NameId attribute)
{
    if (attribute >= prefixed_.size())
        prefixed_.resize(attribute + std::size_t{1}, kNoName);
    NameId& name = prefixed_[attribute];
    if (name == kNoName)
        name = document_.Intern(job_.settings.strAttrPrefix + std::string(document_.NameText(attribute)));
    return name;
}

} // namespace

void AnalyseStructure(Job& job, Document& document, StructureModel& model)
{
    StructureAnalyser analyser(job, document, model);
    analyser.WalkDocument();
    if (job.settings.blSkipEmptyWrappingTags)
        analyser.TakeWrappingTagsOut();
}

} // namespace velmora
