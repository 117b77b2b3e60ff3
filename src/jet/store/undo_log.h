#pragma once

#include "jet/base/format.h"
#include "jet/store/bitmap.h"
#include "jet/store/file_system.h"

#include <cassert>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

namespace jet {

/// What pages held when a savepoint was set, as far as they have been changed since: at first the bytes of each change,
/// so that a record costs no more than it changes; once these have come to something, whole pages, each once. What
/// outgrows the budget goes to a temporary file.
class UndoLog {
public:
    /// Bytes of a page as they were.
    struct Piece {
        PageNumber page;
        std::size_t offset;
        ByteSpan bytes;
        bool wasDirty;
    };
    /// Bytes of a page that are about to be changed.
    struct Range {
        std::size_t offset;
        std::size_t size;
    };
    using MakeFile = std::function<std::unique_ptr<File>()>;

    /// Without `makeFile` everything stays in memory.
    UndoLog(std::size_t pageSize, std::size_t budgetBytes, MakeFile makeFile)
        : pageSize_(pageSize), budget_(budgetBytes), makeFile_(std::move(makeFile))
    {
    }

    /// From now on changes are noted. `pageCount`: pages behind are new, and nobody will miss what they held.
    void Begin(PageNumber pageCount)
    {
        assert(!isOpen_ && IsEmpty());
        if (whole_.size() <= pageCount / 8)
            MakeBits(pageCount);
        pageCount_ = pageCount;
        isOpen_ = true;
    }
    void End() noexcept
    {
        if (!wholePages_.empty() || !segments_.empty())
            Clear();
        at_ = log_.data();
        pageCount_ = 0;
        isOpen_ = false;
    }
    [[nodiscard]] bool IsOpen() const noexcept { return isOpen_; }
    [[nodiscard]] bool IsEmpty() const noexcept { return at_ == log_.data() && segments_.empty(); }
    [[nodiscard]] PageNumber PageCount() const noexcept { return pageCount_; } ///< given to Begin()

    /// Notes ranges of `page`, whose content is `content`, before they are changed. Throws DiskFull,
    /// DiskError; what was noted before is still there then.
    template <typename... Ranges>
    void Note(PageNumber page, const Byte* content, bool isDirty, const Ranges&... ranges)
    {
        if (page < pageCount_)
            (NoteRange(page, content, isDirty, ranges), ...);
    }
    /// All that was noted, the last first: pieces of one page may overlap, and the oldest is what counts.
    template <typename Visit>
    void VisitBackwards(const Visit& visit)
    {
        VisitHeld(Used(), visit);
        // What log_ held has been visited, so it serves to read back what went to the file.
        std::uint64_t end = spilled_;
        for (std::size_t i = segments_.size(); i-- > 0;) {
            end -= segments_[i];
            file_->ReadAt(end, MutableBytes(log_).first(segments_[i]));
            VisitHeld(segments_[i], visit);
        }
    }

private:
    /// So many bytes are copied whatever the size of a small piece: that is quicker than asking for it.
    static constexpr std::size_t kFew = 64;

    /// Stands behind the bytes of each piece, as the log is read backwards.
    struct Trailer {
        PageNumber page;
        std::uint16_t offset;
        std::uint16_t size;
        std::uint32_t wasDirty;
    };

    [[nodiscard]] std::size_t Used() const noexcept { return static_cast<std::size_t>(at_ - log_.data()); }
    void NoteRange(PageNumber page, const Byte* content, bool isDirty, const Range& range)
    {
        // Several times for each record, so the usual case is here: few bytes, and room for them.
        if (range.size <= kFew && range.offset + kFew <= pageSize_ && at_ < smallEnd_) {
            std::memcpy(at_, content + range.offset, kFew);
            EndPiece(at_ + range.size,
                     {page, static_cast<std::uint16_t>(range.offset), static_cast<std::uint16_t>(range.size), isDirty});
        } else {
            Append(page, content, isDirty, range);
        }
    }
    void EndPiece(Byte* at, const Trailer& trailer) noexcept
    {
        std::memcpy(at, &trailer, sizeof trailer);
        at_ = at + sizeof trailer;
    }
    void SetEnd(std::size_t used) noexcept;
    void Append(PageNumber page, const Byte* content, bool isDirty, Range range);
    void MakeBits(PageNumber pageCount);
    void Clear() noexcept;
    void MakeRoom(std::size_t size);
    void Spill();
    template <typename Visit>
    void VisitHeld(std::size_t end, const Visit& visit) const
    {
        while (end != 0) {
            Trailer trailer;
            std::memcpy(&trailer, log_.data() + end - sizeof trailer, sizeof trailer);
            end -= sizeof trailer + trailer.size;
            visit(
                Piece{trailer.page, trailer.offset, ByteSpan(log_).subspan(end, trailer.size), trailer.wasDirty != 0});
        }
    }

    std::size_t pageSize_;
    std::size_t budget_;
    MakeFile makeFile_;
    bool isOpen_ = false;
    PageNumber pageCount_ = 0; ///< 0 while nothing is noted
    Bytes log_;
    Byte* at_ = nullptr;                 ///< the end of what log_ holds
    const Byte* smallEnd_ = nullptr;     ///< before it a small piece fits
    Bytes whole_;                        ///< bit p = page p is held as a whole
    std::vector<PageNumber> wholePages_; ///< whose bits may be set
    std::unique_ptr<File> file_;
    std::uint64_t spilled_ = 0;         ///< bytes in file_
    std::vector<std::size_t> segments_; ///< by which they are read back
};

} // namespace jet
