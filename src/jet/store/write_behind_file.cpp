#include "jet/store/write_behind_file.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace jet {

namespace {

/// With what the page cache writes in one go, this is as much as it writes while the thread is still at the last lot.
constexpr std::size_t kMaxTasks = 40;

} // namespace

WriteBehindFile::WriteBehindFile(std::unique_ptr<File> file, std::uint64_t bytesAtOnce)
    : file_(std::move(file)), bytesAtOnce_(bytesAtOnce)
{
    used_.reserve(kMaxTasks);
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
        hasTasks_.wait(lock, [this] { return isEnding_ || (!tasks_.empty() && !isHalted_); });
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
    if (used_.size() < used_.capacity())
        used_.push_back(std::move(tasks_.front().bytes));
    tasks_.pop_front();
}

// ---- The caller's side ----------------------------------------------------------------------------------------------

/// Waits until nothing is left to be done; from a write on that has failed, does it here.
void WriteBehindFile::Finish(Lock& lock)
{
    hasDone_.wait(lock, [this] { return tasks_.empty() || (isHalted_ && !isWorking_); });
    for (; !tasks_.empty(); RemoveFirst())
        Do(tasks_.front());
    isHalted_ = false;
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
    hasDone_.wait(lock, [this] { return isHalted_ || tasks_.size() < kMaxTasks; });
    if (isHalted_)
        Finish(lock);
    tasks_.push_back({offset, std::exchange(bytes, {})});
    if (!used_.empty()) {
        bytes = std::move(used_.back());
        used_.pop_back();
    }
    hasTasks_.notify_one();
}

void WriteBehindFile::BeginToWrite(std::uint64_t offset, std::uint64_t size)
{
    const Lock lock(mutex_);
    if (!tasks_.empty())
        tasks_.push_back({offset, {}, size});
    else
        file_->BeginToWrite(offset, size);
}

void WriteBehindFile::Forget(std::uint64_t offset) noexcept
{
    Lock lock(mutex_);
    isHalted_ = true;
    hasDone_.wait(lock, [this] { return !isWorking_; });
    for (Task& task : tasks_)
        if (task.offset + task.bytes.size() > offset)
            task.bytes.resize(offset - std::min(task.offset, offset));
    std::erase_if(tasks_, [](const Task& task) { return task.bytes.empty(); });
    isHalted_ = false;
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
