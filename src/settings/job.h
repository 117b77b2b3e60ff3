#pragma once

#include "log/procedure.h"
#include "log/protocol_log.h"
#include "settings/command_line.h"
#include "settings/controls.h"
#include "settings/conversion_settings.h"

#include <utility>

namespace velmora {

/// What a whole run shares. Made by the application, handed down by reference.
struct Job {
    explicit Job(Host& theHost) : host(theHost), log(settings, theHost, [this] { return ShownCommandLine(controls); })
    {
    }
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    Host& host;
    Controls controls;
    ConversionSettings settings;
    ProtocolLog log; ///< refers to `settings` and `controls`

    /// Lets clicks and repaints through; throws Aborted when the run is to end.
    void ProcessEvents()
    {
        host.ProcessEvents();
        ThrowIfAborted(settings);
    }
};

/// See Procedure in log/procedure.h.
template <class Body>
void Procedure(Job& job, std::string_view name, Body&& body)
{
    Procedure(job.log, name, std::string_view(), std::forward<Body>(body));
}

/// With an argument for the trace line: a text, or a callable that builds one.
template <class Argument, class Body>
void Procedure(Job& job, std::string_view name, const Argument& argument, Body&& body)
{
    Procedure(job.log, name, argument, std::forward<Body>(body));
}

} // namespace velmora
