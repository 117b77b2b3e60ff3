#include "jet/catalog/owner_ids.h"

#include "jet/base/rc4.h"
#include "jet/store/header_page.h"

#include <algorithm>
#include <array>

namespace jet {

using namespace header_offset;

namespace {

// The password, its mask taken off, and what follows it in the header, folded into four bytes together with the
// creation date: a file whose date is changed has owners that nobody knows.
constexpr std::size_t kKeyMaterialSize = 80; // from the password's first byte on

std::array<Byte, 4> StreamKey(const Pager& pager, ByteSpan header)
{
    std::array<Byte, kKeyMaterialSize> material{};
    std::copy_n(header.begin() + kPassword, material.size(), material.begin());
    std::array<Byte, 4> day{};
    const double date = pager.Header().creationDate;
    StoreU32(day, 0, date >= 0 && date < 4294967296.0 ? static_cast<std::uint32_t>(date) : 0);
    for (std::size_t i = 0; i < kJet4PasswordSize; ++i)
        material[i] ^= day[i % day.size()];

    std::uint32_t key = LoadU32(header, kCreationDate);
    for (std::size_t i = 0; i < material.size() / 2; ++i)
        key ^= static_cast<std::uint32_t>(material[2 * i]) << (i % 24);
    std::array<Byte, 4> bytes{};
    StoreU32(bytes, 0, key);
    return bytes;
}

} // namespace

OwnerIds::OwnerIds(Pager& pager) : engine{2, 3}, admin{3, 1}, users{2, 1}, creator{2, 4}
{
    if (pager.GetFormat().version == JetVersion::Jet3)
        return;
    const Bytes header = UnmaskedHeader(pager.Read(kHeaderPage).Bytes());
    const std::array<Byte, 4> key = StreamKey(pager, header);
    for (Bytes* id : {&engine, &admin, &users, &creator})
        ApplyRc4(key, *id);
}

} // namespace jet
