// Where a window opens that is to hide nothing of the others.
#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>

namespace melvane {

// The pixels of `window` that lie on one of `others`.
qint64 coveredBy(const QRect& window, const QList<QRect>& others);

// For a window of that size within `room`: beside one of `others`, the nearer to the first of them the better and at
// `preferred` if that is free; where it covers least when no place is free. `others` is not empty.
QPoint freePlace(const QSize& window, const QList<QRect>& others, const QRect& room, Qt::Edge preferred);

}  // namespace melvane
