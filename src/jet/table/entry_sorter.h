#pragma once

#include "jet/base/bytes.h"
#include "jet/base/row_id.h"
#include "jet/store/file_system.h"

#include <functional>
#include <memory>
#include <vector>

namespace jet {

/// Puts index entries in order. What exceeds a budget of memory goes in sorted runs to temporary files that have no
/// name, and the runs are merged when the entries are asked for.
class EntrySorter {
public:
    struct Entry {
        ByteSpan key;
        RowId row;
        bool allNull; ///< all columns of the key are Null
    };
    using Visitor = std::function<void(const Entry&)>;

    /// What all sorters of one statement may hold together, in bytes.
    static constexpr std::size_t kBudget = std::size_t{32} << 20;

    explicit EntrySorter(FileSystem& system, std::size_t budget = kBudget) : system_(&system), budget_(budget) {}

    /// Throws DiskFull, DiskError.
    void Add(const Entry& entry);
    [[nodiscard]] std::uint32_t Count() const noexcept { return count_; }
    /// All entries in the order of an index: by key, then by row. Views of an entry are valid during its visit. May be
    /// called again; no entry is added in between. Throws DiskError, DiskFull, and what `visit` throws.
    void ForEach(const Visitor& visit);

private:
    struct Stored {
        std::size_t begin;
        std::uint32_t size;
        RowId row;
        bool allNull;
    };
    struct Run {
        std::unique_ptr<File> file;
        std::uint64_t size;
    };
    class RunWriter;
    class RunReader;

    [[nodiscard]] Entry View(const Stored& stored) const
    {
        return {ByteSpan(keys_).subspan(stored.begin, stored.size), stored.row, stored.allNull};
    }
    void SortHeld();
    void Spill();
    void Merge(const Visitor& visit);

    FileSystem* system_;
    std::size_t budget_;
    std::uint32_t count_ = 0;
    Bytes keys_; ///< of the entries that are held, one after another
    std::vector<Stored> held_;
    std::vector<Run> runs_;
};

} // namespace jet
