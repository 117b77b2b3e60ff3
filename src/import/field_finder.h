#pragma once

#include "import/table_sinks.h"
#include "mapping/tag_map.h"
#include "settings/conversion_settings.h"
#include "xml/document.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace velmora {

/// Where a value belongs.
struct FieldPlace {
    std::optional<std::size_t> field;          ///< position in the record
    LossReason refusal = LossReason::NoColumn; ///< why there is none
};

/// Where the values of a document go: field positions, looked up by name once per path or attribute and again only when
/// the table's columns have changed. Key columns take no values of the document: they say what belongs together.
class FieldFinder {
public:
    FieldFinder(const Document& document, const ConversionSettings& settings, const TagMap& map,
                const TableSinks& sinks);

    /// The field for a leaf's text in the record of the leaf's parent. `sink` is the parent's, always the same for one
    /// path.
    [[nodiscard]] FieldPlace InParent(const TableSink& sink, ElementId leaf) { return Leaf(inParent_, sink, leaf); }
    /// The field for a leaf's text in a record of the leaf's own table.
    [[nodiscard]] FieldPlace InOwnTable(const TableSink& sink, ElementId leaf) { return Leaf(inOwnTable_, sink, leaf); }
    /// The field for the attribute number `index` (from 0) of `element` in the sink number `sinkNumber`.
    [[nodiscard]] FieldPlace Attribute(const TableSink& sink, int sinkNumber, ElementId element, std::uint32_t index);
    /// Column names, made anew at every call: for messages.
    [[nodiscard]] std::string ColumnOfLeaf(ElementId leaf) const;
    [[nodiscard]] std::string ColumnOfAttribute(NameId attribute) const;

private:
    struct Slot {
        std::uint64_t layout = 0; ///< of the recordset when the position was found; 0: never
        FieldPlace place;
    };
    struct AttributeSlot {
        NameId name;
        Slot slot;
    };
    /// The attributes met so far in the records of one sink.
    struct Attributes {
        std::vector<AttributeSlot> slots; ///< in order of first appearance
        std::unordered_map<NameId, std::size_t> positions;
    };

    FieldPlace Leaf(std::vector<Slot>& slots, const TableSink& sink, ElementId leaf);
    [[nodiscard]] FieldPlace Find(const Recordset& records, const std::string& column) const;
    [[nodiscard]] bool IsKey(const Recordset& records, std::size_t field) const;

    const Document& document_;
    const ConversionSettings& settings_;
    const TagMap& map_;
    std::vector<Slot> inParent_;         ///< by the leaf's path
    std::vector<Slot> inOwnTable_;       ///< by the leaf's path
    std::vector<Attributes> attributes_; ///< by sink
};

} // namespace velmora
