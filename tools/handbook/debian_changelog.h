#pragma once

#include "handbook/markdown.h"

#include <string>
#include <string_view>
#include <vector>

namespace velmora::handbook {

/// Who signs the entries of a changelog, and when the newest version was made: "Tue, 05 Mar 2024 14:07:09 +0000".
struct Signature {
    std::string maintainer;
    std::string date;
};

/// The newest version of CHANGELOG.md as Debian's packages carry it.
[[nodiscard]] std::string DebianChangelog(const std::vector<Block>& changes, std::string_view version,
                                          const Signature& signature);

} // namespace velmora::handbook
