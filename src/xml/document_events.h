#pragma once

#include <string_view>

namespace velmora {

/// What a parser finds in a document, in its order.
class DocumentEvents {
public:
    virtual ~DocumentEvents() = default;

    /// `attributes` are names and values by turns, ended by nullptr.
    virtual void StartElement(std::string_view name, const char* const* attributes) = 0;
    virtual void Text(std::string_view piece) = 0;
    virtual void EndElement() = 0;
};

} // namespace velmora
