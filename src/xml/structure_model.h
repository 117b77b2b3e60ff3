#pragma once

#include "xml/document.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace velmora {

struct Job;

/// Content kinds of an element.
inline constexpr std::int32_t kNumericContent = 131; ///< also for empty content
inline constexpr std::int32_t kTextContent = 12;

/// What is known of one distinct element (or attribute) path.
struct ElementInfo {
    PathId strPath = PathTree::kNoPath; ///< the key; Document::PathText makes its text
    std::int32_t lngMaxChildren = 0;    ///< largest number of child elements seen in one occurrence
    std::int32_t lngMaxTwins = 0;   ///< most siblings with the same tag, itself not counted; over 0: a repeated leaf
    std::int32_t lngAttributes = 0; ///< attributes of the first occurrence
    std::int32_t intLevel = 0;      ///< nesting depth, 0 for the document element
    std::string strName;        ///< tag, or attribute prefix and name; may get a suffix "_L" n from the plan's rules
    bool blSharedTable = false; ///< shares one table with other elements of the same name
    double dblMaxSize = 0;      ///< numeric content: largest value; text: a length in characters
    std::int32_t lngDataType = kNumericContent;
    std::int32_t lngTableNo = 0; ///< elements that share a table share the number; 0: none given

    static constexpr NameId kNoAttribute = ~NameId{0};
    NameId attribute = kNoAttribute; ///< the attribute that has this path, if one has: an element may have it as well
};

/// The structure of one document: one ElementInfo per distinct path, in order of first appearance, numbered from 1
/// (element 0 stays empty). A parent stands before its children, an element before its attributes.
class StructureModel {
public:
    StructureModel() : elements_(1) {}

    [[nodiscard]] std::size_t UpperBound() const noexcept { return elements_.size() - 1; }
    [[nodiscard]] ElementInfo& Element(std::size_t number) { return elements_[number]; }
    [[nodiscard]] const ElementInfo& Element(std::size_t number) const { return elements_[number]; }
    /// Number of the entry for `path`, 0 when there is none. O(1).
    [[nodiscard]] std::size_t Find(PathId path) const noexcept { return path < byPath_.size() ? byPath_[path] : 0; }
    std::size_t Append(ElementInfo info)
    {
        const std::size_t number = elements_.size();
        if (info.strPath >= byPath_.size())
            byPath_.resize(info.strPath + std::size_t{1});
        byPath_[info.strPath] = number;
        elements_.push_back(std::move(info));
        return number;
    }
    /// Makes room for so many entries and paths.
    void Reserve(std::size_t count)
    {
        elements_.reserve(count + 1);
        byPath_.reserve(count + 1);
    }

    std::int32_t lngRecordEstimate = 0; ///< approximate number of records that the import will write
    std::int32_t lngProgressMax = 0;

private:
    std::vector<ElementInfo> elements_;
    std::vector<std::size_t> byPath_;
};

/// Walks the whole document once and notes in `model`, which is empty, what its paths have. The paths of attributes and
/// of repeated leaves' own columns become paths of the document.
void AnalyseStructure(Job& job, Document& document, StructureModel& model);

/// The structure of a document as text, for a person to read: a heading, and one line per element with its table
/// number, level, counts of children, repeated siblings and attributes, its type, name and path. Lines end in CR LF.
/// Costs time and memory for every path: to be called when somebody looks.
[[nodiscard]] std::string StructureReport(const StructureModel& model, const Document& document);

} // namespace velmora
