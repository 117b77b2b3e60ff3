#include "driver/conversion.h"

#include "jet/base/value_text.h"
#include "jet/connection.h"
#include "settings/command_line.h"

#include <algorithm>

namespace velmora::testing {
namespace {

std::vector<std::string> TableNames(jet::Connection& connection)
{
    std::vector<std::string> names;
    for (auto rows = connection.OpenSchema(jet::SchemaKind::Tables, {"", "", "", "TABLE"}); !rows.Eof();
         rows.MoveNext())
        names.push_back(rows.Text("TABLE_NAME"));
    std::ranges::sort(names);
    return names;
}

/// The names of the columns, then the records.
std::vector<std::string> Lines(jet::Connection& connection, std::string_view table)
{
    jet::Recordset records = connection.OpenTable(table);
    std::vector<std::string> lines(1);
    for (std::size_t field = 0; field < records.FieldCount(); ++field)
        lines[0] += (field ? "|" : "") + records.FieldName(field);
    for (records.MoveFirst(); !records.Eof(); records.MoveNext()) {
        std::string& line = lines.emplace_back();
        for (std::size_t field = 0; field < records.FieldCount(); ++field)
            line += (field ? "|" : "") + jet::ToText(records.Get(field));
    }
    return lines;
}

std::string RelationsOf(jet::Connection& connection)
{
    std::vector<std::string> lines;
    for (auto rows = connection.OpenSchema(jet::SchemaKind::ForeignKeys); !rows.Eof(); rows.MoveNext())
        lines.push_back(rows.Text("FK_TABLE_NAME") + "." + rows.Text("FK_COLUMN_NAME") + " -> " +
                        rows.Text("PK_TABLE_NAME") + "." + rows.Text("PK_COLUMN_NAME") + "\n");
    std::ranges::sort(lines);
    std::string text;
    for (const std::string& line : lines)
        text += line;
    return text;
}

} // namespace

Conversion::Conversion() : job(host), batch(job, map, {folder_.Path().string(), folder_.Path().string()})
{
    Options("+quiet");
    job.controls.txtTHREADS.text = TestThreads();
    job.settings.threadsFromBytes = 0;
    job.settings.segmentBytes = 40;
    job.controls.txtFILE_XML.text = (folder_ / "*.xml").string();
    job.controls.txtFILE_MDB.text = Target().string();
}

Conversion::~Conversion()
{
    if (checksItself_ && std::filesystem::is_regular_file(Target())) {
        EXPECT_SOUND(Target());
    }
}

Conversions::~Conversions()
{
    std::vector<std::filesystem::path> targets;
    for (const Conversion& conversion : all_)
        if (std::filesystem::exists(conversion.Target()))
            targets.push_back(conversion.Target());
    EXPECT_SOUND(targets);
}

Conversion& Conversions::Next()
{
    all_.emplace_back().checksItself_ = false;
    return all_.back();
}

Conversion& Conversion::Xml(std::string_view document, std::string_view name)
{
    WriteFile(folder_ / name, document);
    return *this;
}

Conversion& Conversion::Options(std::string_view words)
{
    ApplyCommandLine(words, job.controls, [](std::string_view token) { ADD_FAILURE() << "no such option: " << token; });
    job.settings.blDebug = job.controls.chkDebug.Checked();
    job.controls.UpdateEnabled();
    return *this;
}

Conversion& Conversion::Map(std::string tag, std::string name)
{
    map.Add({std::move(tag), std::move(name)});
    job.controls.chkEnableTagMapping.value = CheckState::Checked;
    return *this;
}

Conversion& Conversion::Text()
{
    job.controls.txtFILE_TXT.text = Path("text").string();
    return Options("delimiter=;");
}

RunOutcome Conversion::Run()
{
    host.lines.clear();
    host.errors.clear();
    return batch.btnConvert_Click();
}

std::string Conversion::Tables() const
{
    std::string text;
    for (const std::string& name : TableNames(*jet::Connection::Open(Target())))
        text += name + " ";
    return text;
}

std::string Conversion::Dump(std::string_view table) const
{
    const auto connection = jet::Connection::Open(Target());
    if (!std::ranges::count(TableNames(*connection), table))
        return "no table " + std::string(table);
    std::string text;
    for (const std::string& line : Lines(*connection, table))
        text += line + "\n";
    return text;
}

std::string Conversion::Relations() const
{
    return RelationsOf(*jet::Connection::Open(Target()));
}

std::string Conversion::Content() const
{
    const auto connection = jet::Connection::Open(Target());
    std::string text;
    for (const std::string& table : TableNames(*connection)) {
        const std::vector<std::string> lines = Lines(*connection, table);
        text += table + "(" + lines[0] + "):";
        for (std::size_t i = 1; i < lines.size(); ++i)
            text += (i > 1 ? " / " : " ") + lines[i];
        text += "\n";
    }
    return text + RelationsOf(*connection);
}

std::string Conversion::TextFile(std::string_view table) const
{
    std::string text = ReadFile(Path("text") / std::string(table).append(".txt"));
    for (std::size_t at = 0; (at = text.find("\r\n", at)) != text.npos;)
        text.replace(at, 2, "~");
    return text;
}

std::string Conversion::Losses() const
{
    std::string text;
    for (const std::string& line : host.lines)
        if (line.starts_with("Not imported") || line.starts_with("  "))
            text += line + "\n";
    return text;
}

int Conversion::Said(std::string_view text) const
{
    return static_cast<int>(std::count_if(host.lines.begin(), host.lines.end(),
                                          [&](const std::string& line) { return line.find(text) != line.npos; }));
}

std::string Conversion::Error() const
{
    return host.errors.empty() ? "" : std::to_string(host.errors.back().first) + " " + host.errors.back().second;
}

std::vector<std::string> Parts(std::string_view text)
{
    std::vector<std::string> parts;
    for (std::size_t begin = 0, end; begin < text.size(); begin = end + 1) {
        end = std::min(text.find('|', begin), text.size());
        parts.emplace_back(text.substr(begin, end - begin));
    }
    return parts;
}

} // namespace velmora::testing
