#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace velmora {

/// SHA-256 (FIPS 180-4) of bytes that come piece by piece.
class Sha256 {
public:
    void Add(std::string_view bytes);
    /// 64 hexadecimal digits, once all is added.
    [[nodiscard]] std::string Finish();

private:
    static constexpr std::size_t kBlockBytes = 64;

    void AddBlock(const unsigned char* block);

    std::array<std::uint32_t, 8> state_{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                        0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::array<unsigned char, kBlockBytes> rest_{}; ///< bytes of the block that is not full yet
    std::uint64_t size_ = 0;                        ///< of all that was added
};

} // namespace velmora
