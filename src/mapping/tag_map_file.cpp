#include "mapping/tag_map_file.h"

#include "log/file_error.h"
#include "platform/paths.h"
#include "platform/utf8.h"

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>

namespace velmora {

namespace {

std::string ReadWholeFile(const std::string& path)
{
    std::ifstream file(PathFromUtf8(path), std::ios::binary);
    std::string content((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (!file.is_open() || file.bad())
        throw RuntimeError(runtime_errors::kPathFileAccess, "The mapping file [" + path + "] cannot be read");
    return content;
}

/// Takes the first line from `text`, without its end (CR LF, LF or CR); nullopt at the end of the text.
std::optional<std::string_view> TakeLine(std::string_view& text)
{
    if (text.empty())
        return std::nullopt;
    const std::size_t end = text.find_first_of("\r\n");
    const std::string_view line = text.substr(0, end);
    const std::string_view rest = end == std::string_view::npos ? std::string_view() : text.substr(end);
    text = rest.substr(rest.starts_with("\r\n") ? 2 : rest.empty() ? 0 : 1);
    return line;
}

void ReadEntries(std::string_view text, TagMap& map)
{
    while (const std::optional<std::string_view> line = TakeLine(text)) {
        const std::size_t tab = line->find('\t');
        // The first line that is no mapping ends the table: what follows may be the user's notes.
        if (!line->empty() && tab == std::string_view::npos)
            return;
        map.Add({});
        if (line->empty())
            throw RuntimeError(runtime_errors::kInvalidProcedureCall, "Invalid procedure call or argument");
        map.Entry(map.UpperBound()) = {std::string(line->substr(0, tab)), std::string(line->substr(tab + 1))};
    }
}

void WriteWholeFile(const std::string& path, std::string_view content)
{
    std::FILE* file = OpenFileStream(path, "wb");
    if (file == nullptr)
        throw FileError("The mapping file", path, "cannot be written", errno);
    const bool isWritten = std::fwrite(content.data(), 1, content.size(), file) == content.size();
    const int writeError = errno;
    if (std::fclose(file) != 0 || !isWritten)
        throw FileError("The mapping file", path, "cannot be written", isWritten ? errno : writeError);
}

constexpr std::string_view kSaveProcedure = "btnMappingSave_Click";

} // namespace

bool velLoadTagMapping(Job& job, TagMap& map, const std::string& path)
{
    bool found = false;
    const bool completed = Procedure(job, "velLoadTagMapping", path, [&](Step& step) {
        const std::string file = NativePath(path);
        found = FileExists(file);
        if (!found) {
            job.log.ProtocolAppend("Tag-mapping file was not found!");
            return;
        }
        map.Clear();
        step("Open file for input.");
        const std::string content = ReadWholeFile(file);
        ReadEntries(WithoutByteOrderMark(content), map);
    });
    job.host.ControlsChanged();
    return found && completed;
}

bool PrepareSaving(Job& job, TagMap& map)
{
    job.log.Trace(std::string(kSaveProcedure).append(": "));
    map.Compact();
    job.host.ControlsChanged();
    return map.UpperBound() > 0;
}

bool SaveTagMapping(Job& job, const TagMap& map, const std::string& path)
{
    job.controls.txtFILE_MAPPING.text = path;
    Step step(job.log, kSaveProcedure);
    step("Write mapping into file");
    std::string content;
    for (std::size_t number = 1; number <= map.UpperBound(); ++number)
        content.append(map.Entry(number).tag).append(1, '\t').append(map.Entry(number).name).append("\r\n");
    try {
        WriteWholeFile(NativePath(path), content);
    } catch (const RuntimeError& error) {
        job.log.ErrorReport(kSaveProcedure, step.Statement(), error);
        return false;
    }
    job.host.ControlsChanged();
    return true;
}

} // namespace velmora
