#include "import/column_import.h"

#include "import/record_refusal.h"
#include "schema/engine_errors.h"

namespace velmora {

ColumnImport::ColumnImport(Job& job, DatabaseSession& session, const std::string& source, const Document& document,
                           const StructureModel& model, const TagMap& map, TableSinks& sinks, ValueAccount& account)
    : job_(job), session_(session), source_(source), document_(document), model_(model), sinks_(sinks),
      fields_(document, job.settings, map, sinks), writer_(job, session, document, account)
{
}

void ColumnImport::velImportNodeColumns(ElementId element, int sink)
{
    Procedure(job_, "velImportNodeColumns", [&](Step& step) {
        for (ElementId leaf = document_.FirstChild(element); leaf != kNoElement; leaf = document_.NextSibling(leaf)) {
            if (document_.ChildCount(leaf) > 0 || !HasText(document_.Content(leaf)))
                continue;
            step([this, leaf, sink] {
                return "Insert value for [" + sinks_[sink].records->Source() + "].[" + fields_.ColumnOfLeaf(leaf) + "]";
            });
            const LossReason refusal = ImportLeaf(leaf, sink);
            const bool mayHaveOwnTable = refusal != LossReason::None && refusal != LossReason::KeyColumn;
            if (!mayHaveOwnTable || !ImportLeafIntoOwnTable(leaf, sink))
                Refuse(sinks_[sink], {leaf}, refusal);
        }
    });
}

void ColumnImport::velImportNodeAttributes(ElementId element, int sink)
{
    Procedure(job_, "velImportNodeAttributes", [&](Step& step) { SetAttributes(element, sink, step); });
}

/// What the leaf's value was refused for, if it was: it is not yet lost then.
LossReason ColumnImport::ImportLeaf(ElementId leaf, int sinkNumber)
{
    TableSink& sink = sinks_[sinkNumber];
    return SetText(sink, fields_.InParent(sink, leaf), leaf);
}

LossReason ColumnImport::SetText(TableSink& sink, const FieldPlace& place, ElementId leaf)
{
    if (!place.field)
        return place.refusal;
    return SetUnlessWrongType(sink, *place.field, {{}, document_.NameText(document_.Name(leaf))},
                              document_.Content(leaf), {leaf});
}

LossReason ColumnImport::SetUnlessWrongType(TableSink& sink, std::size_t field, const RawName& name,
                                            std::string_view value, ValueOrigin origin)
{
    try {
        writer_.Set(sink, field, name, value, origin);
        return LossReason::None;
    } catch (const RuntimeError& error) {
        // Bytes too many for their column; a text's column has been widened.
        const bool isTooLong = error.Number() == engine_errors::kFieldTooSmall;
        if (!isTooLong && error.Number() != engine_errors::kWrongType)
            throw;
        return LossReason::DoesNotFitType;
    }
}

void ColumnImport::Refuse(TableSink& sink, ValueOrigin origin, LossReason reason)
{
    if (reason != LossReason::None)
        sink.values.refused.push_back({origin, reason});
}

void ColumnImport::ImportOwnText(ElementId leaf, TableSink& sink)
{
    // A record without its text is still a record: the loss is counted, not fatal.
    Refuse(sink, {leaf}, SetText(sink, fields_.InOwnTable(sink, leaf), leaf));
}

/// False when the leaf has no table.
bool ColumnImport::ImportLeafIntoOwnTable(ElementId leaf, int ownerSink)
{
    const int number = SinkOf(leaf);
    if (number == TableSinks::kNone || !sinks_[number].HasTable())
        return false;
    TableSink& sink = sinks_[number];
    TableSink& owner = sinks_[ownerSink];
    writer_.Begin(sink, leaf);
    if (job_.settings.blOneTablePerElement)
        writer_.SetMasterTable(sink, owner.records->Source());
    writer_.SetForeignKey(sink, writer_.Key(owner));
    ImportOwnText(leaf, sink);
    Save(number, ownerSink);
    return true;
}

void ColumnImport::SetAttributes(ElementId element, int sinkNumber, Step& step)
{
    TableSink& sink = sinks_[sinkNumber];
    sink.values.attributeOwner = element;
    const std::uint32_t count = document_.AttributeCount(element);
    for (std::uint32_t index = 0; index < count; ++index) {
        const std::string_view value = document_.AttributeValue(element, index);
        if (value.empty())
            continue;
        const NameId name = document_.AttributeName(element, index);
        step([this, name, &sink] {
            return "Import attribute [" + std::string(document_.NameText(name)) + "] into table [" +
                   sink.records->Source() + "]";
        });
        const FieldPlace place = fields_.Attribute(sink, sinkNumber, element, index);
        const ValueOrigin origin{element, name};
        const RawName rawName{job_.settings.strAttrPrefix, document_.NameText(name)};
        Refuse(sink, origin,
               place.field ? SetUnlessWrongType(sink, *place.field, rawName, value, origin) : place.refusal);
    }
}

void ColumnImport::velImportTwinBabyElements(ElementId leaf, std::int32_t ownerKey, int ownerSink)
{
    const std::string_view content = document_.Content(leaf);
    const bool withAttributes = job_.settings.blImportAttributes && document_.AttributeCount(leaf) > 0;
    const int number = SinkOf(leaf);
    if ((content.empty() && !withAttributes) || number == TableSinks::kNone || !sinks_[number].HasTable())
        return;
    Procedure(job_, "velImportTwinBabyElements", [&](Step& step) {
        TableSink& sink = sinks_[number];
        step([&sink] { return "Add new record to table [" + sink.records->Source() + "]"; });
        writer_.Begin(sink, leaf);
        writer_.SetForeignKey(sink, ownerKey);
        writer_.SetMasterTable(sink, ownerSink == 0 ? std::string_view() : sinks_[ownerSink].records->Source());
        if (!content.empty()) {
            step([this, leaf, &sink] {
                return "Insert value for [" + sink.records->Source() + "].[" + fields_.ColumnOfLeaf(leaf) + "]";
            });
            ImportOwnText(leaf, sink);
        }
        if (withAttributes) {
            step([this, leaf] {
                return "Tag " + PathOf(leaf) + " has 0 children but " + std::to_string(document_.AttributeCount(leaf)) +
                       " attributes.";
            });
            velImportNodeAttributes(leaf, number);
        }
        step([&sink] { return "Update record in table [" + sink.records->Source() + "]"; });
        Save(number, ownerSink);
        CountRecord();
    });
}

void ColumnImport::velImportNodeAttributesRecord(ElementId leaf, int leafSink, int ownerSink, std::int32_t ownerKey)
{
    TableSink& sink = sinks_[leafSink];
    if (!sink.HasTable())
        return;
    Procedure(job_, "velImportNodeAttributesRecord", [&](Step& step) {
        step([this, leaf] {
            return "Tag " + PathOf(leaf) + " has 0 children but " + std::to_string(document_.AttributeCount(leaf)) +
                   " attributes.";
        });
        step([&sink] { return "Add new record to table  [" + sink.records->Source() + "] (Attributes only)"; });
        writer_.Begin(sink, leaf);
        writer_.SetForeignKey(sink, ownerKey);
        SetAttributes(leaf, leafSink, step);
        step([&sink] { return "Update record in table [" + sink.records->Source() + "]"; });
        Save(leafSink, ownerSink);
        CountRecord();
    });
}

void ColumnImport::Save(int sinkNumber, int ownerSink)
{
    TableSink& sink = sinks_[sinkNumber];
    try {
        writer_.Save(sink);
    } catch (const EngineError& error) {
        if (!IsBrokenRule(error))
            throw;
        throw ExplainRefusal(error, sink, document_, source_, HelpFor(error, sink, ownerSink));
    }
}

/// Only a relation that this run has made can be left out by it.
std::string ColumnImport::HelpFor(const EngineError& error, const TableSink& sink, int ownerSink)
{
    if (error.Number() != engine_errors::kRelatedRecordRequired)
        return {};
    if (!session_.HasMadeRelation(error.Subject().relation))
        return "the relation was there before this run: give the record a value that it knows, or delete it in Access";
    const std::string owner =
        ownerSink == 0 ? "no record" : "a record of " + document_.PathText(sinks_[ownerSink].element.strPath);
    return "it belongs to " + owner + ", and [" + sink.records->Source() +
           "] refers to another table: -relations goes without";
}

void ColumnImport::CountRecord()
{
    ++records_;
    if (records_ <= model_.lngRecordEstimate) {
        job_.host.SetProgress(ProgressBarId::Records, records_);
    } else if (!estimateExceeded_) {
        estimateExceeded_ = true;
        job_.log.ProtocolAppend("Counting of records was innacurate. Import goes on...");
    }
}

} // namespace velmora
