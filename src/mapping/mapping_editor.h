#pragma once

#include "mapping/tag_map.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// The editor of a tag map, without its widgets: a list with a line for each entry and a last one for adding, and two
/// text boxes that show the selected entry and change it at every keystroke. Lines are counted from 0.
class MappingEditor {
public:
    static constexpr std::string_view kAddLine = "--- Click here to add a new mapping ---";

    explicit MappingEditor(TagMap& map) : map_(map) {}

    [[nodiscard]] std::size_t LineCount() const noexcept { return map_.UpperBound() + 1; }
    [[nodiscard]] std::string Line(std::size_t line) const;
    [[nodiscard]] bool IsAddLine(std::size_t line) const noexcept { return line == map_.UpperBound(); }
    [[nodiscard]] std::optional<std::size_t> Selected() const noexcept { return selected_; }
    /// The text boxes `txtTAG` and `txtCOLUMN`. What stands in them stays when nothing is selected.
    [[nodiscard]] const std::string& Tag() const noexcept { return tag_; }
    [[nodiscard]] const std::string& Name() const noexcept { return name_; }

    /// The map was changed elsewhere: the wanted line, or the last entry when there are fewer, is selected and shown.
    void Redraw(std::optional<std::size_t> wanted);
    /// The line was reached by the keyboard. The line for adding is only selected so.
    void Select(std::size_t line);
    /// The line was clicked. The one for adding makes a blank entry, or in an empty map one with what was typed before
    /// there was any.
    void Click(std::size_t line);
    /// What the boxes hold after a keystroke. It goes into the selected entry, or makes the first one.
    void Type(std::string_view tag, std::string_view name);
    /// Removes the selected entry; on the line for adding, the last one.
    void Remove();

private:
    TagMap& map_;
    std::optional<std::size_t> selected_;
    std::string tag_, name_;
};

} // namespace velmora
