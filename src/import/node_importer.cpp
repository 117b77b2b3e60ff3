#include "import/node_importer.h"

#include "import/loss_report.h"
#include "schema/lock_retry.h"

#include <algorithm>
#include <string>
#include <vector>

namespace velmora {

namespace {

/// An element whose children are being walked.
struct Level {
    ElementId element = kNoElement;
    ElementId child = kNoElement; ///< the next one
    const PathPlan* plan = nullptr;
    TableNumber sink = kNoTable;       ///< kNoTable: it has no record
    TableNumber parentSink = kNoTable; ///< then its children's records belong to the one here
    std::int32_t parentKey = 0;
    std::int32_t key = 0;           ///< of its own record
    bool makesWholeRecords = false; ///< see ImportLeafBesideColumns
};

/// One walk over one document, depth first. Levels stand on a stack of their own: a document may be nested as deep as
/// it likes.
class NodeImporter {
public:
    NodeImporter(Job& job, const LockSeam& locks, const Document& document, TableSinks& sinks, ColumnImport& columns)
        : job_(job), locks_(locks), document_(document), sinks_(sinks), columns_(columns)
    {
    }

    void velImportNode();

private:
    void Enter(ElementId element, TableNumber parentSink, std::int32_t parentKey, Step& step);
    void FindRecordAround(Level& level) const;
    void BuildRecord(Level& level, Step& step);
    void TryBuildRecord(Level& level, Step& step);
    void PassOverLeaves(Level& level, Step& step) const;
    [[nodiscard]] std::string AboutTag(ElementId element) const;
    void ImportChild(Level& level, ElementId child, Step& step);
    void ImportChildOfWrapper(const Level& level, ElementId child, Step& step);
    void ImportLeafBesideColumns(Level& level, ElementId leaf);
    [[nodiscard]] std::string_view SourceOf(TableNumber sink) const;

    Job& job_;
    const LockSeam& locks_;
    const Document& document_;
    TableSinks& sinks_;
    ColumnImport& columns_;
    std::vector<Level> levels_;
};

void NodeImporter::velImportNode()
{
    Procedure(job_, "velImportNode", [&](Step& step) {
        Enter(document_.Root(), kNoTable, 0, step);
        while (!levels_.empty()) {
            Level& level = levels_.back();
            const ElementId child = level.child;
            if (child == kNoElement) {
                levels_.pop_back();
                continue;
            }
            level.child = document_.NextSibling(child);
            document_.Passed(child);
            ImportChild(level, child, step); // may add a level
        }
    });
}

void NodeImporter::Enter(ElementId element, TableNumber parentSink, std::int32_t parentKey, Step& step)
{
    job_.host.ProcessEvents();
    job_.log.Trace("velImportNode: "); // like every procedure's name, also when the run ends here
    ThrowIfAborted(job_.settings);
    const PathPlan& plan = columns_.PlanOf(element);
    Level level{.element = element,
                .child = document_.FirstChild(element),
                .plan = &plan,
                .sink = plan.table,
                .parentSink = parentSink,
                .parentKey = parentKey};
    // Without a table an element is passed through, as a wrapping one is.
    if (!sinks_[level.sink].HasTable())
        level.sink = kNoTable;
    if (level.sink != kNoTable) {
        FindRecordAround(level);
        BuildRecord(level, step);
        const auto parentPath = [this, element] {
            return document_.PathText(document_.Paths().Parent(document_.Path(element)));
        };
        step([parentPath] { return "Move to the beginning of " + parentPath(); });
        step([parentPath] { return "Loop through elements of " + parentPath() + " that have children"; });
        if (plan.hasOnlyLeaves && !job_.log.IsTracing())
            PassOverLeaves(level, step);
    }
    levels_.push_back(level);
}

/// Mostly the nearest one. But where records are there already, theirs stand in one table, and the others go on so.
void NodeImporter::FindRecordAround(Level& level) const
{
    const PlannedTable& table = *sinks_[level.sink].plan;
    if (!level.plan->isEntered || table.isShared || table.parent == level.parentSink)
        return;
    const auto around =
        std::find_if(levels_.rbegin(), levels_.rend(), [&](const Level& above) { return above.sink == table.parent; });
    if (around == levels_.rend())
        return;
    level.parentSink = around->sink;
    level.parentKey = around->key;
}

/// Builds the element's record, again and again for a while when somebody else holds a lock.
void NodeImporter::BuildRecord(Level& level, Step& step)
{
    LockWait wait(locks_);
    const auto startAgain = [&] {
        columns_.Writer().Abandon();
        if (wait.IsOver())
            return false;
        const TableSink& sink = sinks_[level.sink];
        job_.log.ProtocolAppend("E_FAIL on table [" + sink.records->Source() + "], record " +
                                std::to_string(sink.savedRecords + 1));
        wait.Pause();
        job_.ProcessEvents();
        return true;
    };
    RetryWhile(
        IsLockConflict, [&] { TryBuildRecord(level, step); }, startAgain);
    if (columns_.HasFurtherParts())
        RetryWhile(
            IsLockConflict, [&] { columns_.SaveFurtherParts(level.sink, level.key); }, startAgain);
}

void NodeImporter::TryBuildRecord(Level& level, Step& step)
{
    TableSink& sink = sinks_[level.sink];
    RecordWriter& writer = columns_.Writer();

    step([&records = *sink.records] { return "Add new record to table [" + records.Source() + "]"; });
    const PathPlan& plan = *level.plan;
    writer.Begin(sink, level.element);
    columns_.BeginParts(level.element);
    if (level.parentSink != kNoTable)
        writer.SetMasterTable(sink, SourceOf(level.parentSink));
    if (level.parentSink != kNoTable || !plan.isEntered)
        writer.SetForeignKey(sink, level.parentKey, sinks_[level.parentSink]);
    if (columns_.ImportsAttributesOf(level.element)) {
        step([&records = *sink.records] { return "Import all attributes into table [" + records.Source() + "]"; });
        columns_.velImportNodeAttributes(level.element, level.sink);
    }
    if (plan.writesOwnText)
        columns_.ImportTextOfRecord(level.element, level.sink);
    if (plan.readsLeaves) {
        step([&records = *sink.records] { return "Import all columns into table [" + records.Source() + "]"; });
        columns_.velImportNodeColumns(level.element, level.sink);
    }
    level.key = writer.Key(sink); // the pending record has it at hand; the saved one would have to be read
    step([&records = *sink.records] { return "Update record in table [" + records.Source() + "]"; });
    columns_.Save(level.sink, level.parentSink);
    columns_.CountRecord();
}

/// A walk along them would do no more than name each of them in a trace, and leave the last one's as the step.
void NodeImporter::PassOverLeaves(Level& level, Step& step) const
{
    if (level.child == kNoElement)
        return;
    const auto last = [this, first = level.child] {
        ElementId leaf = first;
        while (document_.NextSibling(leaf) != kNoElement)
            leaf = document_.NextSibling(leaf);
        return leaf;
    };
    step([this, last] { return AboutTag(last()); });
    level.child = kNoElement;
}

std::string NodeImporter::AboutTag(ElementId element) const
{
    return "  Analyse tag <" + std::string(document_.NameText(document_.Name(element))) + ">";
}

void NodeImporter::ImportChild(Level& level, ElementId child, Step& step)
{
    if (columns_.PlanOf(child).isEntered) {
        const bool hasRecord = level.sink != kNoTable;
        const TableNumber sink = hasRecord ? level.sink : level.parentSink;
        const std::int32_t key = hasRecord ? level.key : level.parentKey;
        Enter(child, sink, key, step);
        return;
    }
    if (level.sink == kNoTable) {
        ImportChildOfWrapper(level, child, step);
        return;
    }
    step([this, child] { return AboutTag(child); });
    if (document_.HasChildren(child)) {
        const TableNumber sink = level.sink;
        const std::int32_t key = level.key;
        Enter(child, sink, key, step);
        return;
    }
    ImportLeafBesideColumns(level, child);
}

/// The children of a wrapping element belong to the record that encloses it.
void NodeImporter::ImportChildOfWrapper(const Level& level, ElementId child, Step& step)
{
    const TableNumber parentSink = level.parentSink;
    const std::int32_t parentKey = level.parentKey;
    const PathPlan& plan = columns_.PlanOf(child);
    if (plan.endsRunInWrapper)
        throw RuntimeError(runtime_errors::kSubscriptOutOfRange,
                           "Subscript out of range: " + columns_.PathOf(child) +
                               " has no table with columns of its own and stands in the wrapping element " +
                               columns_.PathOf(level.element) +
                               "; without +skip_empty it is imported (+complete imports them)");
    if (plan.isRepeatedLeaf)
        columns_.velImportTwinBabyElements(child, parentKey, parentSink);
    if (document_.HasChildren(child))
        Enter(child, parentSink, parentKey, step);
}

/// A leaf among the children of an element that has a record. Repeated leaves are imported with their parent's columns;
/// here leaves with attributes get a record of those. Behind the first of them that is a repeated one, every leaf that
/// has a table becomes a whole record, what stands in front of it does not. Meant so.
void NodeImporter::ImportLeafBesideColumns(Level& level, ElementId leaf)
{
    if (level.makesWholeRecords) {
        columns_.velImportTwinBabyElements(leaf, level.key, level.sink);
        return;
    }
    const PathPlan& plan = columns_.PlanOf(leaf);
    if (!columns_.ImportsAttributesOf(leaf) || plan.table == kNoTable)
        return;
    level.makesWholeRecords = plan.isRepeatedLeaf;
    columns_.velImportNodeAttributesRecord(leaf, plan.table, level.sink, level.key);
}

std::string_view NodeImporter::SourceOf(TableNumber sink) const
{
    return sinks_[sink].records->Source();
}

} // namespace

DocumentImport::DocumentImport(Job& job, DatabaseSession& session, const Source& source, const Document& document,
                               const MappingPlan& plan, TableSinks& sinks)
    : job_(job), session_(session), document_(document), plan_(plan), sinks_(sinks), account_(document),
      columns_(job, session, source, document, plan, sinks, account_)
{
}

void DocumentImport::Run()
{
    ThrowIfAborted(job_.settings);
    hasBegun_ = true;
    job_.log.ProtocolAppend("Import XML: Approx. " + std::to_string(plan_.recordEstimate) +
                            " records will be imported");
    job_.log.Trace("--- Start importing nodes -----------------");
    if (!document_.IsEmpty())
        NodeImporter(job_, session_.Locks(), document_, sinks_, columns_).velImportNode();
}

std::optional<LossSummary> DocumentImport::Tell(bool completed) const
{
    if (hasBegun_)
        job_.log.ProtocolAppend("Import XML: " + std::to_string(columns_.RecordCount()) + " records were imported");
    return completed ? std::optional(ReportLoss(job_, document_, plan_, account_)) : std::nullopt;
}

} // namespace velmora
