#include "jet/base/rc4.h"

#include <array>
#include <cassert>
#include <numeric>
#include <utility>

namespace jet {

/// The cipher keeps no secret here: its keys stand in the file or are the same for all. It hides page 0 and the owner
/// ids from eyes, and whoever writes them has to mask them alike.
void ApplyRc4(ByteSpan key, MutableBytes data)
{
    assert(!key.empty() && key.size() <= 256);
    std::array<Byte, 256> state;
    std::iota(state.begin(), state.end(), Byte{0});
    Byte j = 0;
    for (std::size_t i = 0; i < state.size(); ++i) {
        j = static_cast<Byte>(j + state[i] + key[i % key.size()]);
        std::swap(state[i], state[j]);
    }

    Byte i = 0;
    j = 0;
    for (Byte& byte : data) {
        ++i;
        j = static_cast<Byte>(j + state[i]);
        std::swap(state[i], state[j]);
        byte ^= state[static_cast<Byte>(state[i] + state[j])];
    }
}

} // namespace jet
