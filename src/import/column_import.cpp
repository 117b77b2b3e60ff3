#include "import/column_import.h"

#include "import/record_refusal.h"
#include "schema/engine_errors.h"

#include <algorithm>
#include <span>

namespace velmora {

namespace {

/// Walks through what is planned for one element's attributes: elements of one path mostly write them in one order.
class AttributeFinder {
public:
    explicit AttributeFinder(std::span<const AttributePlan> attributes) : attributes_(attributes) {}

    /// The place of the attribute `name`, which is one of them.
    const ValuePlace& Find(NameId name)
    {
        while (attributes_[next_].name != name)
            Advance();
        const ValuePlace& place = attributes_[next_].place;
        Advance();
        return place;
    }

private:
    void Advance() { next_ = next_ + 1 == attributes_.size() ? 0 : next_ + 1; }

    std::span<const AttributePlan> attributes_;
    std::size_t next_ = 0;
};

} // namespace

ColumnImport::ColumnImport(Job& job, DatabaseSession& session, const Source& source, const Document& document,
                           const MappingPlan& plan, TableSinks& sinks, ValueAccount& account)
    : job_(job), session_(session), source_(source), document_(document), plan_(plan), sinks_(sinks), fields_(plan),
      beside_(plan, session.Names()), writer_(job, session, document, account)
{
}

void ColumnImport::velImportNodeColumns(ElementId element, TableNumber number)
{
    Procedure(job_, "velImportNodeColumns", [&](Step& step) {
        TableSink& sink = sinks_[number];
        for (ElementId leaf = document_.FirstChild(element); leaf != kNoElement; leaf = document_.NextSibling(leaf)) {
            document_.Passed(leaf);
            const PathPlan& plan = PlanOf(leaf);
            if (plan.isEntered || document_.HasChildren(leaf))
                continue;
            const std::string_view text = TextOf(plan, leaf);
            const ValueOrigin origin{.element = leaf, .isOffered = HasText(text)};
            if (!plan.keepsEmpty && !origin.isOffered)
                continue;
            const ValuePlace& place = plan.outerText;
            if (KeepsForLater(place, text, origin))
                continue;
            step([this, &place, &sink] { return AboutValue(sink, place); });
            const LossReason refusal = SetValue(sink, place, text, origin);
            if (refusal == LossReason::None)
                continue;
            if (refusal == LossReason::KeyColumn || !ImportLeafIntoOwnTable(leaf, number))
                writer_.Values().Refuse(origin, refusal);
        }
    });
}

void ColumnImport::velImportNodeAttributes(ElementId element, TableNumber sink)
{
    Procedure(job_, "velImportNodeAttributes", [&](Step& step) { SetAttributes(element, sink, step); });
}

std::string ColumnImport::AboutValue(const TableSink& sink, const ValuePlace& place) const
{
    return "Insert value for [" + sink.records->Source() + "].[" + plan_.columns[place.column].name + "]";
}

/// What the value was refused for, if it was: it is not yet lost then.
LossReason ColumnImport::SetValue(TableSink& sink, const ValuePlace& place, std::string_view value, ValueOrigin origin)
{
    const FieldPlace found = fields_.Find(sink, place);
    if (found.refusal != LossReason::None || SetUnlessWrongType(sink, found.field, value, origin, plan_.widensByTag))
        return found.refusal;
    return SetBeside(sink, place, value, origin);
}

inline void ColumnImport::SetOrRefuse(TableSink& sink, const ValuePlace& place, std::string_view value,
                                      ValueOrigin origin)
{
    if (const LossReason refusal = SetValue(sink, place, value, origin); refusal != LossReason::None)
        writer_.Values().Refuse(origin, refusal);
}

LossReason ColumnImport::SetBeside(TableSink& sink, const ValuePlace& place, std::string_view value, ValueOrigin origin)
{
    const std::string& column = plan_.columns[place.column].name;
    const std::string& beside = beside_.NameFor(sink, column);
    if (beside.empty())
        return LossReason::DoesNotFitType;
    const std::size_t field = writer_.FieldBeside(sink, column, beside, origin);
    return SetUnlessWrongType(sink, field, value, origin, false) ? LossReason::None : LossReason::DoesNotFitType;
}

/// A rule of `columns` has refused the record: their values go into columns beside. False when none is the document's.
bool ColumnImport::MoveBeside(TableSink& sink, const std::vector<std::string>& columns)
{
    bool hasMoved = false;
    for (const std::string& column : columns) {
        const auto field = sink.records->FieldIndex(column);
        if (!plan_.importsEverything || !field || !writer_.Values().isFilled[*field])
            continue;
        sink.records->SetNull(*field);
        const ValueOrigin origin = writer_.Values().TakeBack(*field);
        const std::string& beside = beside_.NameFor(sink, column);
        writer_.Set(sink, writer_.FieldBeside(sink, column, beside, origin), ValueOf(origin), origin, false);
        hasMoved = true;
    }
    return hasMoved;
}

std::string_view ColumnImport::ValueOf(ValueOrigin origin) const
{
    for (std::uint32_t i = 0; i < document_.AttributeCount(origin.element); ++i)
        if (document_.AttributeName(origin.element, i) == origin.attribute) {
            const std::string_view value = document_.AttributeValue(origin.element, i);
            return IsBlank(value) ? std::string_view() : value;
        }
    return TextOf(PlanOf(origin.element), origin.element);
}

/// White space only is the empty text, where that is kept.
inline std::string_view ColumnImport::TextOf(const PathPlan& plan, ElementId element) const
{
    const std::string_view text = document_.Content(element);
    return plan.keepsEmpty && !HasText(text) && IsBlank(text) ? std::string_view() : text;
}

/// Is the column at fault? With everything imported there is another place for the value.
bool ColumnImport::KeepsValueOut(int errorNumber) const
{
    switch (errorNumber) {
    case engine_errors::kWrongType:
    case engine_errors::kFieldTooSmall: // of bytes; a text's column has been widened
        return true;
    case engine_errors::kFieldInIndex: // it cannot be widened
    case engine_errors::kFieldInRelation:
    case engine_errors::kEmptyTextRefused:
        return plan_.importsEverything;
    default:
        return false;
    }
}

inline bool ColumnImport::SetUnlessWrongType(TableSink& sink, std::size_t field, std::string_view value,
                                             ValueOrigin origin, bool byTag)
{
    try {
        writer_.Set(sink, field, value, origin, byTag);
        return true;
    } catch (const RuntimeError& error) {
        if (!KeepsValueOut(error.Number()))
            throw;
        return false;
    }
}

void ColumnImport::ImportOwnText(ElementId leaf, TableSink& sink)
{
    const PathPlan& plan = PlanOf(leaf);
    const std::string_view text = TextOf(plan, leaf);
    const ValueOrigin origin{.element = leaf, .isOffered = HasText(text)};
    // A record without its text is still a record: the loss is counted, not fatal.
    SetOrRefuse(sink, plan.ownText, text, origin);
}

/// False when the leaf has no table.
bool ColumnImport::ImportLeafIntoOwnTable(ElementId leaf, TableNumber ownerSink)
{
    const TableNumber number = PlanOf(leaf).table;
    if (!sinks_[number].HasTable())
        return false;
    TableSink& sink = sinks_[number];
    TableSink& owner = sinks_[ownerSink];
    writer_.Begin(sink, leaf);
    writer_.SetMasterTable(sink, owner.records->Source());
    writer_.SetForeignKey(sink, writer_.Key(owner), owner);
    ImportOwnText(leaf, sink);
    Save(number, ownerSink);
    return true;
}

void ColumnImport::SetAttributes(ElementId element, TableNumber number, Step& step)
{
    TableSink& sink = sinks_[number];
    writer_.Values().attributeOwner = element;
    AttributeFinder places(plan_.AttributesOf(PlanOf(element)));
    const std::uint32_t count = document_.AttributeCount(element);
    for (std::uint32_t index = 0; index < count; ++index) {
        std::string_view value = document_.AttributeValue(element, index);
        const bool isOffered = !value.empty();
        if (plan_.keepsEmptyAttributes && IsBlank(value))
            value = {};
        else if (!isOffered)
            continue;
        const NameId name = document_.AttributeName(element, index);
        step([this, name, &sink] {
            return "Import attribute [" + std::string(document_.NameText(name)) + "] into table [" +
                   sink.records->Source() + "]";
        });
        const ValuePlace& place = places.Find(name);
        const ValueOrigin origin{element, name, isOffered};
        if (!KeepsForLater(place, value, origin))
            SetOrRefuse(sink, place, value, origin);
    }
}

void ColumnImport::KeepForLater(const ValuePlace& place, std::string_view value, ValueOrigin origin)
{
    later_.push_back({&place, value, origin});
}

void ColumnImport::BeginParts(ElementId element)
{
    elementOfParts_ = element;
    later_.clear();
}

void ColumnImport::ImportTextOfRecord(ElementId element, TableNumber number)
{
    const PathPlan& plan = PlanOf(element);
    const std::string_view text = TextOf(plan, element);
    if (text.empty() && document_.HasChildren(element))
        return;
    if (!KeepsForLater(plan.ownText, text, {.element = element, .isOffered = HasText(text)}))
        ImportOwnText(element, sinks_[number]);
}

void ColumnImport::SaveFurtherParts(TableNumber number, std::int32_t key)
{
    std::ranges::stable_sort(later_, {}, [](const LaterValue& value) { return value.place->part; });
    while (!later_.empty()) {
        const TableNumber part = later_.front().place->part;
        TableSink& sink = sinks_[part];
        writer_.Begin(sink, elementOfParts_);
        writer_.Values().isContinuation = true;
        writer_.SetPrimaryKey(sink, key);
        const auto end = std::ranges::find_if(later_, [&](const LaterValue& v) { return v.place->part != part; });
        for (auto value = later_.begin(); value != end; ++value)
            SetOrRefuse(sink, *value->place, value->value, value->origin);
        Save(part, number);
        later_.erase(later_.begin(), end);
    }
}

void ColumnImport::velImportTwinBabyElements(ElementId leaf, std::int32_t ownerKey, TableNumber ownerSink)
{
    const std::string_view content = document_.Content(leaf);
    const bool withAttributes = ImportsAttributesOf(leaf);
    const TableNumber number = PlanOf(leaf).table;
    if ((content.empty() && !withAttributes) || !sinks_[number].HasTable())
        return;
    Procedure(job_, "velImportTwinBabyElements", [&](Step& step) {
        TableSink& sink = sinks_[number];
        step([&sink] { return "Add new record to table [" + sink.records->Source() + "]"; });
        writer_.Begin(sink, leaf);
        writer_.SetForeignKey(sink, ownerKey, sinks_[ownerSink]);
        writer_.SetMasterTable(sink, ownerSink == kNoTable ? std::string_view() : sinks_[ownerSink].records->Source());
        if (!content.empty()) {
            step([this, leaf, &sink] { return AboutValue(sink, PlanOf(leaf).ownText); });
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

void ColumnImport::velImportNodeAttributesRecord(ElementId leaf, TableNumber leafSink, TableNumber ownerSink,
                                                 std::int32_t ownerKey)
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
        writer_.SetForeignKey(sink, ownerKey, sinks_[ownerSink]);
        SetAttributes(leaf, leafSink, step);
        step([&sink] { return "Update record in table [" + sink.records->Source() + "]"; });
        Save(leafSink, ownerSink);
        CountRecord();
    });
}

void ColumnImport::Save(TableNumber number, TableNumber ownerSink)
{
    TableSink& sink = sinks_[number];
    for (;;) {
        try {
            writer_.Save(sink);
            return;
        } catch (const EngineError& error) {
            if (!IsBrokenRule(error))
                throw;
            if (!MoveBeside(sink, error.Subject().columns))
                throw ExplainRefusal(error, sink, writer_.Values().element, document_, source_,
                                     HelpFor(error, sink, ownerSink));
        }
    }
}

/// Only a relation that this run has made can be left out by it.
std::string ColumnImport::HelpFor(const EngineError& error, const TableSink& sink, TableNumber ownerSink)
{
    if (error.Number() != engine_errors::kRelatedRecordRequired)
        return {};
    if (!session_.HasMadeRelation(error.Subject().relation))
        return "the relation was there before this run: give the record a value that it knows, or delete it in Access";
    const std::string owner =
        ownerSink == kNoTable ? "no record" : "a record of " + document_.PathText(sinks_[ownerSink].plan->path);
    return "it belongs to " + owner + ", and [" + sink.records->Source() +
           "] refers to another table: -relations goes without";
}

void ColumnImport::CountRecord()
{
    ++records_;
    if (records_ <= plan_.recordEstimate) {
        job_.host.SetProgress(ProgressBarId::Records, records_);
    } else if (!estimateExceeded_) {
        estimateExceeded_ = true;
        job_.log.ProtocolAppend("Counting of records was innacurate. Import goes on...");
    }
}

} // namespace velmora
