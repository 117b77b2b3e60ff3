#include "settings/job.h"

#include "settings/command_line_builder.h"

namespace velmora {

Job::Job(Host& theHost) : host(theHost), log(settings, theHost, [this] { return ShownCommandLine(controls); }) {}

} // namespace velmora
