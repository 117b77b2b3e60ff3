#pragma once

#include "app/preview_text.h"

#include <QWidget>

class QPlainTextEdit;

namespace velmora {

class Diagram;

/// What a run that was only tried out would do: its tables as a diagram, and the report beside it.
class PreviewWindow : public QWidget {
    Q_OBJECT

public:
    explicit PreviewWindow(QWidget* parent = nullptr);

    /// `outcome` is that of a preview.
    void Show(const RunOutcome& outcome, const ConversionSettings& settings, ExitStatus status);

private:
    Diagram* diagram_;
    QPlainTextEdit* text_;
};

} // namespace velmora
