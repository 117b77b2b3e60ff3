#include "import/record_refusal.h"

#include "import/loss_report.h"
#include "xml/document_loader.h"

namespace velmora {

namespace {

/// "[t].[c]" for a rule of a column, else the index or the relation.
std::string RuleOf(const jet::ErrorSubject& subject)
{
    if (!subject.index.empty())
        return "index [" + subject.index + "] of [" + subject.table + "]";
    if (!subject.relation.empty())
        return "relation [" + subject.relation + "] of [" + subject.table + "]";
    return subject.columns.empty() ? "table [" + subject.table + "]"
                                   : "field [" + subject.table + "].[" + subject.columns.front() + "]";
}

std::string ValueIn(Recordset& records, const std::string& column)
{
    std::string value;
    if (const auto field = records.FieldIndex(column))
        records.AppendText(*field, value);
    return value.empty() ? "Null" : QuotedSample(value);
}

} // namespace

bool IsBrokenRule(const EngineError& error) noexcept
{
    switch (error.Number()) {
    case engine_errors::kDuplicateKey:
    case engine_errors::kNullInPrimaryKey:
    case engine_errors::kRelatedRecordRequired:
    case engine_errors::kFieldRequired:
    case engine_errors::kEmptyTextRefused:
        return true;
    default:
        return false;
    }
}

RuntimeError ExplainRefusal(const EngineError& error, TableSink& sink, ElementId element, const Document& document,
                            const Source& source, const std::string& help)
{
    std::string text = error.what();
    text += " (" + RuleOf(error.Subject());
    for (const std::string& column : error.Subject().columns)
        text += ", " + column + " = " + ValueIn(*sink.records, column);
    text += "; record " + std::to_string(sink.savedRecords + 1) + " of " + document.PathText(sink.plan->path);
    if (const auto line = LineOfElement(source, element))
        text += ", line " + std::to_string(*line);
    if (!help.empty())
        text += "; " + help;
    return {error.Number(), text + ")"};
}

} // namespace velmora
