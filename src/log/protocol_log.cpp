#include "log/protocol_log.h"

#include "log/passwords.h"
#include "log/runtime_error.h"
#include "platform/paths.h"

#include <cerrno>
#include <utility>

namespace velmora {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::size_t kBufferBytes = std::size_t{256} * 1024;
constexpr std::int64_t kFlushMilliseconds = 1000;

RuntimeError CannotWrite(const std::string& path, int systemError)
{
    return FileError("The protocol file", path, "cannot be written", systemError);
}

} // namespace

ProtocolLog::ProtocolLog(RunFlags& flags, Host& host, std::function<std::string()> commandLine)
    : flags_(flags), host_(host), commandLine_(std::move(commandLine))
{
}

ProtocolLog::~ProtocolLog()
{
    if (file_ != nullptr)
        std::fclose(file_);
}

void ProtocolLog::OpenFile(const std::string& path)
{
    CloseFile();
    path_ = NativePath(path);
    file_ = OpenFileStream(path_, "ab");
    if (file_ == nullptr)
        throw CannotWrite(path_, errno);
    std::setvbuf(file_, nullptr, _IOFBF, kBufferBytes);
    flushedAt_ = CoarseMilliseconds();
}

void ProtocolLog::CloseFile()
{
    if (file_ == nullptr)
        return;
    if (std::fclose(std::exchange(file_, nullptr)) != 0)
        ReportWriteError();
}

void ProtocolLog::ProtocolAppend(std::string_view text, bool alsoToFile)
{
    std::string line(clock_.Now());
    line += ' ';
    line += WithoutPasswords(text);
    if (alsoToFile)
        WriteProtocolFile(line);
    host_.ProtocolLineAdded(line);
    lines_.push_back(std::move(line));
    textIsCurrent_ = false;
}

void ProtocolLog::Warn(std::string_view kind, std::string_view text, std::int64_t count)
{
    ProtocolAppend(text);
    findings_.warnings.push_back({std::string(kind), count, WithoutPasswords(text)});
}

void ProtocolLog::WriteTraceLine(std::string_view text)
{
    WriteLine(clock_.Now(), "    ", WithoutPasswords(text), false);
}

void ProtocolLog::WriteProtocolFile(std::string_view text)
{
    if (file_ == nullptr && keepsEarlier_)
        earlier_.emplace_back(text);
    WriteLine({}, {}, text, true);
}

void ProtocolLog::WriteEarlierLines()
{
    keepsEarlier_ = false;
    for (const std::string& line : std::exchange(earlier_, {}))
        WriteLine({}, {}, line, true);
}

void ProtocolLog::WriteLine(std::string_view stamp, std::string_view gap, std::string_view text, bool flush)
{
    if (file_ == nullptr)
        return;
    for (const std::string_view part : {stamp, gap, text, kLineEnd})
        if (!part.empty())
            std::fwrite(part.data(), 1, part.size(), file_);
    const std::int64_t now = CoarseMilliseconds();
    if (flush || now - flushedAt_ >= kFlushMilliseconds) {
        std::fflush(file_);
        flushedAt_ = now;
    }
    if (std::ferror(file_) != 0)
        ReportWriteError();
}

void ProtocolLog::ReportWriteError()
{
    const RuntimeError error = CannotWrite(path_, errno);
    // Closed first: the report itself writes to the file that is open.
    if (file_ != nullptr)
        std::fclose(std::exchange(file_, nullptr));
    ErrorReport("WriteProtocolFile", "WriteProtocolFile: " + path_, error);
}

void ProtocolLog::ErrorReport(std::string_view procedureName, std::string_view statement, const RuntimeError& error)
{
    ++errorCount_;
    const std::string number = std::to_string(error.Number());
    const std::string description = WithoutPasswords(error.what());
    findings_.errors.push_back({error.Number(), description});
    const std::string function(procedureName);
    const std::string reached = WithoutPasswords(statement);

    ProtocolAppend("Error: " + reached, false);
    if (file_ != nullptr || keepsEarlier_) {
        const std::string rule(43, '-');
        const std::pair<std::string_view, std::string> entries[] = {
            {"TIME        : ", std::string(clock_.Now())},
            {"ERROR #     : ", number},
            {"DESCRIPTION : ", description},
            {"FUNCTION    : ", function},
            {"STATEMENT   : ", reached},
            {"PARAMETERS  : ", commandLine_()},
        };
        std::string block = rule;
        for (const auto& [label, value] : entries)
            block.append(kLineEnd).append(label).append(value);
        WriteProtocolFile(block.append(kLineEnd).append(rule));
    }
    host_.ErrorReported(error.Number(), description);
    if (!flags_.blQuiet)
        host_.ShowMessage("An Error has occured!\r\n\r\nError: " + number + ": " + description +
                              "\r\n\r\nFunction: " + function + ": \r\n\r\nDebug: " + reached,
                          Icon::Critical);
    flags_.blAbort = true;
}

const std::string& ProtocolLog::Text() const
{
    if (!textIsCurrent_) {
        text_.clear();
        for (auto line = lines_.rbegin(); line != lines_.rend(); ++line)
            text_.append(*line).append(kLineEnd);
        textIsCurrent_ = true;
    }
    return text_;
}

void ProtocolLog::ClearText()
{
    lines_.clear();
    textIsCurrent_ = false;
    errorCount_ = 0;
}

} // namespace velmora
