#include "log/procedure.h"

#include "platform/temporary_file.h"
#include "platform/utf8.h"

#include <utility>

namespace velmora {

namespace {

/// A document may nest its elements without end, and so may the path that a trace line shows.
constexpr std::size_t kMaxTracedArgument = 1000;

} // namespace

void Step::operator()(std::string_view what)
{
    copy_ = what;
    Keep(copy_);
}

void Step::SetTraced(std::string what)
{
    copy_ = std::move(what);
    what_ = copy_;
    build_ = nullptr;
}

void Step::Keep(std::string_view what)
{
    what_ = what;
    build_ = nullptr;
    log_.Trace(what_);
}

void Step::TraceBuilt()
{
    log_.Trace(build_(room_));
}

std::string Step::Statement() const
{
    return std::string(name_) + ": " + (build_ != nullptr ? build_(room_) : std::string(what_));
}

namespace procedure_detail {

void TraceEntry(ProtocolLog& log, std::string_view name, std::string_view argument)
{
    log.Trace(std::string(name) + ": " + std::string(CutUtf8(argument, kMaxTracedArgument)));
}

} // namespace procedure_detail

void RethrowWithPlace(const Step& step)
{
    const auto place = [&] { return RuntimeError::Place{std::string(step.ProcedureName()), step.Statement()}; };
    try {
        throw;
    } catch (RuntimeError& error) {
        if (!error.MetAt())
            error.NotePlace(place());
        throw;
    } catch (const TemporaryFileFull& error) {
        throw RuntimeError(runtime_errors::kOutOfMemory, error.what(), place());
    } catch (const std::bad_alloc&) {
        throw RuntimeError(runtime_errors::kOutOfMemory, "Out of memory", place());
    } catch (const std::exception& error) {
        throw RuntimeError(runtime_errors::kApplicationDefined, error.what(), place());
    }
}

} // namespace velmora
