#pragma once

#include "import/column_import.h"
#include "import/loss_report.h"
#include "source/source.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velmora {

/// The import of one document, which was loaded from the file `source`, into the opened sinks.
class DocumentImport {
public:
    DocumentImport(Job& job, DatabaseSession& session, const Source& source, const Document& document,
                   const MappingPlan& plan, TableSinks& sinks);

    /// Walks the document once and turns it into records, as the plan says: each element that has a table becomes a
    /// record, linked to the record of the nearest element above it that has one. What throws leaves a record that was
    /// begun to velCloseTables.
    void Run();
    /// Says in the protocol how many records were written, also of a run that has ended early; of one that was
    /// `completed` also how many of the document's values were not imported; they come back.
    [[nodiscard]] std::optional<LossSummary> Tell(bool completed) const;

private:
    Job& job_;
    DatabaseSession& session_;
    const Document& document_;
    const MappingPlan& plan_;
    TableSinks& sinks_;
    ValueAccount account_;
    ColumnImport columns_;
    bool hasBegun_ = false;
};

} // namespace velmora
