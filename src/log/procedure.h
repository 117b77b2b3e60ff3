#pragma once

#include "log/protocol_log.h"

#include <concepts>
#include <cstddef>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace velmora {

/// The step that a procedure is at: traced, and shown by the error report. A text that costs something to build is
/// given as a callable: it runs when the step is traced, and once more after an error, for the report.
class Step {
public:
    Step(ProtocolLog& log, std::string_view procedureName) : log_(log), name_(procedureName) {}
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;

    /// Sets the current statement to the procedure's name, ": " and `what`, and traces `what`.
    void operator()(std::string_view what);
    /// The same for a text of the program, which is not copied.
    template <std::size_t N>
    void operator()(const char (&literal)[N])
    {
        Keep(std::string_view(literal, N - 1));
    }
    /// The same for a text that is built only when somebody reads it. The callable itself is copied and kept until the
    /// next step or the report, which is written when the procedure's body has already been left: let it capture by
    /// value (pointers, numbers, views), and by reference only what outlives the procedure.
    template <std::invocable Text>
    void operator()(const Text& text)
    {
        static_assert(
            std::is_trivially_copyable_v<Text> && sizeof(Text) <= kRoom && alignof(Text) <= alignof(void*),
            "a step's callable holds a few pointers, numbers and views, so that setting a step costs nothing");
        new (room_) Text(text);
        build_ = [](const std::byte* room) {
            return std::string(std::string_view((*std::launder(reinterpret_cast<const Text*>(room)))()));
        };
        if (log_.IsTracing())
            TraceBuilt();
    }
    /// Whether any statement was set.
    [[nodiscard]] bool IsSet() const noexcept { return build_ != nullptr || !what_.empty(); }
    /// Sets the statement to a text that has been traced already.
    void SetTraced(std::string what);
    /// The statement that the error report shows.
    [[nodiscard]] std::string Statement() const;
    [[nodiscard]] std::string_view ProcedureName() const noexcept { return name_; }

private:
    static constexpr std::size_t kRoom = 64;

    void Keep(std::string_view what);
    void TraceBuilt();

    ProtocolLog& log_;
    std::string_view name_;
    std::string_view what_; ///< views a literal or copy_
    std::string copy_;
    std::string (*build_)(const std::byte* room) = nullptr; ///< when the last step was a callable, which lies in room_
    alignas(void*) std::byte room_[kRoom];
};

/// Throws the exception that is being handled once more, as a RuntimeError that bears a place: a RuntimeError itself,
/// another one in a new one.
[[noreturn]] void RethrowWithPlace(const Step& step);

namespace procedure_detail {

void TraceEntry(ProtocolLog& log, std::string_view name, std::string_view argument);

template <class Argument, class Body>
void Run(ProtocolLog& log, std::string_view name, const Argument& argument, Body& body)
{
    ThrowIfAborted(log.Flags());
    Step step(log, name);
    try {
        body(step);
    } catch (const std::exception&) {
        // What fails before its first step is told by what it was given.
        if (!step.IsSet())
            step.SetTraced(std::string(argument()));
        RethrowWithPlace(step);
    }
}

} // namespace procedure_detail

/// Runs `body(Step&)` as the procedure `name`: writes the trace line (name, ": ", the first 1,000 bytes of `argument`),
/// and goes no further when the run is aborted. An error passes, and takes the name and the current statement of the
/// innermost procedure with it; until the body's first step that is `argument`.
template <class Body>
void Procedure(ProtocolLog& log, std::string_view name, std::string_view argument, Body&& body)
{
    if (log.IsTracing())
        procedure_detail::TraceEntry(log, name, argument);
    procedure_detail::Run(
        log, name, [argument] { return argument; }, body);
}

/// The same with an argument that is built only when it is traced: what runs once per element gives it so.
template <std::invocable Argument, class Body>
void Procedure(ProtocolLog& log, std::string_view name, const Argument& argument, Body&& body)
{
    if (log.IsTracing())
        procedure_detail::TraceEntry(log, name, argument());
    procedure_detail::Run(log, name, argument, body);
}

/// The guard of a run: calls `body()`, and stops what unwinds out of it. An error is reported as its place says, and
/// aborts the run; one that no procedure has let pass is none of the guard's, and passes. True when the run may go on.
///
/// The steps after one that failed are called all the same: their procedures write their trace lines, and no more.
template <class Body>
bool Guarded(ProtocolLog& log, Body&& body)
{
    try {
        body();
    } catch (const Aborted&) {
        log.Flags().blAbort = true;
    } catch (const RuntimeError& error) {
        if (!error.MetAt())
            throw;
        log.ErrorReport(error);
    }
    return !log.Flags().blAbort;
}

} // namespace velmora
