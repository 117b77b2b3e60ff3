#include "ui/run_summary.h"

#include <QCoreApplication>
#include <QLocale>

namespace velmora {

namespace {

QString Tr(const char* text, int count = -1)
{
    return QCoreApplication::translate("RunSummary", text, nullptr, count);
}

/// Singular and plural stand apart: a plain text has no forms of its own.
QString Counted(std::int64_t count, const char* one, const char* many)
{
    return Tr(count == 1 ? one : many).arg(QLocale().toString(qlonglong{count}));
}

QString Seconds(std::int64_t milliseconds)
{
    const double seconds = static_cast<double>(milliseconds) / 1000;
    return Tr("%1 s").arg(QLocale().toString(seconds, 'f', seconds < 10 ? 1 : 0));
}

QString Beginning(const RunOutcome& outcome, const QString& lastError)
{
    if (outcome.cancelled)
        return Tr("Cancelled");
    if (outcome.failed)
        return lastError.isEmpty() ? Tr("Ended by an error") : Tr("Error %1").arg(lastError);
    return outcome.unreadableFiles > 0 ? Tr("Done, with files that could not be read") : Tr("Done");
}

} // namespace

QString RunSummary(const RunOutcome& outcome, std::int64_t milliseconds, const QString& lastError)
{
    if (outcome.nothingToDo)
        return Tr("Nothing was converted: the protocol says why");
    std::int64_t records = 0;
    for (const TableReport& table : outcome.tables)
        records += table.records;
    QStringList parts{Counted(outcome.convertedFiles, "%1 file", "%1 files"),
                      Counted(static_cast<std::int64_t>(outcome.tables.size()), "%1 table", "%1 tables"),
                      Counted(records, "%1 record", "%1 records")};
    if (outcome.unreadableFiles > 0)
        parts.append(Counted(outcome.unreadableFiles, "%1 file not read", "%1 files not read"));
    parts.append(Seconds(milliseconds));
    return Beginning(outcome, lastError) + ": " + parts.join(", ");
}

} // namespace velmora
