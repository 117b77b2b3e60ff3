#include "jet/table/entry_sorter.h"

#include "jet/base/error.h"
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

/// Runs are written and read so many bytes at a time.
constexpr std::size_t kBufferSize = std::size_t{1} << 16;

} // namespace

/// Writes the entries of one run.
class EntrySorter::RunWriter {
public:
    explicit RunWriter(File& file) : file_(file) {}

    void Write(const Entry& entry)
    {
        std::array<Byte, kRunHead> head{};
        StoreU32(head, 0, static_cast<std::uint32_t>(entry.key.size()));
        StoreU32(head, 4, entry.row.Pointer());
        head[8] = entry.allNull ? 1 : 0;
        AppendBytes(buffer_, head);
        AppendBytes(buffer_, entry.key);
        if (buffer_.size() >= kBufferSize)
            Flush();
    }
    void Flush()
    {
        file_.WriteAt(size_, buffer_);
        size_ += buffer_.size();
        buffer_.clear();
    }
    [[nodiscard]] std::uint64_t Size() const noexcept { return size_; } ///< as far as it was flushed

private:
    File& file_;
    std::uint64_t size_ = 0;
    Bytes buffer_;
};

/// Goes through the entries of one run.
class EntrySorter::RunReader {
public:
    explicit RunReader(const Run& run) : file_(*run.file), left_(run.size) {}

    /// False at the end of the run.
    [[nodiscard]] bool Next()
    {
        if (left_ == 0 && at_ == buffer_.size())
            return false;
        const ByteSpan head = Take(kRunHead);
        const std::size_t size = LoadU32(head, 0);
        row_ = RowId::FromPointer(LoadU32(head, 4));
        allNull_ = head[8] != 0;
        key_ = Take(size);
        return true;
    }
    [[nodiscard]] Entry Current() const { return {key_, row_, allNull_}; }

private:
    /// The next `size` bytes, which are there; views of those taken before end.
    [[nodiscard]] ByteSpan Take(std::size_t size)
    {
        if (buffer_.size() - at_ < size) {
            // The rest of an entry whose end is not in memory yet goes to the front.
            buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(at_));
            const std::size_t known = buffer_.size();
            const std::uint64_t more = std::min<std::uint64_t>(left_, std::max(kBufferSize, size));
            buffer_.resize(known + more);
            file_.ReadAt(read_, MutableBytes(buffer_).subspan(known));
            read_ += more;
            left_ -= more;
            at_ = 0;
        }
        at_ += size;
        return ByteSpan(buffer_).subspan(at_ - size, size);
    }

    File& file_;
    std::uint64_t read_ = 0;
    std::uint64_t left_;
    Bytes buffer_;
    std::size_t at_ = 0; ///< of buffer_
    ByteSpan key_;
    RowId row_;
    bool allNull_ = false;
};

void EntrySorter::Add(const Entry& entry)
{
    held_.push_back({keys_.size(), static_cast<std::uint32_t>(entry.key.size()), entry.row, entry.allNull});
    AppendBytes(keys_, entry.key);
    ++count_;
    // What the vectors hold in reserve is left out: what counts is that memory does not grow with the table.
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
    Run run{system_->OpenTemporary(), 0};
    RunWriter writer(*run.file);
    for (const Stored& stored : held_)
        writer.Write(View(stored));
    writer.Flush();
    run.size = writer.Size();
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

/// Runs are as large as the budget, so there are few of them, and all are merged in one go.
void EntrySorter::Merge(const Visitor& visit)
{
    // What is held becomes a run like the others, so there is one way to merge.
    if (!held_.empty())
        Spill();
    std::vector<RunReader> readers;
    for (const Run& run : runs_)
        readers.emplace_back(run);
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
