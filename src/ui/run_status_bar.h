#pragma once

#include "driver/run_outcome.h"

#include <QStatusBar>
#include <QString>

#include <cstdint>

class QLabel;
class QPushButton;

namespace velmora {

/// What a run did, in one line: files, tables, records, time; or why it did nothing. `wroteXml`: it went the way back.
[[nodiscard]] QString RunSummary(const RunOutcome& outcome, bool wroteXml, std::int64_t milliseconds,
                                 const QString& lastError);

/// What the last run did, with the ways to its result and to what it left out.
class RunStatusBar : public QStatusBar {
    Q_OBJECT

public:
    explicit RunStatusBar(QWidget* parent = nullptr);

    void Clear();
    void Tell(const QString& text);
    void OfferResult(bool isThere);
    void OfferLeftOut(std::int64_t values);
    void EnableForRun(bool running);

signals:
    void OpenResultPressed();
    void LeftOutPressed();

private:
    QLabel* text_;
    QPushButton* openResult_;
    QPushButton* leftOut_;
};

} // namespace velmora
