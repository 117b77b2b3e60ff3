#pragma once

#include "jet/base/bytes.h"

#include <cstddef>
#include <memory>
#include <new>
#include <vector>

namespace jet {

/// Memory for pages, brought in pieces of many: that takes a fraction of the time that one by one does. None is given
/// back before the end of this object.
class PageMemory {
public:
    explicit PageMemory(std::size_t pageSize) : pageSize_(pageSize) {}

    /// Room for one page more, with anything in it. Throws std::bad_alloc.
    [[nodiscard]] Byte* Take();

private:
    struct Release {
        std::align_val_t alignment;
        void operator()(Byte* piece) const noexcept { ::operator delete(piece, alignment); }
    };

    void AddPiece();

    std::size_t pageSize_;
    std::vector<std::unique_ptr<Byte, Release>> pieces_;
    Byte* next_ = nullptr;
    std::size_t left_ = 0; ///< bytes from next_ on
};

} // namespace jet
