#pragma once

#include "import/field_finder.h"
#include "import/record_writer.h"
#include "import/table_sinks.h"
#include "import/value_account.h"
#include "schema/engine_errors.h"

#include <string>

namespace velmora {

/// Fills records with the values of the document: an element's leaves and attributes, and the small records that leaves
/// of their own need.
class ColumnImport {
public:
    /// `source` is the file from which the document was loaded.
    ColumnImport(Job& job, DatabaseSession& session, const std::string& source, const Document& document,
                 const StructureModel& model, const TagMap& map, TableSinks& sinks, ValueAccount& account);

    /// Writes the texts of the element's leaves into its record, which is pending in `sink`. A leaf for which that has
    /// no column gets a record of its own where it has a table.
    void velImportNodeColumns(ElementId element, int sink);
    /// Writes the element's attributes into the record pending in `sink`.
    void velImportNodeAttributes(ElementId element, int sink);
    /// Makes one record of a repeated leaf, text and attributes; nothing when it has neither, or no table. `ownerSink`
    /// may be 0.
    void velImportTwinBabyElements(ElementId leaf, std::int32_t ownerKey, int ownerSink);
    /// Makes a record of a leaf's attributes alone.
    void velImportNodeAttributesRecord(ElementId leaf, int leafSink, int ownerSink, std::int32_t ownerKey);

    /// The progress step: a record was saved.
    void CountRecord();
    /// Saves the record pending in `sink`, which belongs to one in `ownerSink`.
    void Save(int sink, int ownerSink);
    [[nodiscard]] std::int32_t RecordCount() const noexcept { return records_; }
    [[nodiscard]] int SinkOf(ElementId element) const noexcept
    {
        return sinks_.Lookup(document_.Path(element), job_.settings.blSkipEmptyWrappingTags);
    }
    [[nodiscard]] std::string PathOf(ElementId element) const { return document_.PathText(document_.Path(element)); }
    [[nodiscard]] RecordWriter& Writer() noexcept { return writer_; }

private:
    [[nodiscard]] LossReason ImportLeaf(ElementId leaf, int sink);
    [[nodiscard]] bool ImportLeafIntoOwnTable(ElementId leaf, int ownerSink);
    void ImportOwnText(ElementId leaf, TableSink& sink);
    [[nodiscard]] LossReason SetText(TableSink& sink, const FieldPlace& place, ElementId leaf);
    [[nodiscard]] LossReason SetUnlessWrongType(TableSink& sink, std::size_t field, const RawName& name,
                                                std::string_view value, ValueOrigin origin);
    static void Refuse(TableSink& sink, ValueOrigin origin, LossReason reason);
    [[nodiscard]] std::string HelpFor(const EngineError& error, const TableSink& sink, int ownerSink);
    void SetAttributes(ElementId element, int sink, Step& step);

    Job& job_;
    const DatabaseSession& session_;
    const std::string& source_;
    const Document& document_;
    const StructureModel& model_;
    TableSinks& sinks_;
    FieldFinder fields_;
    RecordWriter writer_;
    std::int32_t records_ = 0;
    bool estimateExceeded_ = false;
};

} // namespace velmora
