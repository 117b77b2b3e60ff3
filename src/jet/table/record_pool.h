#pragma once

#include "jet/table/record.h"

#include <memory>
#include <utility>
#include <vector>

namespace jet {

/// Records that nobody fills at the moment. All recordsets of a connection take theirs from here, the one used last
/// first: so the few that are pending at a time stay in the processor's cache when every record is one of another
/// table.
class RecordPool {
public:
    using Place = std::unique_ptr<Record>;

    /// A record with anything in it.
    [[nodiscard]] Place Take()
    {
        if (offered_ != nullptr)
            return std::move(*std::exchange(offered_, nullptr));
        if (spare_.empty())
            return std::make_unique<Record>();
        Place record = std::move(spare_.back());
        spare_.pop_back();
        return record;
    }
    /// What stands in `place` has been saved: it can be read there until somebody else takes it.
    void Offer(Place& place)
    {
        if (offered_ != nullptr && offered_ != &place)
            spare_.push_back(std::move(*offered_));
        offered_ = &place;
    }
    /// Nobody else may take what stands in `place`: it is about to be filled, or to go.
    void Keep(const Place& place) noexcept
    {
        if (offered_ == &place)
            offered_ = nullptr;
    }

private:
    Place* offered_ = nullptr;
    std::vector<Place> spare_;
};

} // namespace jet
