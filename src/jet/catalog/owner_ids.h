#pragma once

#include "jet/base/bytes.h"
#include "jet/store/pager.h"

namespace jet {

/// The ids under which the catalog names owners and holders of permissions, as this database stores them.
///
/// Jet 3 stores them plain. Jet 4 XORs them with a key stream that depends on the creation date and the password in
/// page 0, so they differ from file to file; an id that does not fit makes Access refuse the object. Source: 46 files
/// of Access 2000 and 2003, all of which fit.
struct OwnerIds {
    explicit OwnerIds(Pager& pager);

    Bytes engine;  ///< owns the engine's own objects
    Bytes admin;   ///< the user Admin: every session without a workgroup file
    Bytes users;   ///< the group Users
    Bytes creator; ///< in containers: whoever makes the object
};

} // namespace jet
