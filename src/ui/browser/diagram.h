#pragma once

#include "schema/database_view.h"

#include <QGraphicsView>

namespace velmora {

/// Tables as boxes with their columns, relations as lines from column to column.
class Diagram : public QGraphicsView {
    Q_OBJECT

public:
    explicit Diagram(QWidget* parent = nullptr);

    void Show(const DatabaseContents& contents);
    /// As a picture, by the file's ending: SVG, or else PNG. False when it cannot be written.
    [[nodiscard]] bool Save(const QString& path);
    void Zoom(double factor) { scale(factor, factor); }
    void ShowAll();

protected:
    void wheelEvent(QWheelEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void ShowFirst();
    void AddBox(const DatabaseContents::Table& table, const QRectF& box);
    void AddLine(const DatabaseContents::Relation& relation, const DatabaseContents& contents,
                 const std::vector<QRectF>& boxes);
    [[nodiscard]] QSizeF SizeOf(const DatabaseContents::Table& table) const;
    [[nodiscard]] double LineHeight() const;

    bool isSeen_ = false; ///< as it is now
};

} // namespace velmora
