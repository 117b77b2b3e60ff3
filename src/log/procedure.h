#pragma once

#include "log/protocol_log.h"

#include <concepts>
#include <exception>
#include <string>
#include <string_view>

namespace velmora {

/// The step that a procedure is at: traced, and shown by the error report. A text that costs something to build is given as a
/// callable, which runs only when it is traced; after an error the last step's text is built for the report.
///
/// A callable is kept until the next step: what it captures by reference must live that long.
class Step {
public:
    Step(ProtocolLog& log, std::string_view procedureName) : log_(log), name_(procedureName) {}

    /// Sets the current statement to the procedure's name, ": " and `what`, and traces `what`.
    void operator()(std::string_view what);
    template <std::invocable Text>
    void operator()(const Text& text)
    {
        if (log_.IsTracing())
            (*this)(std::string_view(text()));
    }
    /// The statement that the error report shows.
    [[nodiscard]] std::string Statement() const;

private:
    ProtocolLog& log_;
    std::string_view name_;
    std::string what_;
};

/// Runs `body(Step&)` as the procedure `name`: writes the trace line (name, ": ", `argument`), returns at once when the run is
/// aborted, and turns whatever the body throws into the error report, which aborts the run. True when the body ran to its end.
template <class Body>
bool Procedure(ProtocolLog& log, std::string_view name, std::string_view argument, Body&& body)
{
    if (log.IsTracing())
        log.Trace(std::string(name) + ": " + std::string(argument.substr(0, 1000)));
    if (log.Flags().blAbort)
        return false;
    Step step(log, name);
    try {
        body(step);
        return true;
    } catch (const RuntimeError& error) {
        log.ErrorReport(name, step.Statement(), error);
    } catch (const std::bad_alloc&) {
        log.ErrorReport(name, step.Statement(), RuntimeError(7, "Out of memory"));
    } catch (const std::exception& error) {
        log.ErrorReport(name, step.Statement(), RuntimeError(runtime_errors::kApplicationDefined, error.what()));
    }
    return false;
}

} // namespace velmora
