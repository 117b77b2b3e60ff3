#include "xml/event_batch.h"

namespace velmora {

void EventBatch::AddStart(std::string_view name, const char* const* attributes)
{
    text_.append(name);
    std::uint32_t count = 0;
    for (; attributes[count] != nullptr; ++count) {
        const std::string_view text = attributes[count];
        text_.append(text.data(), text.size() + 1);
        lengths_.push_back(static_cast<std::uint32_t>(text.size()));
    }
    events_.push_back({count, static_cast<std::uint32_t>(name.size())});
}

void EventBatch::AddText(std::string_view piece)
{
    text_.append(piece);
    events_.push_back({kText, static_cast<std::uint32_t>(piece.size())});
}

void EventBatch::Tell(DocumentEvents& events) const
{
    const char* text = text_.data();
    const std::uint32_t* length = lengths_.data();
    std::vector<const char*> attributes;
    for (const Event& event : events_) {
        const std::string_view own(text, event.length);
        text += event.length;
        if (event.kind == kText) {
            events.Text(own);
        } else if (event.kind == kEnd) {
            events.EndElement();
        } else {
            attributes.clear();
            for (std::uint32_t n = 0; n < event.kind; ++n) {
                attributes.push_back(text);
                text += *length++ + 1;
            }
            attributes.push_back(nullptr);
            events.StartElement(own, attributes.data());
        }
    }
}

void EventBatch::Clear()
{
    if (text_.capacity() > 4 * kMuchText)
        text_ = {};
    events_.clear();
    lengths_.clear();
    text_.clear();
}

} // namespace velmora
