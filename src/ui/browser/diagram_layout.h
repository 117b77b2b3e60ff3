#pragma once

#include "schema/database_view.h"

#include <QRectF>
#include <QSizeF>

#include <functional>
#include <vector>

namespace velmora {

/// Where the boxes of a diagram stand: tables in columns from left to right, each behind those that it refers to, and
/// in an order within each column in which few lines cross. A table that refers to itself, or in a ring, stands where
/// it is first met.
///
/// `sizeOf` gives the size of the box of the table with that number. One rectangle for each table comes back.
[[nodiscard]] std::vector<QRectF> LayOutDiagram(const DatabaseContents& contents,
                                                const std::function<QSizeF(std::size_t table)>& sizeOf, double gap);

} // namespace velmora
