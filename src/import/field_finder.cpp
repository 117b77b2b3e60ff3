#include "import/field_finder.h"

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

std::optional<std::size_t> FieldFinder::Leaf(std::vector<Slot>& slots, const TableSink& sink, ElementId leaf)
{
    Slot& slot = slots[document_.Path(leaf)];
    const std::uint64_t layout = sink.records->Layout();
    if (slot.layout != layout)
        slot = {layout, sink.records->FieldIndex(ColumnOfLeaf(leaf))};
    return slot.field;
}

std::optional<std::size_t> FieldFinder::Attribute(const TableSink& sink, int sinkNumber, ElementId element,
                                                  std::uint32_t index)
{
    std::vector<AttributeSlot>& known = attributes_[static_cast<std::size_t>(sinkNumber)];
    const NameId name = document_.AttributeName(element, index);
    std::size_t at = index; // records of one kind mostly write their attributes in one order
    if (at >= known.size() || known[at].name != name) {
        for (at = 0; at < known.size() && known[at].name != name; ++at) {
        }
        if (at == known.size())
            known.push_back({name, {}});
    }
    Slot& slot = known[at].slot;
    const std::uint64_t layout = sink.records->Layout();
    if (slot.layout != layout)
        slot = {layout, sink.records->FieldIndex(ColumnOfAttribute(name))};
    return slot.field;
}

} // namespace velmora
