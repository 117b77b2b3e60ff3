#pragma once

#include "schema/database_view.h"

#include <QAbstractTableModel>

namespace velmora {

/// One page of a table's rows.
class PageModel : public QAbstractTableModel {
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    void Show(const DatabaseContents::Table& table, std::uint64_t firstRow, std::vector<DatabaseView::Row> rows);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    std::vector<DatabaseContents::Column> columns_;
    std::uint64_t firstRow_ = 0;
    std::vector<DatabaseView::Row> rows_;
};

} // namespace velmora
