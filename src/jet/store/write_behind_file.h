#pragma once

#include "jet/store/file_system.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace jet {

/// Stands before another file, for one who does not want to wait for it: a thread does what WriteLater() was asked for,
/// in that order, when there is enough of it. Whoever looks through this object finds all of it done: ReadAt() sees it,
/// everything else waits for it. So the disk sees all in the order of the calls, too.
///
/// A write that fails loses nothing: its bytes stay here and can be read. The next call that needs the queue, with room
/// for more or empty, tries again in its caller's thread and throws what comes of it; the thread does nothing
/// meanwhile. Where there is no thread to be had, all is done at once.
///
/// For one thread's calls.
class WriteBehindFile final : public File {
public:
    /// The first `bytesAtOnce` are written by the caller: for little a thread does not pay.
    WriteBehindFile(std::unique_ptr<File> file, std::uint64_t bytesAtOnce);
    /// What is still to be written is dropped: nobody has waited for it.
    ~WriteBehindFile() override;
    WriteBehindFile(const WriteBehindFile&) = delete;
    WriteBehindFile& operator=(const WriteBehindFile&) = delete;

    void WriteLater(std::uint64_t offset, Bytes& bytes) override;
    void BeginToWrite(std::uint64_t offset, std::uint64_t size) override;
    void Forget(std::uint64_t offset) noexcept override;
    void ReadAt(std::uint64_t offset, MutableBytes out) override;
    void WriteAt(std::uint64_t offset, ByteSpan bytes) override;
    [[nodiscard]] std::uint64_t Size() override;
    void Truncate(std::uint64_t size) override;
    void Sync() override;
    [[nodiscard]] bool TryLock(std::uint64_t offset, std::uint64_t size) override
    {
        return file_->TryLock(offset, size);
    }
    [[nodiscard]] std::string Name() const override { return file_->Name(); }

private:
    /// Without bytes it is a hint, BeginToWrite().
    struct Task {
        std::uint64_t offset;
        Bytes bytes;
        std::uint64_t hintSize = 0;
        bool isLarge = false; ///< in a buffer that was the caller's
    };
    using Lock = std::unique_lock<std::mutex>;

    [[nodiscard]] bool HasThread();
    void Work();
    void Add(Task task);
    void Do(const Task& task);
    void RemoveFirst() noexcept;
    void Finish(Lock& lock);
    void Finish();

    std::unique_ptr<File> file_;
    std::uint64_t bytesAtOnce_;
    std::mutex mutex_; ///< of what follows
    std::condition_variable hasTasks_;
    std::condition_variable hasDone_;
    std::deque<Task> tasks_; ///< the first is under way, or has failed
    std::size_t bytes_ = 0;  ///< of them
    std::vector<Bytes> used_;
    bool isBegun_ = false;   ///< the thread is to do what there is; never without tasks
    bool isWorking_ = false; ///< at the first
    bool isHalted_ = false;  ///< begins no other
    bool isEnding_ = false;
    std::thread thread_;
};

} // namespace jet
