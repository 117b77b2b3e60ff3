#pragma once

#include "platform/worker.h"
#include "source/source.h"
#include "xml/document_loader.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace velmora {

/// The next document of a run, loaded in a thread of its own while the one before it is imported. It says nothing to
/// anybody: what there is to say of it is said when its turn has come.
class LoadAhead {
public:
    LoadAhead() = default;
    ~LoadAhead();
    LoadAhead(const LoadAhead&) = delete;
    LoadAhead& operator=(const LoadAhead&) = delete;

    /// Begins to load `source`, a file of its own, with the parameters of LoadDocument. Nothing when there is no thread
    /// to be had.
    void Begin(const Source& source, MemoryBudget budget, Blanks blanks, const Parsing& parsing);
    /// What has come of `source`. Waits for the end of its load, and calls `onPiece` meanwhile, with the bytes taken so
    /// far; what that throws ends the load, and what the load has thrown is thrown. nullopt when it is not the source
    /// that was begun last, or its file has changed since.
    [[nodiscard]] std::optional<LoadResult> Take(const Source& source,
                                                 const std::function<void(std::int64_t)>& onPiece);

private:
    /// What a file shows of itself when it is changed.
    struct Stamp {
        std::uintmax_t size = 0;
        std::filesystem::file_time_type time;
        bool operator==(const Stamp&) const = default;
    };
    [[nodiscard]] static std::optional<Stamp> StampOf(const Source& source);

    void Load(MemoryBudget budget, Blanks blanks, const Parsing& parsing);
    void Wait(const std::function<void(std::int64_t)>& onPiece);
    void Drop() noexcept;

    Source source_;
    std::optional<Stamp> stamp_; ///< of the file when its load began
    std::optional<LoadResult> result_;
    std::atomic<std::int64_t> bytesTaken_ = 0;
    std::atomic<bool> isDropped_ = false;
    std::mutex mutex_;
    std::condition_variable ended_;
    bool hasEnded_ = false;
    std::unique_ptr<Worker> worker_; ///< none: nothing was begun, or it has been taken
};

} // namespace velmora
