#include "xml/load_ahead.h"

#include "platform/at_end.h"
#include "platform/paths.h"

#include <chrono>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

/// So often somebody who waits looks whether to go on waiting.
constexpr std::chrono::milliseconds kPatience{50};

/// Ends a load that nobody wants any more.
struct Dropped {};

} // namespace

LoadAhead::~LoadAhead()
{
    Drop();
}

void LoadAhead::Drop() noexcept
{
    isDropped_ = true;
    worker_.reset();
    result_.reset();
}

std::optional<LoadAhead::Stamp> LoadAhead::StampOf(const Source& source)
{
    const std::filesystem::path path = PathFromUtf8(source.path);
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error)
        return std::nullopt;
    const auto time = std::filesystem::last_write_time(path, error);
    return error ? std::nullopt : std::optional(Stamp{size, time});
}

void LoadAhead::Begin(const Source& source, MemoryBudget budget, Blanks blanks, const Parsing& parsing)
{
    Drop();
    source_ = source;
    stamp_ = StampOf(source);
    bytesTaken_ = 0;
    isDropped_ = hasEnded_ = false;
    worker_ = Worker::Start([this, budget = std::move(budget), blanks, parsing] { Load(budget, blanks, parsing); });
}

void LoadAhead::Load(MemoryBudget budget, Blanks blanks, const Parsing& parsing)
{
    const AtEnd end([this] {
        {
            const std::lock_guard lock(mutex_);
            hasEnded_ = true;
        }
        ended_.notify_all();
    });
    const auto onPiece = [this](std::int64_t bytes) {
        bytesTaken_ = bytes;
        if (isDropped_)
            throw Dropped();
    };
    try {
        result_ = LoadDocument(source_, onPiece, std::move(budget), blanks, parsing);
    } catch (const Dropped&) {
        return; // whoever has dropped it knows
    }
}

void LoadAhead::Wait(const std::function<void(std::int64_t)>& onPiece)
{
    for (bool hasEnded = false; !hasEnded; onPiece(bytesTaken_)) {
        std::unique_lock lock(mutex_);
        hasEnded = ended_.wait_for(lock, kPatience, [this] { return hasEnded_; });
    }
}

std::optional<LoadResult> LoadAhead::Take(const Source& source, const std::function<void(std::int64_t)>& onPiece)
{
    if (!worker_ || source.path != source_.path || !stamp_ || stamp_ != StampOf(source)) {
        Drop();
        return std::nullopt;
    }
    Wait(onPiece);
    std::exchange(worker_, nullptr)->Join();
    return stamp_ == StampOf(source) ? std::exchange(result_, std::nullopt) : std::nullopt;
}

} // namespace velmora
