#include "jet/store/write_behind_file.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace jet {

namespace {

/// So much is kept at most: several times what the page cache writes in one go.
constexpr std::size_t kMaxBytes = std::size_t{5} << 20;
/// The thread is not woken for less, nor the caller who waits for room: with pages that come one by one both would
/// mostly fall asleep and wake.
constexpr std::size_t kLot = kMaxBytes / 4;
/// Buffers that are kept.
constexpr std::size_t kMaxUsed = 40;

} // namespace

WriteBehindFile::WriteBehindFile(std::unique_ptr<File> file, std::uint64_t bytesAtOnce)
    : file_(std::move(file)), bytesAtOnce_(bytesAtOnce)
{
    used_.reserve(kMaxUsed);
}

WriteBehindFile::~WriteBehindFile()
{
    if (!thread_.joinable())
        return;
    {
        const Lock lock(mutex_);
        isEnding_ = true;
    }
    hasTasks_.notify_one();
    thread_.join();
}

bool WriteBehindFile::HasThread()
{
    if (thread_.joinable())
        return true;
    try {
        thread_ = std::thread([this] { Work(); });
        return true;
    } catch (const std::system_error&) {
        return false; // perhaps the next time
    }
}

// ---- The thread -----------------------------------------------------------------------------------------------------

void WriteBehindFile::Work()
{
    Lock lock(mutex_);
    for (;;) {
        hasTasks_.wait(lock, [this] { return isEnding_ || (isBegun_ && !isHalted_); });
        if (isEnding_)
            return;
        isWorking_ = true;
        const Task& task = tasks_.front(); // which stays where it is when others come behind it
        lock.unlock();
        bool isDone = false;
        try {
            Do(task);
            isDone = true;
        } catch (...) {
            // Nobody is here to be told: whoever comes next tries again, and is.
        }
        lock.lock();
        isWorking_ = false;
        if (isDone)
            RemoveFirst();
        else
            isHalted_ = true;
        isBegun_ = !tasks_.empty();
        if (isHalted_ || !isBegun_ || bytes_ <= kMaxBytes - kLot)
            hasDone_.notify_one();
    }
}

void WriteBehindFile::Do(const Task& task)
{
    if (task.bytes.empty())
        file_->BeginToWrite(task.offset, task.hintSize);
    else
        file_->WriteAt(task.offset, task.bytes);
}

void WriteBehindFile::RemoveFirst() noexcept
{
    Task& first = tasks_.front();
    bytes_ -= first.bytes.size();
    if (first.isLarge && used_.size() < kMaxUsed)
        used_.push_back(std::move(first.bytes));
    tasks_.pop_front();
}

// ---- The caller's side ----------------------------------------------------------------------------------------------

void WriteBehindFile::Add(Task task)
{
    const bool isHint = task.bytes.empty();
    tasks_.push_back(std::move(task));
    bytes_ += tasks_.back().bytes.size();
    if (isBegun_ || (!isHint && bytes_ < kLot))
        return;
    isBegun_ = true;
    hasTasks_.notify_one();
}

/// Waits until nothing is left to be done; what the thread has not begun, or has failed with, is done here.
void WriteBehindFile::Finish(Lock& lock)
{
    hasDone_.wait(lock, [this] { return !isBegun_ || (isHalted_ && !isWorking_); });
    isHalted_ = true; // also when it fails here
    for (; !tasks_.empty(); RemoveFirst())
        Do(tasks_.front());
    isHalted_ = isBegun_ = false;
}

void WriteBehindFile::Finish()
{
    Lock lock(mutex_);
    Finish(lock);
}

void WriteBehindFile::WriteLater(std::uint64_t offset, Bytes& bytes)
{
    if (bytesAtOnce_ >= bytes.size() || !HasThread()) {
        bytesAtOnce_ -= std::min<std::uint64_t>(bytesAtOnce_, bytes.size());
        WriteAt(offset, bytes);
        return;
    }
    Lock lock(mutex_);
    if (bytes_ + bytes.size() > kMaxBytes)
        hasDone_.wait(lock, [this] { return isHalted_ || !isBegun_ || bytes_ <= kMaxBytes - kLot; });
    if (isHalted_)
        Finish(lock);
    if (bytes.size() < bytes.capacity() / 2) // a large buffer is not kept waiting for little
        return Add({offset, bytes});
    Add({.offset = offset, .bytes = std::exchange(bytes, {}), .isLarge = true});
    if (!used_.empty()) {
        bytes = std::move(used_.back());
        used_.pop_back();
    }
}

void WriteBehindFile::BeginToWrite(std::uint64_t offset, std::uint64_t size)
{
    const Lock lock(mutex_);
    if (!tasks_.empty())
        Add({offset, {}, size});
    else
        file_->BeginToWrite(offset, size);
}

void WriteBehindFile::Forget(std::uint64_t offset) noexcept
{
    Lock lock(mutex_);
    isHalted_ = true;
    hasDone_.wait(lock, [this] { return !isWorking_; });
    for (Task& task : tasks_)
        if (task.offset + task.bytes.size() > offset) {
            const std::size_t left = offset - std::min(task.offset, offset);
            bytes_ -= task.bytes.size() - left;
            task.bytes.resize(left);
        }
    std::erase_if(tasks_, [](const Task& task) { return task.bytes.empty(); });
    isHalted_ = false;
    isBegun_ = isBegun_ && !tasks_.empty();
    hasTasks_.notify_one();
}

/// What was asked for last counts.
void WriteBehindFile::ReadAt(std::uint64_t offset, MutableBytes out)
{
    if (out.empty())
        return;
    Lock lock(mutex_);
    const std::uint64_t end = offset + out.size();
    const auto last = std::find_if(tasks_.rbegin(), tasks_.rend(), [&](const Task& task) {
        return task.offset < end && offset < task.offset + task.bytes.size();
    });
    if (last != tasks_.rend()) {
        if (last->offset <= offset && end <= last->offset + last->bytes.size()) {
            std::ranges::copy(ByteSpan(last->bytes).subspan(offset - last->offset, out.size()), out.begin());
            return;
        }
        Finish(lock); // the rest stands elsewhere
    }
    lock.unlock();
    file_->ReadAt(offset, out);
}

void WriteBehindFile::WriteAt(std::uint64_t offset, ByteSpan bytes)
{
    Finish();
    file_->WriteAt(offset, bytes);
}

std::uint64_t WriteBehindFile::Size()
{
    Finish();
    return file_->Size();
}

void WriteBehindFile::Truncate(std::uint64_t size)
{
    Finish();
    file_->Truncate(size);
}

void WriteBehindFile::Sync()
{
    Finish();
    file_->Sync();
}

} // namespace jet
