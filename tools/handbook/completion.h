#pragma once

#include <string>

namespace velmora::handbook {

// What a shell offers behind `velmora` and `velmora-gui`: the words of the options; behind a key its values, folders,
// or the files whose names end as such files do.

[[nodiscard]] std::string BashCompletion();
[[nodiscard]] std::string ZshCompletion();
[[nodiscard]] std::string FishCompletion();

} // namespace velmora::handbook
