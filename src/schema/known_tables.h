#pragma once

#include "plan/known_database.h"
#include "schema/database_session.h"

#include <cstdint>
#include <optional>

namespace velmora {

/// What the open database holds and knows of itself: read when it is asked for, and again only after a change.
class KnownTables {
public:
    /// `session` must outlive it.
    explicit KnownTables(DatabaseSession& session) : session_(session) {}

    /// Valid until the next call.
    [[nodiscard]] const KnownDatabase& Read();

private:
    DatabaseSession& session_;
    std::optional<std::uint64_t> state_; ///< of the schema, when `known_` was read
    KnownDatabase known_;
};

} // namespace velmora
