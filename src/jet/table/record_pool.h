#pragma once

#include "jet/table/record.h"

#include <memory>
#include <utility>
#include <vector>

namespace jet {

/// Records that nobody fills at the moment. All recordsets of a connection take theirs from here and give them back
/// when they are saved, the one used last first: so the few that are pending at a time stay in the processor's cache
/// when every record is one of another table.
class RecordPool {
public:
    /// A record with anything in it.
    [[nodiscard]] std::unique_ptr<Record> Take()
    {
        if (spare_.empty())
            return std::make_unique<Record>();
        std::unique_ptr<Record> record = std::move(spare_.back());
        spare_.pop_back();
        return record;
    }
    void GiveBack(std::unique_ptr<Record> record) { spare_.push_back(std::move(record)); }

private:
    std::vector<std::unique_ptr<Record>> spare_;
};

} // namespace jet
