#include "driver/conversion.h"

#include "jet/base/value_codec.h"
#include "jet/connection.h"
#include "settings/command_line.h"

#include <algorithm>

namespace velmora::testing {

Conversion::Conversion() : job(host), batch(job, map, {folder_.Path().string(), folder_.Path().string()})
{
    Options("+quiet");
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

RunOutcome Conversion::Run()
{
    host.lines.clear();
    host.errors.clear();
    return batch.btnConvert_Click();
}

bool Conversion::HasTable(std::string_view table) const
{
    return (" " + Tables()).find(" " + std::string(table) + " ") != std::string::npos;
}

std::string Conversion::Tables() const
{
    const auto connection = jet::Connection::Open(Target());
    std::vector<std::string> names;
    for (auto rows = connection->OpenSchema(jet::SchemaKind::Tables, {"", "", "", "TABLE"}); !rows.Eof();
         rows.MoveNext())
        names.push_back(rows.Text("TABLE_NAME"));
    std::sort(names.begin(), names.end());
    std::string text;
    for (const std::string& name : names)
        text += name + " ";
    return text;
}

std::string Conversion::Dump(std::string_view table) const
{
    if (!HasTable(table))
        return "no table " + std::string(table);
    const auto connection = jet::Connection::Open(Target());
    jet::Recordset records = connection->OpenTable(table);
    std::string text;
    for (std::size_t field = 0; field < records.FieldCount(); ++field)
        text += (field ? "|" : "") + records.FieldName(field);
    text += "\n";
    for (records.MoveFirst(); !records.Eof(); records.MoveNext()) {
        for (std::size_t field = 0; field < records.FieldCount(); ++field)
            text += (field ? "|" : "") + jet::ToText(records.Get(field));
        text += "\n";
    }
    return text;
}

std::string Conversion::Relations() const
{
    const auto connection = jet::Connection::Open(Target());
    std::vector<std::string> lines;
    for (auto rows = connection->OpenSchema(jet::SchemaKind::ForeignKeys); !rows.Eof(); rows.MoveNext())
        lines.push_back(rows.Text("FK_TABLE_NAME") + "." + rows.Text("FK_COLUMN_NAME") + " -> " +
                        rows.Text("PK_TABLE_NAME") + "." + rows.Text("PK_COLUMN_NAME") + "\n");
    std::sort(lines.begin(), lines.end());
    std::string text;
    for (const std::string& line : lines)
        text += line;
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

} // namespace velmora::testing
