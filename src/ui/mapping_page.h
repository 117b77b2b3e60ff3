#pragma once

#include "mapping/mapping_editor.h"

#include <QWidget>

class QCheckBox;
class QLineEdit;
class QListWidget;
class QPushButton;
class QStringListModel;

namespace velmora {

class ControlsForm;
class Desktop;
struct Controls;
struct Job;

/// The page "Tag-mapping": the mapping file, the list of names and the two boxes that edit it.
class MappingPage : public QWidget {
    Q_OBJECT

public:
    /// `desktop` asks for files.
    MappingPage(Job& job, TagMap& map, ControlsForm& form, Desktop& desktop, QWidget* parent = nullptr);

    void Refresh(const Controls& controls);
    /// The map was changed elsewhere.
    void Redraw();
    /// Names the mapping file and reads it.
    void Load(const QString& path);

signals:
    /// There are lines about a mapping file.
    void ProtocolWritten();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void MakeWidgets();
    void btnMappingOpen_Click();
    void btnMappingSave_Click();
    void lstMAPPING_Click(int line);
    void Changed();
    void btnREMOVE_PAIR_Click();
    /// Shows what the editor holds.
    void Show();

    Job& job_;
    TagMap& map_;
    ControlsForm& form_;
    Desktop& desktop_;
    MappingEditor editor_;
    QCheckBox* enable_ = nullptr;
    QListWidget* list_ = nullptr;
    QLineEdit* tag_ = nullptr;
    QLineEdit* name_ = nullptr;
    QPushButton* remove_ = nullptr;
    QStringListModel* knownTags_ = nullptr;
};

} // namespace velmora
