#pragma once

#include "jet/base/bytes.h"
#include "jet/base/format.h"

#include <string>

namespace jet::testing {

/// A database of some dozen pages with everything that has a form of its own in the file: both kinds of index pages,
/// long values in one piece and in chains, moved and deleted rows, a dropped column, a relation.
[[nodiscard]] Bytes SmallDatabase(JetVersion version);

/// The smallest that still has rows, a memo in a page of its own and a relation beside what its catalog needs.
[[nodiscard]] Bytes TinyDatabase(JetVersion version);

/// Opens `file`, which may be damaged in any way, reads all of it, changes what can be changed, commits and opens it
/// again; without `changes` it is only read. What the engine refuses it must refuse with an Error; gives the text of
/// the first that speaks of damage and does not say where, empty when there is none. `seed` chooses among the changes.
[[nodiscard]] std::string Exercise(ByteSpan file, unsigned seed, std::size_t changes = 24);

} // namespace jet::testing
