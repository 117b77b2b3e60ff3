#include "support/process.h"

#include <stdexcept>

namespace velmora::testing {

/// What needs other programs needs the shared folder too, which tests on this system do without.
ProcessResult RunProcess(const std::vector<std::string>& arguments, const std::map<std::string, std::string>&,
                         const std::filesystem::path&)
{
    throw std::runtime_error("there is no " + arguments.at(0) + " here");
}

} // namespace velmora::testing
