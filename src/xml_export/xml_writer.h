#pragma once

#include "xml_export/output_file.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Could this be the name of an element or an attribute? Of characters beyond ASCII all are taken.
[[nodiscard]] bool IsXmlName(std::string_view name) noexcept;

/// Writes one document, element by element: UTF-8, each element in a line of its own, indented, unless it stands
/// beside text, which nothing may be added to. Characters that XML forbids are left out and counted.
class XmlWriter {
public:
    explicit XmlWriter(OutputFile& file);

    void StartElement(std::string_view name);
    /// Of the element just started, before anything is in it.
    void Attribute(std::string_view name, std::string_view value);
    /// Of the element just started, before any other element is in it. No text at all leaves it empty.
    void Text(std::string_view text);
    void EndElement(std::string_view name);
    /// To be called behind the end of the outermost element.
    void Finish();

    /// Characters left out so far.
    [[nodiscard]] std::size_t LeftOut() const noexcept { return leftOut_; }

private:
    enum class Content : char { Nothing, Text, Elements };

    void CloseStartTag();
    void BeginLine();
    template <typename Escape>
    void AppendEscaped(std::string_view text, Escape escape);

    OutputFile& file_;
    std::string out_; ///< to be written
    std::vector<Content> open_;
    bool isStartTagOpen_ = false;
    std::size_t leftOut_ = 0;
};

} // namespace velmora
