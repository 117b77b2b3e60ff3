#pragma once

#include "settings/job.h"
#include "xml_export/export_plan.h"
#include "xml_export/record_reader.h"
#include "xml_export/xml_writer.h"

#include <cstdint>
#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace velmora {

/// The record of a document element.
struct RootRecord {
    std::size_t table;
    std::int32_t key;
};

/// Writes the records as documents, from the document element down: what it keeps in memory grows with how deep
/// elements stand in one another, not with their number.
class DocumentExport {
public:
    DocumentExport(Job& job, DatabaseSession& session, const ExportPlan& plan);

    /// In the order of their keys.
    [[nodiscard]] std::vector<RootRecord> Roots();
    void Write(const RootRecord& root, OutputFile& file);

    [[nodiscard]] std::int64_t Written() const noexcept { return written_; }
    /// What was left out, once all roots have been written: lines for the protocol.
    [[nodiscard]] std::vector<std::string> LeftOut();

private:
    /// A reader, and the depth of the frame that it stands at.
    struct Source {
        RecordReader reader;
        std::size_t depth = 0;
    };
    /// A record whose element is open.
    struct Frame {
        Source* source = nullptr;
        const ExportTable* table = nullptr;
        ReaderPlace place{};
        std::size_t step = 0; ///< the next one of its content
        /// Wrappers around what comes now, and whether they have been begun: those of no record are none.
        std::vector<std::pair<const std::string*, bool>> wrappers{};
    };

    [[nodiscard]] bool StandsInAnother(const ExportTable& table, Recordset& rows);
    [[nodiscard]] Source& SourceOf(std::size_t edge);
    void Run(XmlWriter& writer);
    void Enter(Source& source, ReaderPlace place);
    void EnterRecords(std::size_t edge, XmlWriter& writer);
    void Leave(XmlWriter& writer);
    void Begin(XmlWriter& writer);
    void CloseWrapper(XmlWriter& writer);
    [[nodiscard]] const ValueColumn* Value(const std::vector<ValueColumn>& columns);
    [[nodiscard]] Frame& Top() { return frames_[depth_ - 1]; }
    [[nodiscard]] RecordReader& ReaderOfTop();
    void NoteLeftOut(const XmlWriter& writer, const ValueColumn* column);
    void ShowProgress();

    Job& job_;
    DatabaseSession& session_;
    const ExportPlan& plan_;
    std::deque<Source> sources_;              ///< those used so far
    std::vector<Source*> byEdge_;             ///< none: not used yet
    std::vector<Source*> byRoot_;             ///< by table
    std::vector<std::vector<KeyWalk>> parts_; ///< by table: those that continue it
    std::deque<Frame> frames_;                ///< kept for the next record; `depth_` of them are in use
    std::size_t depth_ = 0;
    std::string value_;
    std::vector<std::int64_t> recordsOf_; ///< by table
    std::int64_t written_ = 0;
    std::size_t charactersInFile_ = 0; ///< left out of the file at hand
    std::size_t charactersLeftOut_ = 0;
    std::string firstWithLeftOut_; ///< a column
};

} // namespace velmora
