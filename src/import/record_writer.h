#pragma once

#include "import/table_sinks.h"
#include "import/value_account.h"
#include "plan/value_forms.h"
#include "schema/column_widening.h"
#include "schema/database_session.h"
#include "schema/engine_errors.h"
#include "settings/job.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Builds records in sinks, one at a time, or one inside another: a repeated leaf's while its owner's is not yet saved.
/// Repairs what can be repaired on the way: a text too long for its column, a value that the type chosen for its column
/// does not fit, a record too large for a page.
///
/// An operation that throws leaves what was begun to Abandon(), or to velCloseTables when the run ends.
class RecordWriter {
public:
    RecordWriter(Job& job, DatabaseSession& session, const Document& document, ValueAccount& account)
        : job_(job), session_(session), document_(document), account_(account)
    {
    }

    RecordWriter(const RecordWriter&) = delete;
    RecordWriter& operator=(const RecordWriter&) = delete;

    /// `element` is what the record is made of.
    void Begin(TableSink& sink, ElementId element);
    // Key columns that the table does not have, or that take no such value, are passed over.
    void SetPrimaryKey(TableSink& sink, std::int32_t key);
    /// `key` is that of the record in `owner`, number 0 for none.
    void SetForeignKey(TableSink& sink, std::int32_t key, const TableSink& owner);
    void SetMasterTable(TableSink& sink, std::string_view ownerTable);
    /// Puts a value of the document into a field. When the text column is too small, it is widened; `byTag`, before
    /// that the one that bears the value's own name in the document, where that is too small as well. Throws 3421 when
    /// its type cannot hold the value, and 3163 when its bytes are too few: the field is empty then, not at its
    /// default.
    void Set(TableSink& sink, std::size_t field, std::string_view value, ValueOrigin origin, bool byTag)
    {
        if (IsTyped(sink.TypeOf(field))) {
            SetTyped(sink, field, value, origin, byTag);
            return;
        }
        if (!TrySet(sink, field, value))
            field = SetWithMoreRoom(sink, field, value, origin, byTag);
        Values().Put(field, origin);
    }
    /// The field of the text column `name`, which is made when it is missing: it takes what does not fit `besides`.
    [[nodiscard]] std::size_t FieldBeside(TableSink& sink, const std::string& besides, const std::string& name,
                                          ValueOrigin origin);
    /// Saves the record begun last. Every finished record passes here. It stays pending when the engine refuses it.
    /// Rows saved while their owner is pending go with it when that is abandoned.
    void Save(TableSink& sink);
    /// The values of the record begun last.
    [[nodiscard]] PendingValues& Values() noexcept { return endOfBegun_[-1].values; }
    /// The primary key of the pending record, else of the one last saved; 0 when the table has none.
    [[nodiscard]] std::int32_t Key(TableSink& sink);
    /// Drops every record that is not yet saved, and the rows saved for the oldest of them: as if none had been begun.
    void Abandon();

private:
    struct Begun {
        TableSink* sink = nullptr;
        PendingValues values;
    };

    void KeepProvisionalRows();
    void AddProvisionalRow(TableSink& sink);
    void FindKeys(TableSink& sink) const
    {
        if (sink.keyLayout != sink.records->Layout())
            FindKeysAnew(sink);
    }
    void FindKeysAnew(TableSink& sink) const;
    void ClearDefault(TableSink& sink, std::size_t field);
    /// False when it is a text column that is too small.
    [[nodiscard]] bool TrySet(TableSink& sink, std::size_t field, std::string_view value)
    {
        try {
            sink.records->SetText(field, value);
            return true;
        } catch (const RuntimeError& error) {
            if (!IsTooSmallText(sink, field, error))
                throw;
            return false;
        }
    }
    [[nodiscard]] bool IsTooSmallText(TableSink& sink, std::size_t field, const RuntimeError& refusal);
    [[nodiscard]] std::size_t SetWithMoreRoom(TableSink& sink, std::size_t field, std::string_view value,
                                              ValueOrigin origin, bool byTag);
    [[nodiscard]] std::size_t MakeRoom(TableSink& sink, std::size_t field, std::string_view value, ValueOrigin origin,
                                       bool byTag);
    [[nodiscard]] std::string NameInDocument(ValueOrigin origin) const;
    [[nodiscard]] std::size_t FieldToWiden(const TableSink& sink, std::size_t field, const std::string& name,
                                           std::size_t characters) const;
    [[nodiscard]] ColumnToWiden Widening(const TableSink& sink, std::size_t field, std::size_t characters,
                                         ValueOrigin origin) const;
    void Widen(TableSink& sink, const std::vector<ColumnToWiden>& columns);
    void SetTyped(TableSink& sink, std::size_t field, std::string_view value, ValueOrigin origin, bool byTag);
    [[nodiscard]] bool TrySetTyped(TableSink& sink, std::size_t field, std::string_view value, ValueOrigin origin);
    [[nodiscard]] std::size_t BecomeTextFor(TableSink& sink, std::size_t field, std::string_view value,
                                            ValueOrigin origin);
    void BecomeText(TableSink& sink, std::size_t field, const std::string& reason);
    void TellWhatIsMissing(TableSink& sink);
    static void NoteLengths(TableSink& sink, const PendingValues& values);
    void MakeFit(TableSink& sink, const EngineError& error);

    Job& job_;
    DatabaseSession& session_;
    const Document& document_;
    ValueAccount& account_;
    std::array<Begun, 2> begun_;          ///< records not yet saved: one, and one of a leaf inside it
    Begun* endOfBegun_ = begun_.data();   ///< behind the one begun last
    std::vector<TableSink*> provisional_; ///< sinks with provisional rows
};

} // namespace velmora
