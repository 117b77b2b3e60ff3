#include "app/version.h"

namespace velmora {

std::string_view Version() noexcept
{
    return VELMORA_VERSION;
}

} // namespace velmora
