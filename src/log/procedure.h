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
        TraceBuilt();
    }
    /// Whether any statement was set.
    [[nodiscard]] bool IsSet() const noexcept { return build_ != nullptr || !what_.empty(); }
    /// Sets the statement to a text that has been traced already.
    void SetTraced(std::string what);
    /// The statement that the error report shows.
    [[nodiscard]] std::string Statement() const;

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

namespace procedure_detail {

void TraceEntry(ProtocolLog& log, std::string_view name, std::string_view argument);
/// Reports the exception that is being handled.
void ReportCurrentException(ProtocolLog& log, std::string_view name, const Step& step);

template <class Argument, class Body>
bool Run(ProtocolLog& log, std::string_view name, const Argument& argument, Body& body)
{
    if (log.Flags().blAbort)
        return false;
    Step step(log, name);
    try {
        body(step);
        return true;
    } catch (const std::exception&) {
        // What fails before its first step is told by what it was given.
        if (!step.IsSet())
            step.SetTraced(std::string(argument()));
        ReportCurrentException(log, name, step);
        return false;
    }
}

} // namespace procedure_detail

/// Runs `body(Step&)` as the procedure `name`: writes the trace line (name, ": ", the first 1,000 bytes of `argument`),
/// returns at once when the run is aborted, and turns whatever the body throws into the error report, which aborts the
/// run; until the body's first step the report shows `argument`. True when the body ran to its end.
template <class Body>
bool Procedure(ProtocolLog& log, std::string_view name, std::string_view argument, Body&& body)
{
    if (log.IsTracing())
        procedure_detail::TraceEntry(log, name, argument);
    return procedure_detail::Run(
        log, name, [argument] { return argument; }, body);
}

/// The same with an argument that is built only when it is traced: what runs once per element gives it so.
template <std::invocable Argument, class Body>
bool Procedure(ProtocolLog& log, std::string_view name, const Argument& argument, Body&& body)
{
    if (log.IsTracing())
        procedure_detail::TraceEntry(log, name, argument());
    return procedure_detail::Run(log, name, argument, body);
}

} // namespace velmora
