#include "jet/table/entry_sorter.h"

#include "jet/error.h"
#include "jet/index/index_page.h"

#include <algorithm>
#include <array>
#include <queue>

namespace jet {

namespace {

// An entry in a run: u32 bytes of the key, u32 row pointer, u8 1 when all Null, the key.
constexpr std::size_t kRunHead = 9;

bool ComesBefore(const EntrySorter::Entry& a, const EntrySorter::Entry& b)
{
    const int order = CompareBytes(a.key, b.key);
    return order != 0 ? order < 0 : a.row < b.row;
}

void WriteTo(std::FILE* file, ByteSpan bytes)
{
    if (std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size())
        throw Error(ErrorNumber::DiskFull, {}, "A temporary file for an index could not be written.");
}

} // namespace

/// Goes through the entries of one run.
class EntrySorter::RunReader {
public:
    explicit RunReader(std::FILE* file) : file_(file) { std::rewind(file); }

    /// False at the end of the run.
    [[nodiscard]] bool Next()
    {
        std::array<Byte, kRunHead> head{};
        if (std::fread(head.data(), 1, head.size(), file_) != head.size())
            return CheckedEnd();
        key_.resize(LoadU32(head, 0));
        row_ = RowId::FromPointer(LoadU32(head, 4));
        allNull_ = head[8] != 0;
        if (std::fread(key_.data(), 1, key_.size(), file_) != key_.size())
            throw Error(ErrorNumber::DiskError, {}, "A temporary file for an index could not be read.");
        return true;
    }
    [[nodiscard]] Entry Current() const { return {key_, row_, allNull_}; }

private:
    [[nodiscard]] bool CheckedEnd() const
    {
        if (std::ferror(file_) != 0)
            throw Error(ErrorNumber::DiskError, {}, "A temporary file for an index could not be read.");
        return false;
    }

    std::FILE* file_;
    Bytes key_;
    RowId row_;
    bool allNull_ = false;
};

void EntrySorter::Add(const Entry& entry)
{
    held_.push_back({keys_.size(), static_cast<std::uint32_t>(entry.key.size()), entry.row, entry.allNull});
    AppendBytes(keys_, entry.key);
    ++count_;
    if (keys_.size() + held_.size() * sizeof(Stored) > budget_)
        Spill();
}

void EntrySorter::SortHeld()
{
    std::ranges::sort(held_, [this](const Stored& a, const Stored& b) { return ComesBefore(View(a), View(b)); });
}

void EntrySorter::Spill()
{
    SortHeld();
    TemporaryFile run(std::tmpfile());
    if (!run)
        throw Error(ErrorNumber::DiskError, {}, "No temporary file for an index could be made.");
    for (const Stored& stored : held_) {
        std::array<Byte, kRunHead> head{};
        StoreU32(head, 0, stored.size);
        StoreU32(head, 4, stored.row.Pointer());
        head[8] = stored.allNull ? 1 : 0;
        WriteTo(run.get(), head);
        WriteTo(run.get(), View(stored).key);
    }
    if (std::fflush(run.get()) != 0)
        throw Error(ErrorNumber::DiskFull, {}, "A temporary file for an index could not be written.");
    runs_.push_back(std::move(run));
    held_.clear();
    keys_.clear();
}

void EntrySorter::ForEach(const Visitor& visit)
{
    if (!runs_.empty())
        return Merge(visit);
    SortHeld();
    for (const Stored& stored : held_)
        visit(View(stored));
}

void EntrySorter::Merge(const Visitor& visit)
{
    if (!held_.empty())
        Spill();
    std::vector<RunReader> readers;
    for (const TemporaryFile& run : runs_)
        readers.emplace_back(run.get());
    const auto later = [&](std::size_t a, std::size_t b) {
        return ComesBefore(readers[b].Current(), readers[a].Current());
    };
    std::priority_queue<std::size_t, std::vector<std::size_t>, decltype(later)> next(later);
    for (std::size_t i = 0; i < readers.size(); ++i)
        if (readers[i].Next())
            next.push(i);
    while (!next.empty()) {
        const std::size_t run = next.top();
        next.pop();
        visit(readers[run].Current());
        if (readers[run].Next())
            next.push(run);
    }
}

} // namespace jet
