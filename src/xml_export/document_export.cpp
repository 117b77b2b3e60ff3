#include "xml_export/document_export.h"

#include <algorithm>

namespace velmora {

namespace {

/// Of so many records one lets clicks through.
constexpr std::int64_t kRecordsBetweenEvents = 256;

std::size_t CountRows(DatabaseSession& session, const std::string& table)
{
    std::size_t count = 0;
    for (Recordset rows = session.OpenTable(table); !rows.Eof(); rows.MoveNext())
        ++count;
    return count;
}

} // namespace

DocumentExport::DocumentExport(Job& job, DatabaseSession& session, const ExportPlan& plan)
    : job_(job), session_(session), plan_(plan), byEdge_(plan.edges.size()), byRoot_(plan.tables.size()),
      parts_(plan.tables.size()), recordsOf_(plan.tables.size())
{
    std::int64_t count = 0;
    for (std::size_t i = 0; i < plan.tables.size(); ++i) {
        const ExportTable& table = plan.tables[i];
        count += static_cast<std::int64_t>(session.OpenTable(table.Name()).RecordCount());
        for (std::size_t part = 1; part < table.parts.size(); ++part) {
            Recordset rows = session.OpenTable(table.parts[part].name);
            static_cast<void>(rows.WalkBy(table.parts[part].keyField)); // the plan has asked for the index
            parts_[i].emplace_back(std::move(rows), table.parts[part].keyField);
        }
    }
    job.host.SetProgressRange(ProgressBarId::Records, count);
}

std::vector<RootRecord> DocumentExport::Roots()
{
    std::vector<RootRecord> roots;
    for (std::size_t i = 0; i < plan_.tables.size(); ++i) {
        const ExportTable& table = plan_.tables[i];
        if (!table.isRoot)
            continue;
        Recordset rows = session_.OpenTable(table.Name());
        static_cast<void>(rows.WalkBy(table.parts.front().keyField));
        for (; !rows.Eof(); rows.MoveNext())
            if (!StandsInAnother(table, rows))
                roots.push_back({i, rows.GetLong(table.parts.front().keyField)});
    }
    return roots;
}

/// Where elements of one name share a table, others than document elements stand in it too.
bool DocumentExport::StandsInAnother(const ExportTable& table, Recordset& rows)
{
    if (!table.masterField || !table.parentField)
        return false;
    value_.clear();
    static_cast<void>(rows.AppendText(*table.masterField, value_));
    const bool hasMaster = !value_.empty();
    return hasMaster && rows.AppendText(*table.parentField, value_);
}

DocumentExport::Source& DocumentExport::SourceOf(std::size_t edge)
{
    if (byEdge_[edge] == nullptr)
        byEdge_[edge] = &sources_.emplace_back(Source{RecordReader(session_, plan_, plan_.edges[edge])});
    return *byEdge_[edge];
}

void DocumentExport::Write(const RootRecord& root, OutputFile& file)
{
    Source*& source = byRoot_[root.table];
    if (source == nullptr)
        source = &sources_.emplace_back(Source{RecordReader(session_, plan_, root.table)});
    ReaderPlace place;
    if (!source->reader.First(root.key, place))
        return;
    XmlWriter writer(file);
    charactersInFile_ = 0;
    depth_ = 0;
    Enter(*source, std::move(place));
    Begin(writer);
    Run(writer);
    writer.Finish();
    ShowProgress();
}

void DocumentExport::Run(XmlWriter& writer)
{
    while (depth_ > 0) {
        Frame& top = Top();
        if (top.step == top.table->content.size()) {
            Leave(writer);
            continue;
        }
        const ContentStep& step = top.table->content[top.step++];
        switch (step.kind) {
        case ContentStep::Kind::Leaf: {
            const NamedValue& leaf = top.table->leaves[step.index];
            if (const ValueColumn* column = Value(leaf.columns)) {
                writer.StartElement(leaf.name);
                writer.Text(value_);
                writer.EndElement(leaf.name);
                NoteLeftOut(writer, column);
            }
            break;
        }
        case ContentStep::Kind::Records:
            EnterRecords(step.index, writer);
            break;
        case ContentStep::Kind::OpenWrapper:
            top.wrappers.emplace_back(&step.name, false);
            break;
        case ContentStep::Kind::CloseWrapper:
            CloseWrapper(writer);
            break;
        }
    }
}

/// Makes a frame for the record at which the source stands.
void DocumentExport::Enter(Source& source, ReaderPlace place)
{
    if (depth_ == frames_.size())
        frames_.emplace_back();
    ++depth_;
    source.depth = depth_;
    Frame& frame = Top();
    frame.source = &source;
    frame.table = &plan_.tables[source.reader.Table()];
    frame.place = std::move(place);
    frame.wrappers.clear();
}

void DocumentExport::EnterRecords(std::size_t edge, XmlWriter& writer)
{
    Source& source = SourceOf(edge);
    ReaderPlace place;
    source.depth = 0; // it stands at nobody's record, whether it finds one or not
    if (!source.reader.First(Top().place.key, place))
        return;
    for (auto& [name, isBegun] : Top().wrappers) {
        if (!isBegun)
            writer.StartElement(*name);
        isBegun = true;
    }
    Enter(source, std::move(place));
    Begin(writer);
}

void DocumentExport::CloseWrapper(XmlWriter& writer)
{
    const auto [name, isBegun] = Top().wrappers.back();
    Top().wrappers.pop_back();
    if (isBegun)
        writer.EndElement(*name);
}

/// The start of the element, with attributes and its own text.
void DocumentExport::Begin(XmlWriter& writer)
{
    Frame& top = Top();
    top.step = 0;
    writer.StartElement(top.table->element);
    for (const NamedValue& attribute : top.table->attributes)
        if (const ValueColumn* column = Value(attribute.columns)) {
            writer.Attribute(attribute.name, value_);
            NoteLeftOut(writer, column);
        }
    if (const ValueColumn* column = Value(top.table->text)) {
        writer.Text(value_);
        NoteLeftOut(writer, column);
    }
    ++recordsOf_[top.source->reader.Table()];
    if (++written_ % kRecordsBetweenEvents == 0)
        ShowProgress();
}

/// The end of the element, and on to the next record beside it.
void DocumentExport::Leave(XmlWriter& writer)
{
    Frame& top = Top();
    writer.EndElement(top.table->element);
    if (depth_ > 1 && ReaderOfTop().Next(top.place))
        return Begin(writer);
    --depth_;
}

/// It stands on the top frame's record: where elements stand in elements of their own name, it has been used further
/// down.
RecordReader& DocumentExport::ReaderOfTop()
{
    Frame& top = Top();
    if (top.source->depth != depth_)
        top.source->reader.Return(top.place);
    top.source->depth = depth_;
    return top.source->reader;
}

/// Puts the value into value_; gives the column that had it, nullptr when all are Null.
const ValueColumn* DocumentExport::Value(const std::vector<ValueColumn>& columns)
{
    Frame& top = Top();
    for (const ValueColumn& column : columns) {
        value_.clear();
        if (column.part == 0) {
            if (ReaderOfTop().AppendText(column, value_))
                return &column;
            continue;
        }
        KeyWalk& part = parts_[top.source->reader.Table()][column.part - 1];
        if (part.Find(top.place.key) && part.Rows().AppendIsoText(column.field, column.hasTimes, value_))
            return &column;
    }
    return nullptr;
}

void DocumentExport::NoteLeftOut(const XmlWriter& writer, const ValueColumn* column)
{
    const std::size_t more = writer.LeftOut() - charactersInFile_;
    if (more == 0)
        return;
    if (charactersLeftOut_ == 0)
        firstWithLeftOut_ = "[" + Top().table->parts[column->part].name + "].[" + column->name + "]";
    charactersInFile_ += more;
    charactersLeftOut_ += more;
}

void DocumentExport::ShowProgress()
{
    job_.host.SetProgress(ProgressBarId::Records, written_);
    job_.ProcessEvents();
}

std::vector<std::string> DocumentExport::LeftOut()
{
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < plan_.tables.size(); ++i) {
        const std::string& table = plan_.tables[i].Name();
        const auto written = static_cast<std::size_t>(recordsOf_[i]);
        if (session_.OpenTable(table).RecordCount() == written)
            continue;
        if (const std::size_t there = CountRows(session_, table); there > written)
            lines.push_back("Left out, since no record is there that they stand in: " +
                            std::to_string(there - written) + " records of table [" + table + "]");
    }
    if (charactersLeftOut_ > 0)
        lines.push_back("Left out, since XML forbids them: " + std::to_string(charactersLeftOut_) +
                        " characters, the first in " + firstWithLeftOut_);
    return lines;
}

} // namespace velmora
