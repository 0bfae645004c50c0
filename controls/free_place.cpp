#include "controls/free_place.h"

#include <algorithm>
#include <array>

namespace melvane {

namespace {

constexpr int kGap = 8;

QPoint beside(const QRect& other, const QSize& window, Qt::Edge edge) {
    const int centred = other.center().x() - (window.width() - 1) / 2;
    switch (edge) {
        case Qt::TopEdge:
            return {centred, other.top() - kGap - window.height()};
        case Qt::BottomEdge:
            return {centred, other.bottom() + 1 + kGap};
        case Qt::LeftEdge:
            return {other.left() - kGap - window.width(), other.top()};
        case Qt::RightEdge:
            break;
    }
    return {other.right() + 1 + kGap, other.top()};
}

QPoint within(const QRect& room, const QPoint& wanted, const QSize& window) {
    return {std::clamp(wanted.x(), room.left(), std::max(room.left(), room.right() + 1 - window.width())),
            std::clamp(wanted.y(), room.top(), std::max(room.top(), room.bottom() + 1 - window.height()))};
}

}  // namespace

qint64 coveredBy(const QRect& window, const QList<QRect>& others) {
    qint64 pixels = 0;
    for (const QRect& other : others) {
        const QRect both = window & other;
        pixels += qint64{both.width()} * both.height();
    }
    return pixels;
}

QPoint freePlace(const QSize& window, const QList<QRect>& others, const QRect& room, Qt::Edge preferred) {
    const std::array edges = {preferred, Qt::BottomEdge, Qt::TopEdge, Qt::RightEdge, Qt::LeftEdge};
    QPoint best;
    qint64 least = -1;
    for (const QRect& other : others) {
        for (const Qt::Edge edge : edges) {
            const QPoint place = within(room, beside(other, window, edge), window);
            const qint64 covered = coveredBy({place, window}, others);
            if (least >= 0 && covered >= least) continue;
            best = place;
            least = covered;
        }
    }
    return best;
}

}  // namespace melvane
