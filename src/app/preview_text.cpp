#include "app/preview_text.h"

#include "driver/database_size.h"
#include "platform/terminal.h"
#include "platform/utf8.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora {

namespace {

std::string Counted(std::int64_t count, std::string_view what)
{
    return std::to_string(count) + " " + std::string(what) + (count == 1 ? "" : "s");
}

/// The tables that `table` refers to.
std::string Parents(const DatabaseContents& contents, const std::string& table)
{
    std::string names;
    for (const DatabaseContents::Relation& relation : contents.relations)
        if (relation.table == table)
            names.append(names.empty() ? "" : ", ").append(Printable(relation.referencedTable));
    return names;
}

void AppendColumns(std::string& text, const TableReport& report, const std::vector<DatabaseContents::Column>& columns)
{
    std::size_t nameWidth = 0;
    std::size_t typeWidth = 0;
    for (const DatabaseContents::Column& column : columns) {
        nameWidth = std::max(nameWidth, CountCharacters(Printable(column.name)));
        typeWidth = std::max(typeWidth, column.type.size());
    }
    for (const DatabaseContents::Column& column : columns) {
        const std::string name = Printable(column.name);
        text.append("  ").append(name).append(nameWidth - CountCharacters(name) + 2, ' ').append(column.type);
        if (const auto longest = report.longest.find(column.name); longest != report.longest.end())
            text.append(typeWidth - column.type.size() + 2, ' ')
                .append("longest ")
                .append(std::to_string(longest->second));
        text += '\n';
    }
}

void AppendTable(std::string& text, const TableReport& report, const Preview& preview)
{
    text.append("\n").append(Printable(report.table));
    const bool wasThere = preview.tablesBefore.contains(report.table);
    text.append(wasThere ? ", there already: " : ", new: ");
    text += Counted(report.records, "record");
    if (const std::string parents = Parents(preview.contents, report.table); !parents.empty())
        text.append(", belongs to ").append(parents);
    if (wasThere && report.newColumns > 0)
        text.append(", ").append(Counted(report.newColumns, "new column"));
    if (report.widenedColumns > 0)
        text.append(", ").append(Counted(report.widenedColumns, "column")).append(" widened");
    text += '\n';
    const std::vector<DatabaseContents::Table>& tables = preview.contents.tables;
    const auto found = std::ranges::find(tables, report.table, &DatabaseContents::Table::name);
    if (found != tables.end())
        AppendColumns(text, report, found->columns);
}

void AppendLines(std::string& text, std::string_view heading, std::span<const std::string> lines)
{
    if (lines.empty())
        return;
    text.append("\n").append(heading).append(":\n");
    for (const std::string& line : lines)
        text.append("  ").append(Printable(line)).append("\n");
}

std::string_view WhatHelps(LossReason reason, const ConversionSettings& settings)
{
    if (reason == LossReason::AttributesOff)
        return "+attributes imports them";
    if (settings.blComplete)
        return {};
    return "+complete imports them";
}

std::vector<std::string> LeftBehind(const RunOutcome& outcome, const ConversionSettings& settings)
{
    std::vector<std::string> lines;
    for (const FileReport& file : outcome.files)
        if (file.end == FileReport::End::Unreadable)
            lines.push_back(file.path + ": " + file.problem);
    for (const LeftOut& group : outcome.leftOut.groups) {
        std::string line = group.path + ": " + Counted(group.count, "value") + ", ";
        line.append(Describe(group.reason)).append(", ").append(group.sample);
        if (const std::string_view help = WhatHelps(group.reason, settings); !help.empty())
            line.append("; ").append(help);
        lines.push_back(std::move(line));
    }
    if (outcome.recordsWithoutText > 0)
        lines.push_back(Counted(outcome.recordsWithoutText, "record") + " not in a text file");
    return lines;
}

void AppendSize(std::string& text, const Preview& preview)
{
    if (preview.maxSizeBytes == 0)
        return;
    text.append("\nThe database would have ").append(SizeText(preview.sizeBytes)).append("\n");
    if (const auto warning = SizeWarning(preview.sizeBytes, preview.maxSizeBytes))
        text.append(*warning).append("\n");
}

std::string_view Verdict(ExitStatus status)
{
    switch (status) {
    case ExitStatus::Success:
        return "A run would be complete";
    case ExitStatus::Incomplete:
        return "A run would leave something behind";
    case ExitStatus::Cancelled:
        return "The preview was cancelled";
    case ExitStatus::NothingToConvert:
        return "There is nothing to convert";
    case ExitStatus::Error:
        break;
    }
    return "A run would end in an error";
}

} // namespace

std::string PreviewText(const RunOutcome& outcome, const ConversionSettings& settings, ExitStatus status)
{
    const Preview preview = outcome.preview.value_or(Preview());
    std::string text;
    for (const TableReport& report : outcome.tables)
        AppendTable(text, report, preview);
    std::vector<std::string> otherwise;
    for (const Findings::Warning& warning : preview.findings.warnings)
        if (warning.kind != "values-not-imported" && warning.kind != "not-loaded")
            otherwise.push_back(warning.text);
    AppendLines(text, "To know", otherwise);
    AppendLines(text, "Left behind", LeftBehind(outcome, settings));
    std::vector<std::string> errors;
    for (const Findings::Error& error : preview.findings.errors)
        errors.push_back("Error " + std::to_string(error.number) + ": " + error.text);
    AppendLines(text, "What would end the run", errors);
    AppendSize(text, preview);
    return text.append("\n").append(Verdict(status)).append(". Nothing was written.\n");
}

} // namespace velmora
