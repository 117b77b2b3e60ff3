#pragma once

#include "import/columns_beside.h"
#include "import/record_writer.h"
#include "import/table_sinks.h"
#include "import/value_account.h"
#include "schema/engine_errors.h"
#include "source/source.h"

#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Fills records with the values of the document: an element's leaves and attributes, and the small records that leaves
/// of their own need.
class ColumnImport {
public:
    /// `source` is the file from which the document was loaded.
    ColumnImport(Job& job, DatabaseSession& session, const Source& source, const Document& document,
                 const MappingPlan& plan, TableSinks& sinks, ValueAccount& account);

    /// Writes the texts of the element's leaves into its record, which is pending in `sink`. A leaf for which that has
    /// no column gets a record of its own where it has a table.
    void velImportNodeColumns(ElementId element, TableNumber sink);
    /// Writes the element's attributes into the record pending in `sink`.
    void velImportNodeAttributes(ElementId element, TableNumber sink);
    /// Makes one record of a repeated leaf, text and attributes; nothing when it has neither, or no table. `ownerSink`
    /// may be kNoTable.
    void velImportTwinBabyElements(ElementId leaf, std::int32_t ownerKey, TableNumber ownerSink);
    /// Makes a record of a leaf's attributes alone.
    void velImportNodeAttributesRecord(ElementId leaf, TableNumber leafSink, TableNumber ownerSink,
                                       std::int32_t ownerKey);

    /// A record of `element` begins: values of an earlier one that was given up are forgotten.
    void BeginParts(ElementId element);
    /// Writes the element's own text into its record.
    void ImportTextOfRecord(ElementId element, TableNumber sink);
    /// Makes the records in which the last one goes on, in tables that continue its own; they have its key. May be
    /// called again after a failure.
    void SaveFurtherParts(TableNumber sink, std::int32_t key);
    [[nodiscard]] bool HasFurtherParts() const noexcept { return !later_.empty(); }

    /// The progress step: a record was saved.
    void CountRecord();
    /// Saves the record pending in `sink`, which belongs to one in `ownerSink`.
    void Save(TableNumber sink, TableNumber ownerSink);
    [[nodiscard]] std::int32_t RecordCount() const noexcept { return records_; }
    [[nodiscard]] const PathPlan& PlanOf(ElementId element) const { return plan_.paths[document_.Path(element)]; }
    [[nodiscard]] bool ImportsAttributesOf(ElementId element) const
    {
        return plan_.importsAttributes && document_.AttributeCount(element) > 0;
    }
    [[nodiscard]] std::string PathOf(ElementId element) const { return document_.PathText(document_.Path(element)); }
    [[nodiscard]] RecordWriter& Writer() noexcept { return writer_; }

private:
    [[nodiscard]] bool ImportLeafIntoOwnTable(ElementId leaf, TableNumber ownerSink);
    [[nodiscard]] std::string AboutValue(const TableSink& sink, const ValuePlace& place) const;
    /// A value that belongs into a further part of its record.
    struct LaterValue {
        const ValuePlace* place;
        std::string_view value;
        ValueOrigin origin;
    };

    void KeepForLater(const ValuePlace& place, std::string_view value, ValueOrigin origin);
    [[nodiscard]] bool KeepsForLater(const ValuePlace& place, std::string_view value, ValueOrigin origin)
    {
        const bool isLater = place.part != kNoTable;
        if (isLater)
            KeepForLater(place, value, origin);
        return isLater;
    }
    [[nodiscard]] std::string_view TextOf(const PathPlan& plan, ElementId element) const;
    [[nodiscard]] LossReason SetValue(TableSink& sink, const ValuePlace& place, std::string_view value,
                                      ValueOrigin origin);
    void SetOrRefuse(TableSink& sink, const ValuePlace& place, std::string_view value, ValueOrigin origin);
    [[nodiscard]] LossReason SetBeside(TableSink& sink, const ValuePlace& place, std::string_view value,
                                       ValueOrigin origin);
    [[nodiscard]] bool MoveBeside(TableSink& sink, const std::vector<std::string>& columns);
    [[nodiscard]] std::string_view ValueOf(ValueOrigin origin) const;
    void ImportOwnText(ElementId leaf, TableSink& sink);
    [[nodiscard]] bool KeepsValueOut(int errorNumber) const;
    [[nodiscard]] bool SetUnlessWrongType(TableSink& sink, std::size_t field, std::string_view value,
                                          ValueOrigin origin, bool byTag);
    [[nodiscard]] std::string HelpFor(const EngineError& error, const TableSink& sink, TableNumber ownerSink);
    void SetAttributes(ElementId element, TableNumber sink, Step& step);

    Job& job_;
    const DatabaseSession& session_;
    const Source& source_;
    const Document& document_;
    const MappingPlan& plan_;
    TableSinks& sinks_;
    FieldFinder fields_;
    ColumnsBeside beside_;
    RecordWriter writer_;
    std::vector<LaterValue> later_; ///< the parts in ascending order
    ElementId elementOfParts_ = kNoElement;
    std::int32_t records_ = 0;
    bool estimateExceeded_ = false;
};

} // namespace velmora
