#pragma once

#include <QWidget>

class QLabel;

namespace velmora {

struct Controls;

/// The page "About": what this is, its version and its licence.
class AboutPage : public QWidget {
    Q_OBJECT

public:
    explicit AboutPage(QWidget* parent = nullptr);

    void Refresh(const Controls& controls);

private:
    QLabel* version_;
};

} // namespace velmora
