#include "ui/browser/diagram.h"

#include "ui/browser/diagram_layout.h"

#include <QGraphicsScene>
#include <QGraphicsTextItem>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QScrollBar>
#include <QSvgGenerator>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace velmora {

namespace {

constexpr double kSmallestToRead = 0.4; // times the size that letters have
constexpr double kMargin = 8;
constexpr double kMaxImageSide = 16000; // pixels; what programs that show pictures still take
constexpr std::size_t kMaxShownColumns = 40;

QString Text(const std::string& text)
{
    return QString::fromStdString(text);
}

QString ColumnText(const DatabaseContents::Column& column)
{
    const QString key = column.isPrimaryKey ? "PK  " : column.isForeignKey ? "FK  " : "";
    return key + Text(column.name);
}

} // namespace

Diagram::Diagram(QWidget* parent) : QGraphicsView(parent)
{
    setObjectName("diagram");
    setAccessibleName(tr("Tables and relations"));
    setToolTip(tr("Tables and relations: drag to move, Ctrl and the wheel to zoom"));
    setScene(new QGraphicsScene(this));
    setDragMode(QGraphicsView::ScrollHandDrag);
    setRenderHint(QPainter::Antialiasing);
}

double Diagram::LineHeight() const
{
    return QFontMetricsF(font()).lineSpacing() * 1.15;
}

QSizeF Diagram::SizeOf(const DatabaseContents::Table& table) const
{
    QFont bold = font();
    bold.setBold(true);
    const QFontMetricsF plain(font());
    double width = QFontMetricsF(bold).horizontalAdvance(Text(table.name));
    const std::size_t shown = std::min(table.columns.size(), kMaxShownColumns);
    for (std::size_t i = 0; i < shown; ++i)
        width = std::max(width, plain.horizontalAdvance(ColumnText(table.columns[i])));
    const double lines = 1 + static_cast<double>(shown) + (shown < table.columns.size() ? 1 : 0);
    return {width + 2 * kMargin, lines * LineHeight() + 2.5 * kMargin};
}

void Diagram::AddBox(const DatabaseContents::Table& table, const QRectF& box)
{
    const QPalette& colours = palette();
    scene()->addRect(box, QPen(colours.color(QPalette::WindowText)), colours.brush(QPalette::Base));
    const QRectF head(box.topLeft(), QSizeF(box.width(), LineHeight() + kMargin));
    scene()->addRect(head, QPen(colours.color(QPalette::WindowText)), colours.brush(QPalette::AlternateBase));
    double y = box.top() + kMargin / 2;
    const auto add = [&](const QString& text, bool bold) {
        auto* item = scene()->addSimpleText(text, font());
        QFont used = font();
        used.setBold(bold);
        used.setItalic(table.isLinked);
        item->setFont(used);
        item->setBrush(colours.brush(QPalette::Text));
        item->setPos(box.left() + kMargin, y);
        y += LineHeight();
    };
    add(Text(table.name), true);
    y += kMargin;
    const std::size_t shown = std::min(table.columns.size(), kMaxShownColumns);
    for (std::size_t i = 0; i < shown; ++i)
        add(ColumnText(table.columns[i]), false);
    if (shown < table.columns.size())
        add(tr("and %1 more").arg(table.columns.size() - shown), false);
}

void Diagram::AddLine(const DatabaseContents::Relation& relation, const DatabaseContents& contents,
                      const std::vector<QRectF>& boxes)
{
    /// The height at which the line meets the box: its column's.
    const auto end = [&](const std::string& table, const std::string& column) -> std::pair<QRectF, double> {
        for (std::size_t i = 0; i < contents.tables.size(); ++i) {
            if (contents.tables[i].name != table)
                continue;
            const auto& columns = contents.tables[i].columns;
            const auto found =
                std::find_if(columns.begin(), columns.end(), [&](const auto& c) { return c.name == column; });
            const auto line = std::min<std::ptrdiff_t>(found - columns.begin(), kMaxShownColumns);
            return {boxes[i], boxes[i].top() + 1.5 * kMargin + (1.5 + static_cast<double>(line)) * LineHeight()};
        }
        return {};
    };
    if (relation.columns.empty())
        return;
    const auto [from, fromY] = end(relation.table, relation.columns.front().first);
    const auto [to, toY] = end(relation.referencedTable, relation.columns.front().second);
    if (from.isNull() || to.isNull())
        return;
    const bool isToTheLeft = to.right() <= from.left();
    const QPointF start(isToTheLeft ? from.left() : from.right(), fromY);
    const QPointF target(isToTheLeft || to.left() < from.right() ? to.right() : to.left(), toY);
    const double reach = std::max(30.0, std::abs(start.x() - target.x()) / 2);
    QPainterPath path(start);
    path.cubicTo(start + QPointF(isToTheLeft ? -reach : reach, 0),
                 target + QPointF(target.x() >= to.right() ? reach : -reach, 0), target);
    auto* line = scene()->addPath(path, QPen(palette().color(QPalette::Link), 1.5));
    line->setToolTip(Text(relation.name));
    line->setZValue(-1);
    // The end with the key is marked: one record there, many here.
    scene()->addEllipse(QRectF(target - QPointF(3, 3), QSizeF(6, 6)), Qt::NoPen, palette().brush(QPalette::Link));
}

void Diagram::Show(const DatabaseContents& contents)
{
    scene()->clear();
    const std::vector<QRectF> boxes = LayOutDiagram(
        contents, [&](std::size_t table) { return SizeOf(contents.tables[table]); }, LineHeight() * 2);
    for (std::size_t i = 0; i < boxes.size(); ++i)
        AddBox(contents.tables[i], boxes[i]);
    for (const DatabaseContents::Relation& relation : contents.relations)
        AddLine(relation, contents, boxes);
    scene()->setSceneRect(scene()->itemsBoundingRect().adjusted(-20, -20, 20, 20));
    isSeen_ = isVisible();
    if (isSeen_)
        ShowFirst();
}

/// All of it, unless that could not be read.
void Diagram::ShowFirst()
{
    ShowAll();
    if (transform().m11() < kSmallestToRead)
        resetTransform();
}

/// Only now it is known how much room there is.
void Diagram::showEvent(QShowEvent* event)
{
    QGraphicsView::showEvent(event);
    if (!std::exchange(isSeen_, true))
        ShowFirst();
}

void Diagram::ShowAll()
{
    fitInView(sceneRect(), Qt::KeepAspectRatio);
    if (transform().m11() > 1)
        resetTransform();
}

void Diagram::wheelEvent(QWheelEvent* event)
{
    if (event->modifiers() & Qt::ControlModifier)
        Zoom(event->angleDelta().y() > 0 ? 1.2 : 1 / 1.2);
    else
        QGraphicsView::wheelEvent(event);
}

bool Diagram::Save(const QString& path)
{
    const QRectF area = scene()->sceneRect();
    if (path.endsWith(".svg", Qt::CaseInsensitive)) {
        QSvgGenerator picture;
        picture.setFileName(path);
        picture.setSize(area.size().toSize());
        picture.setViewBox(QRectF(QPointF(), area.size()));
        QPainter painter;
        if (!painter.begin(&picture))
            return false;
        painter.fillRect(QRectF(QPointF(), area.size()), palette().brush(QPalette::Window));
        scene()->render(&painter, QRectF(QPointF(), area.size()), area);
        return painter.end();
    }
    const double scale = std::min(2.0, kMaxImageSide / std::max({area.width(), area.height(), 1.0}));
    QImage image((area.size() * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(palette().color(QPalette::Window));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    scene()->render(&painter, QRectF(image.rect()), area);
    painter.end();
    return image.save(path, "PNG");
}

} // namespace velmora
