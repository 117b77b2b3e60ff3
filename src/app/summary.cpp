#include "app/summary.h"

#include "app/json_writer.h"
#include "log/passwords.h"
#include "log/runtime_error.h"
#include "platform/paths.h"
#include "settings/command_line.h"
#include "settings/options.h"
#include "xml_export/output_file.h"

#include <algorithm>
#include <cstdio>

namespace velmora {

namespace {

constexpr std::string_view kSummary = "The summary";

/// What every summary begins with.
constexpr std::string_view kBeginning = "{\n  \"program\": \"velmora\"";

class OptionWriter {
public:
    OptionWriter(const Option& option, const Controls& controls, JsonWriter& json)
        : option_(option), controls_(controls), json_(json), name_(Listed(option.words).front())
    {
        if (name_.starts_with('+'))
            name_.remove_prefix(1);
        if (name_.ends_with('='))
            name_.remove_suffix(1);
    }

    void operator()(CheckControl Controls::*member) const { json_.Flag(name_, (controls_.*member).Checked()); }
    void operator()(TextControl Controls::*member) const
    {
        json_.Text(name_, WithoutPasswords((controls_.*member).text));
    }
    void operator()(ComboControl Controls::*member) const
    {
        json_.Text(name_, Listed(option_.value, '|').at((controls_.*member).selected));
    }

private:
    const Option& option_;
    const Controls& controls_;
    JsonWriter& json_;
    std::string_view name_;
};

void WriteOptions(const Controls& controls, JsonWriter& json)
{
    const Controls shown = ShownControls(controls);
    json.BeginObject("options");
    for (const Option& option : Options())
        std::visit(OptionWriter(option, shown, json), option.control);
    json.EndObject();
}

std::string_view Word(ExitStatus status)
{
    switch (status) {
    case ExitStatus::Success:
        return "complete";
    case ExitStatus::Error:
        return "failed";
    case ExitStatus::NothingToConvert:
        return "nothing-to-convert";
    case ExitStatus::Incomplete:
        return "incomplete";
    case ExitStatus::Cancelled:
        return "cancelled";
    }
    return {};
}

std::string_view Word(FileReport::End end)
{
    switch (end) {
    case FileReport::End::NotTried:
        return "not-tried";
    case FileReport::End::Converted:
        return "converted";
    case FileReport::End::Skipped:
        return "skipped";
    case FileReport::End::Unreadable:
        return "unreadable";
    case FileReport::End::Failed:
        return "failed";
    case FileReport::End::Cancelled:
        return "cancelled";
    }
    return {};
}

void WriteValues(const FileReport& file, JsonWriter& json)
{
    if (!file.values)
        return json.Null("values");
    json.BeginObject("values");
    json.Number("offered", file.values->offered);
    json.Number("stored", file.values->offered - file.values->values);
    json.Number("lost", file.values->values);
    json.BeginArray("lostAt");
    for (const LeftOut& group : file.values->groups) {
        json.BeginObject();
        json.Text("path", group.path);
        json.Text("reason", Describe(group.reason));
        json.Number("count", group.count);
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
}

void WriteFile(const FileReport& file, JsonWriter& json)
{
    json.BeginObject();
    json.Text("path", WithoutPasswords(file.path));
    json.Text("status", Word(file.end));
    json.Seconds("seconds", file.milliseconds);
    if (file.bytes)
        json.Number("bytes", static_cast<std::int64_t>(*file.bytes));
    else
        json.Null("bytes");
    json.Number("records", file.records);
    WriteValues(file, json);
    json.Text("problem", file.problem);
    json.EndObject();
}

void WriteTable(const TableReport& table, const DatabaseContents& contents, JsonWriter& json)
{
    json.BeginObject();
    json.Text("name", table.table);
    json.Number("records", table.records);
    json.Number("newColumns", table.newColumns);
    json.Number("widenedColumns", table.widenedColumns);
    json.BeginArray("columns");
    const auto found = std::ranges::find(contents.tables, table.table, &DatabaseContents::Table::name);
    if (found != contents.tables.end())
        for (const DatabaseContents::Column& column : found->columns) {
            json.BeginObject();
            json.Text("name", column.name);
            json.Text("type", column.type);
            json.EndObject();
        }
    json.EndArray();
    json.EndObject();
}

void WriteFindings(const Findings& findings, JsonWriter& json)
{
    json.BeginArray("warnings");
    for (const Findings::Warning& warning : findings.warnings) {
        json.BeginObject();
        json.Text("kind", warning.kind);
        json.Number("count", warning.count);
        json.Text("text", warning.text);
        json.EndObject();
    }
    json.EndArray();
    json.BeginArray("errors");
    for (const Findings::Error& error : findings.errors) {
        json.BeginObject();
        json.Number("number", error.number);
        json.Text("text", error.text);
        json.EndObject();
    }
    json.EndArray();
}

/// Whether what stands at `path` may be replaced by a summary: nothing, or one.
bool IsReplaceable(const std::string& path)
{
    std::FILE* file = OpenFileStream(path, "rb");
    if (file == nullptr)
        return true; // nothing, or what cannot be replaced anyway
    std::string begin(kBeginning.size(), '\0');
    begin.resize(std::fread(begin.data(), 1, begin.size(), file));
    std::fclose(file);
    return begin.empty() || begin == kBeginning;
}

} // namespace

std::string SummaryText(const SummaryFacts& facts)
{
    JsonWriter json;
    json.BeginObject();
    json.Text("program", "velmora");
    json.Text("version", facts.version);
    json.Number("status", static_cast<int>(facts.status));
    json.Text("outcome", Word(facts.status));
    json.Seconds("seconds", facts.milliseconds);
    WriteOptions(facts.controls, json);
    json.BeginArray("files");
    for (const FileReport& file : facts.outcome.files)
        WriteFile(file, json);
    json.EndArray();
    json.BeginArray("tables");
    for (const TableReport& table : facts.outcome.tables)
        WriteTable(table, facts.contents, json);
    json.EndArray();
    WriteFindings(facts.findings, json);
    json.EndObject();
    return json.Take();
}

std::optional<std::string> UnfitSummary(const std::string& path)
{
    const auto refusal = [](const std::string& reason) { return reason + "; nothing was written"; };
    if (!IsReplaceable(NativePath(path)))
        return refusal("The summary \"" + path + "\" is there already and is none of velmora's; name another file");
    try {
        const OutputFile attempt(path, kSummary);
    } catch (const RuntimeError& error) {
        return refusal(error.what());
    }
    return std::nullopt;
}

void WriteSummary(const std::string& path, std::string_view text)
{
    OutputFile file(path, kSummary);
    file.Write(text);
    file.Close();
    file.MoveIntoPlace(IsReplaceable(NativePath(path)));
}

} // namespace velmora
