#include "import/field_finder.h"

#include "schema/table_name.h"
#include "xml/map_name.h"

namespace velmora {

FieldFinder::FieldFinder(const Document& document, const ConversionSettings& settings, const TagMap& map,
                         const TableSinks& sinks)
    : document_(document), settings_(settings), map_(map), inParent_(document.Paths().Size()),
      inOwnTable_(document.Paths().Size()), attributes_(static_cast<std::size_t>(sinks.UpperBound()) + 1)
{
}

std::string FieldFinder::ColumnOfLeaf(ElementId leaf) const
{
    std::string name(document_.NameText(document_.Name(leaf)));
    return MapName(name, settings_, map_);
}

std::string FieldFinder::ColumnOfAttribute(NameId attribute) const
{
    std::string name = settings_.strAttrPrefix + std::string(document_.NameText(attribute));
    return MapName(name, settings_, map_);
}

FieldPlace FieldFinder::Find(const Recordset& records, const std::string& column) const
{
    const auto field = records.FieldIndex(column);
    if (!field)
        return {};
    if (IsKey(records, *field))
        return {std::nullopt, LossReason::KeyColumn};
    return {field, LossReason::None};
}

/// Only its type tells a key column from one of the document's own that bears its name, in a table without keys.
bool FieldFinder::IsKey(const Recordset& records, std::size_t field) const
{
    const std::string& name = records.FieldName(field);
    if (name == settings_.strKeyPrimary)
        return records.IsAutonumber(field);
    if (name == settings_.strKeyForeign)
        return records.IsLong(field);
    if (name != kMasterTable)
        return false;
    const auto primary = records.FieldIndex(settings_.strKeyPrimary);
    return primary && records.IsAutonumber(*primary);
}

FieldPlace FieldFinder::Leaf(std::vector<Slot>& slots, const TableSink& sink, ElementId leaf)
{
    Slot& slot = slots[document_.Path(leaf)];
    const std::uint64_t layout = sink.records->Layout();
    if (slot.layout != layout)
        slot = {layout, Find(*sink.records, ColumnOfLeaf(leaf))};
    return slot.place;
}

FieldPlace FieldFinder::Attribute(const TableSink& sink, int sinkNumber, ElementId element, std::uint32_t index)
{
    Attributes& known = attributes_[static_cast<std::size_t>(sinkNumber)];
    const NameId name = document_.AttributeName(element, index);
    std::size_t at = index; // records of one kind mostly write their attributes in one order
    if (at >= known.slots.size() || known.slots[at].name != name) {
        at = known.positions.try_emplace(name, known.slots.size()).first->second;
        if (at == known.slots.size())
            known.slots.push_back({name, {}});
    }
    Slot& slot = known.slots[at].slot;
    const std::uint64_t layout = sink.records->Layout();
    if (slot.layout != layout) {
        slot = {layout, Find(*sink.records, ColumnOfAttribute(name))};
        // Every attribute gets a column, unless an element of the same name stands in its place.
        if (slot.place.refusal == LossReason::NoColumn)
            slot.place.refusal = LossReason::ColumnTaken;
    }
    return slot.place;
}

} // namespace velmora
