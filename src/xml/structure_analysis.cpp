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
};

/// The siblings being walked at one level of the document.
struct SiblingRun {
    ElementId element = kNoElement; ///< where the walk stands
    PathId parentPath = 0;
    std::int32_t plainLeafCount = 0; ///< leaves that are columns of their parent's record
};

class StructureAnalyser {
public:
    StructureAnalyser(Job& job, Document& document, StructureModel& model)
        : job_(job), importsAttributes_(job.settings.blImportAttributes), document_(document), paths_(document.Paths()),
          model_(model)
    {
    }

    void WalkDocument();

private:
    void BeginRun(ElementId first, PathId parentPath);
    void EndRun(const SiblingRun& run, ElementId last);
    [[nodiscard]] Occurrence Look(ElementId element) const;
    void RegisterAttributes(ElementId element, PathId path, std::uint32_t count);
    void CountLeaf(SiblingRun& run, const Occurrence& leaf);

    void Register(std::int32_t level, PathId path, const Occurrence& seen);
    void Append(std::int32_t level, PathId path, const Occurrence& seen);
    void RegisterInnerEntry(std::int32_t level, PathId path, std::string_view content);
    static void Merge(ElementInfo& entry, const Occurrence& seen);
    static void MergeContent(ElementInfo& entry, std::string_view content);
    [[nodiscard]] PathId PathOfAttribute(PathId path, std::uint32_t index, NameId attribute);
    [[nodiscard]] NameId WithAttributePrefix(NameId attribute);

    Job& job_;
    const bool importsAttributes_;
    Document& document_;
    PathTree& paths_;
    StructureModel& model_;
    std::vector<SiblingRun> runs_; ///< innermost last: a run's level is its place
    std::vector<NameId> prefixed_; ///< by attribute name: the name of its column, kNoName until it is asked for
    static constexpr NameId kNoName = ~NameId{0};

    struct AttributePath {
        NameId attribute = kNoName;
        PathId path = 0;
    };
    /// By the element's path and the attribute's place in the tag: what stood there last, which mostly comes again.
    std::vector<std::vector<AttributePath>> attributePaths_;
};

/// The walk keeps its own stack: the depth of a document is not limited by that of the program's.
void StructureAnalyser::WalkDocument()
{
    BeginRun(document_.Root(), 0);
    while (!runs_.empty()) {
        SiblingRun& run = runs_.back();
        const ElementId element = run.element;
        document_.Passed(element);
        const Occurrence seen = Look(element);
        const PathId path = document_.Path(element);
        Register(static_cast<std::int32_t>(runs_.size()) - 1, path, seen);
        if (seen.attributeCount > 0 && importsAttributes_)
            RegisterAttributes(element, path, static_cast<std::uint32_t>(seen.attributeCount));
        if (seen.childCount > 0) {
            BeginRun(document_.FirstChild(element), path);
            continue;
        }
        CountLeaf(run, seen);
        // On to the next sibling, or, where a run ends, to that of the nearest element above it.
        while (!runs_.empty()) {
            SiblingRun& innermost = runs_.back();
            const ElementId last = innermost.element;
            innermost.element = document_.NextSibling(last);
            if (innermost.element != kNoElement)
                break;
            EndRun(innermost, last);
            runs_.pop_back();
        }
    }
}

void StructureAnalyser::BeginRun(ElementId first, PathId parentPath)
{
    if (job_.log.IsTracing())
        job_.log.Trace("velAnalyseNode: " + document_.PathText(parentPath));
    ++model_.lngRecordEstimate;
    job_.ProcessEvents();
    runs_.push_back({first, parentPath, 0});
}

/// A run without a plain leaf is one of wrapping tags only. With attributes imported, the attributes of the last
/// sibling count against the plain leaves of all: an estimate, and meant so.
void StructureAnalyser::EndRun(const SiblingRun& run, ElementId last)
{
    if (!job_.settings.blSkipEmptyWrappingTags)
        return;
    const std::int32_t attributes = importsAttributes_ ? static_cast<std::int32_t>(document_.AttributeCount(last)) : 0;
    if (run.plainLeafCount - attributes == 0)
        --model_.lngRecordEstimate;
}

Occurrence StructureAnalyser::Look(ElementId element) const
{
    Occurrence seen;
    seen.childCount = static_cast<std::int32_t>(document_.ChildCount(element));
    // The greatest number at its path stands for each: nobody asks for more than that, and whether there are any.
    if (seen.childCount == 0 && document_.IsRepeated(element))
        seen.twinCount = static_cast<std::int32_t>(document_.MostTwins(document_.Path(element)));
    seen.attributeCount = static_cast<std::int32_t>(document_.AttributeCount(element));
    seen.content = document_.Content(element);
    return seen;
}

void StructureAnalyser::RegisterAttributes(ElementId element, PathId path, std::uint32_t count)
{
    const auto level = static_cast<std::int32_t>(runs_.size());
    for (std::uint32_t i = 0; i < count; ++i) {
        const NameId attribute = document_.AttributeName(element, i);
        Register(level, PathOfAttribute(path, i, attribute),
                 {.content = document_.AttributeValue(element, i), .attribute = attribute});
    }
}

void StructureAnalyser::CountLeaf(SiblingRun& run, const Occurrence& leaf)
{
    const bool attributesOnly = leaf.attributeCount >= 1 && leaf.content.empty();
    if (attributesOnly || leaf.twinCount >= 1)
        ++model_.lngRecordEstimate;
    else
        ++run.plainLeafCount;
}

inline void StructureAnalyser::Register(std::int32_t level, PathId path, const Occurrence& seen)
{
    const std::size_t number = model_.Find(path);
    if (number == 0) {
        Append(level, path, seen);
        return;
    }
    ElementInfo& entry = model_.Element(number);
    if (seen.IsRepeatedLeaf() && entry.lngMaxChildren == 0 && entry.lngMaxTwins == 0) {
        entry.lngMaxTwins = seen.twinCount;
        RegisterInnerEntry(level, path, seen.content);
        return;
    }
    Merge(entry, seen);
}

void StructureAnalyser::Append(std::int32_t level, PathId path, const Occurrence& seen)
{
    const ContentKind kind = ClassifyContent(seen.content);
    ElementInfo entry;
    entry.strPath = path;
    entry.lngMaxChildren = seen.childCount;
    entry.lngMaxTwins = seen.twinCount;
    entry.lngAttributes = seen.attributeCount;
    entry.intLevel = level;
    entry.strName = std::string(document_.NameText(paths_.Name(path)));
    entry.dblMaxSize = kind.size;
    entry.lngDataType = kind.dataType;
    entry.attribute = seen.attribute;
    model_.Append(std::move(entry));
    if (seen.IsRepeatedLeaf())
        RegisterInnerEntry(level, path, seen.content);
}

/// A repeated leaf is a table with one column of its own name.
void StructureAnalyser::RegisterInnerEntry(std::int32_t level, PathId path, std::string_view content)
{
    Register(level + 1, paths_.Child(path, paths_.Name(path)), {.content = content});
}

void StructureAnalyser::Merge(ElementInfo& entry, const Occurrence& seen)
{
    entry.lngMaxChildren = std::max(entry.lngMaxChildren, seen.childCount);
    entry.lngMaxTwins = std::max(entry.lngMaxTwins, seen.twinCount);
    if (seen.attribute != ElementInfo::kNoAttribute)
        entry.attribute = seen.attribute;
    if (entry.lngDataType == kNumericContent && !seen.content.empty())
        MergeContent(entry, seen.content);
}

/// A text entry keeps the length that it got first: the import widens a column when a value does not fit.
void StructureAnalyser::MergeContent(ElementInfo& entry, std::string_view content)
{
    const ContentKind kind = ClassifyContent(content);
    if (kind.size <= 0)
        return;
    entry.lngDataType = kind.dataType;
    entry.dblMaxSize = std::max(entry.dblMaxSize, kind.size);
}

PathId StructureAnalyser::PathOfAttribute(PathId path, std::uint32_t index, NameId attribute)
{
    if (path >= attributePaths_.size())
        attributePaths_.resize(path + std::size_t{1});
    std::vector<AttributePath>& last = attributePaths_[path];
    if (index >= last.size())
        last.resize(index + std::size_t{1});
    if (last[index].attribute != attribute)
        last[index] = {attribute, paths_.Child(path, WithAttributePrefix(attribute))};
    return last[index].path;
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
    StructureAnalyser(job, document, model).WalkDocument();
}

} // namespace velmora
