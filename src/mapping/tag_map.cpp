#include "mapping/tag_map.h"

#include "log/runtime_error.h"
#include "platform/file_changes.h"
#include "platform/paths.h"
#include "platform/utf8.h"
#include "platform/utf8_converter.h"
#include "settings/job.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <system_error>

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

/// The five bytes that windows-1252 has no character for become control characters, as on Windows itself.
std::string FromWindows1252(std::string_view bytes)
{
    constexpr std::string_view kWithoutCharacter = "\x81\x8D\x8F\x90\x9D";
    Utf8Converter converter("CP1252");
    std::string text;
    while (!bytes.empty()) {
        const std::size_t known = std::min(bytes.find_first_of(kWithoutCharacter), bytes.size());
        static_cast<void>(converter.Convert(bytes.substr(0, known), text));
        bytes.remove_prefix(known);
        if (bytes.empty())
            break;
        text.append({'\xC2', bytes.front()}); // U+0081 to U+009D in UTF-8
        bytes.remove_prefix(1);
    }
    return text;
}

std::optional<std::string> Converted(const char* charset, std::string_view bytes)
{
    Utf8Converter converter(charset);
    std::string text;
    if (!converter.Convert(bytes, text) || !converter.Finish(text))
        return std::nullopt;
    return text;
}

/// The text of a mapping file, without a byte order mark.
std::string Text(Job& job, const std::string& path, std::string_view bytes)
{
    if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
        if (const auto text = Converted("UTF-16", bytes))
            return *text;
        throw RuntimeError(runtime_errors::kPathFileAccess,
                           "The mapping file [" + path + "] begins with the mark of UTF-16 and is none");
    }
    bytes = WithoutByteOrderMark(bytes);
    if (Converted("UTF-8", bytes))
        return std::string(bytes);
    job.log.Warn("mapping-not-utf8", "Tag-mapping file is not UTF-8, read as windows-1252: " + path);
    return FromWindows1252(bytes);
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

constexpr std::string_view kSaveProcedure = "btnMappingSave_Click";

} // namespace

void TagMap::Remove(std::size_t number)
{
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(number - 1));
}

void TagMap::Compact()
{
    std::erase_if(entries_, [](const MappingEntry& entry) { return entry.tag.empty() && entry.name.empty(); });
}

std::string_view TagMap::Lookup(std::string_view tag) const noexcept
{
    const auto entry =
        std::find_if(entries_.begin(), entries_.end(), [tag](const MappingEntry& e) { return e.tag == tag; });
    return entry == entries_.end() || entry->name.empty() ? tag : std::string_view(entry->name);
}

bool velLoadTagMapping(Job& job, TagMap& map, const std::string& path)
{
    bool found = false;
    const auto load = [&](Step& step) {
        const std::string file = NativePath(path);
        found = FileExists(file);
        if (!found) {
            job.log.Warn("mapping-not-found", "Tag-mapping file was not found!");
            return;
        }
        map.Clear();
        step("Open file for input.");
        ReadEntries(Text(job, file, ReadWholeFile(file)), map);
    };
    // No run is going on that could end with it, and how the last one ended does not matter to it.
    job.settings.blAbort = false;
    const bool completed = Guarded(job.log, [&] { Procedure(job, "velLoadTagMapping", path, load); });
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
    const std::string file = NativePath(path);
    if (const std::error_code failure = ReplaceFile(file, content)) {
        job.log.ErrorReport(kSaveProcedure, step.Statement(),
                            FileError("The mapping file", file, "cannot be written", failure.value()));
        return false;
    }
    job.host.ControlsChanged();
    return true;
}

} // namespace velmora
