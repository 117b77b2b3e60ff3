#include "ui/browser/page_model.h"

#include <QGuiApplication>
#include <QLocale>
#include <QPalette>

#include <utility>

namespace velmora {

namespace {

constexpr qsizetype kMaxToolTip = 1000;

bool IsNumber(const std::string& type)
{
    return type == "Long Integer" || type == "Integer" || type == "Byte" || type == "Double" || type == "Single" ||
           type == "Currency" || type == "Decimal";
}

} // namespace

void PageModel::Show(const DatabaseContents::Table& table, std::uint64_t firstRow, std::vector<DatabaseView::Row> rows)
{
    beginResetModel();
    columns_ = table.columns;
    firstRow_ = firstRow;
    rows_ = std::move(rows);
    endResetModel();
}

int PageModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int PageModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant PageModel::data(const QModelIndex& index, int role) const
{
    const DatabaseView::Row& row = rows_[static_cast<std::size_t>(index.row())];
    const auto column = static_cast<std::size_t>(index.column());
    const bool isNull = column >= row.size() || !row[column];
    switch (role) {
    case Qt::DisplayRole:
        return isNull ? QString() : QString::fromStdString(*row[column]).replace('\n', ' ');
    case Qt::ToolTipRole:
    case Qt::EditRole:
        return isNull ? tr("Null") : QString::fromStdString(*row[column]).left(role == Qt::EditRole ? -1 : kMaxToolTip);
    case Qt::TextAlignmentRole:
        return IsNumber(columns_[column].type) ? int(Qt::AlignRight | Qt::AlignVCenter)
                                               : int(Qt::AlignLeft | Qt::AlignVCenter);
    default:
        return {};
    }
}

QVariant PageModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role == Qt::DisplayRole && orientation == Qt::Vertical)
        return QLocale().toString(qulonglong{firstRow_} + static_cast<qulonglong>(section) + 1);
    const auto column = static_cast<std::size_t>(section);
    if (orientation != Qt::Horizontal || column >= columns_.size())
        return {};
    if (role == Qt::DisplayRole)
        return QString::fromStdString(columns_[column].name);
    if (role == Qt::ToolTipRole)
        return QString::fromStdString(columns_[column].type);
    return {};
}

} // namespace velmora
