#pragma once

#include "ui/window_host.h"

#include <QWidget>

class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

namespace velmora {

class Desktop;

/// The page "Progress": two bars, the time left, and the protocol, its newest line first.
class ProgressPage : public QWidget {
    Q_OBJECT

public:
    /// `desktop` asks for files.
    explicit ProgressPage(Desktop& desktop, QWidget* parent = nullptr);

    /// Draws how far a run is that was begun `milliseconds` ago.
    void ShowProgress(const RunProgress& progress, std::int64_t milliseconds);
    /// The run has come to a good end: how many records there would be was an estimate.
    void ShowDone(const RunProgress& progress);
    /// Puts lines, the oldest first, in front of the others.
    void AddLines(const QStringList& lines);
    void Clear();
    /// Something was not imported, and there is a list of it.
    void OfferLeftOut(bool isThere);

signals:
    void LeftOutPressed();

private:
    [[nodiscard]] QString TimeLine(const RunProgress& progress, std::int64_t milliseconds);

    QProgressBar* files_;
    QProgressBar* records_;
    QLabel* fileNumbers_;
    QLabel* recordNumbers_;
    QLabel* time_;
    QPlainTextEdit* protocol_;
    QPushButton* leftOut_;
    std::int64_t importBegin_ = 0; ///< when the first record of the current file was seen
    std::int64_t fileAtHand_ = -1;
};

} // namespace velmora
