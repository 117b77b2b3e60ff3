#pragma once

#include "xml/document_events.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Some events with their texts, to be told once more later on.
class EventBatch {
public:
    void AddStart(std::string_view name, const char* const* attributes);
    void AddText(std::string_view piece);
    void AddEnd() { events_.push_back({kEnd, 0}); }
    /// Is there so much in it that it had better be told?
    [[nodiscard]] bool IsFull() const noexcept { return events_.size() >= kManyEvents || text_.size() >= kMuchText; }

    void Tell(DocumentEvents& events) const;
    /// Keeps its memory, unless it has taken a lot.
    void Clear();

private:
    static constexpr std::size_t kManyEvents = 16'384;
    static constexpr std::size_t kMuchText = std::size_t{256} * 1024;
    static constexpr std::uint32_t kText = ~std::uint32_t{0};
    static constexpr std::uint32_t kEnd = kText - 1;

    struct Event {
        std::uint32_t kind;   ///< kText, kEnd; of a start tag how many names and values follow its name
        std::uint32_t length; ///< of the text, or of the name
    };

    std::vector<Event> events_;
    std::vector<std::uint32_t> lengths_; ///< of the attributes' names and values
    std::string text_;                   ///< all texts in their order, those of attributes each with a zero behind it
};

} // namespace velmora
