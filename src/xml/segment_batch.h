#pragma once

#include "xml/document_events.h"
#include "xml/event_batch.h"
#include "xml/segment_parser.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// What a segment's parser has told, to be told once more when what is before it has been.
class SegmentBatch final : public DocumentEvents {
public:
    void StartElement(std::string_view name, const char* const* attributes) override
    {
        batch_.AddStart(name, attributes);
    }
    void Text(std::string_view piece) override { batch_.AddText(piece); }
    void EndElement() override { batch_.AddEnd(); }
    void AddOuterEnd(std::string_view tag, std::size_t behind)
    {
        outerEnds_.push_back({batch_.Size(), std::string(tag), behind});
    }

    void Tell(DocumentEvents& events, const SegmentParser::OnOuterEnd& onOuterEnd) const
    {
        EventBatch::Telling telling(batch_);
        for (const OuterEnd& end : outerEnds_) {
            telling.TellUntil(end.eventsBefore, events);
            if (!onOuterEnd(end.tag, end.behind))
                return;
        }
        telling.TellUntil(batch_.Size(), events);
    }
    /// Keeps its memory.
    void Clear()
    {
        batch_.Clear();
        outerEnds_.clear();
    }

private:
    struct OuterEnd {
        std::size_t eventsBefore;
        std::string tag;
        std::size_t behind;
    };

    EventBatch batch_;
    std::vector<OuterEnd> outerEnds_;
};

} // namespace velmora
