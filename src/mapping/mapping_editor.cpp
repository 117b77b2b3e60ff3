#include "mapping/mapping_editor.h"

#include <algorithm>

namespace velmora {

std::string MappingEditor::Line(std::size_t line) const
{
    if (IsAddLine(line))
        return std::string(kAddLine);
    const MappingEntry& entry = map_.Entry(line + 1);
    std::string text = "<";
    return text.append(entry.tag).append(">  -->  [").append(entry.name).append("]");
}

void MappingEditor::Redraw(std::optional<std::size_t> wanted)
{
    const std::size_t entries = map_.UpperBound();
    selected_.reset();
    if (wanted && entries > 0)
        Select(std::min(*wanted, entries - 1));
}

void MappingEditor::Select(std::size_t line)
{
    selected_ = line;
    if (IsAddLine(line))
        return;
    tag_ = map_.Entry(line + 1).tag;
    name_ = map_.Entry(line + 1).name;
}

void MappingEditor::Click(std::size_t line)
{
    if (!IsAddLine(line)) {
        Select(line);
        return;
    }
    const bool isFirst = map_.UpperBound() == 0;
    map_.Add(isFirst ? MappingEntry{tag_, name_} : MappingEntry{});
    Redraw(map_.UpperBound() - 1);
}

void MappingEditor::Type(std::string_view tag, std::string_view name)
{
    tag_ = tag;
    name_ = name;
    if (map_.UpperBound() == 0 && !selected_) {
        map_.Add({tag_, name_});
        Redraw(0);
    } else if (selected_ && !IsAddLine(*selected_)) {
        map_.Entry(*selected_ + 1) = {tag_, name_};
    }
}

void MappingEditor::Remove()
{
    if (!selected_ || map_.UpperBound() == 0)
        return;
    const std::size_t line = *selected_;
    map_.Remove(std::min(line + 1, map_.UpperBound()));
    Redraw(line);
}

} // namespace velmora
