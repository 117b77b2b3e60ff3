#pragma once

#include "jet/base/value.h"
#include "jet/store/pager.h"

namespace jet {

/// Makes the file that `pager` has just created into an empty database: the four system tables, the containers and
/// their permissions, page for page as the engine of Access lays them out. `created` is the date that every object
/// carries.
void BuildEmptyDatabase(Pager& pager, DateTime created);

} // namespace jet
