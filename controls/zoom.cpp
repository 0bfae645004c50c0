#include "controls/zoom.h"

#include <QApplication>
#include <QRegularExpression>
#include <QVariant>
#include <algorithm>
#include <cmath>

#include "controls/frameless_window.h"
#include "controls/skin.h"
#include "controls/window_region.h"

namespace melvane {

namespace {

constexpr const char* kPlace = "place";
constexpr double kWhole = 100;  // percent
constexpr double kLargestWidth = 0.4;
constexpr double kLargestHeight = 0.3;

int onStep(double percent) {
    return std::clamp(qRound(percent / kZoomStep) * kZoomStep, kLowestZoom, kHighestZoom);
}

}  // namespace

int zoom() {
    const QVariant set = qApp->property(kZoomProperty);
    return set.isValid() ? set.toInt() : kLowestZoom;
}

void setZoom(int percent) {
    percent = onStep(percent);
    if (percent == zoom()) return;
    qApp->setProperty(kZoomProperty, percent);
    for (QWidget* widget : QApplication::allWidgets())
        if (widget->property(kPlace).isValid()) layOut(widget, placeOf(*widget));
    qApp->setStyleSheet(styleSheet());
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* window = qobject_cast<FramelessWindow*>(widget)) window->followZoom();
}

int zoomFor(const QSize& room) {
    const QSize main = RegionFromResource(kMainRegion).boundingRect().size();
    const double factor =
        std::min(room.width() * kLargestWidth / main.width(), room.height() * kLargestHeight / main.height());
    return onStep(std::floor(factor * kWhole / kZoomStep) * kZoomStep);
}

double zoomFactor() {
    return zoom() / kWhole;
}

int zoomed(int units) {
    return qRound(units * zoomFactor());
}

QSize zoomed(const QSize& units) {
    return {zoomed(units.width()), zoomed(units.height())};
}

QRect zoomed(const QRect& units) {
    const QPoint topLeft(zoomed(units.left()), zoomed(units.top()));
    const QPoint past(zoomed(units.left() + units.width()), zoomed(units.top() + units.height()));
    return {topLeft, past - QPoint(1, 1)};
}

int zoomedFont(int units) {
    return static_cast<int>(units * zoomFactor());
}

QString zoomedStyle(const QString& sheet) {
    static const QRegularExpression length(QStringLiteral("((?:font-size|radius| height): )?\\b(\\d+)px"));
    QString result;
    qsizetype done = 0;
    for (auto it = length.globalMatch(sheet); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        const int units = match.captured(2).toInt();
        result += sheet.mid(done, match.capturedStart() - done) + match.captured(1) +
                  QString::number(match.captured(1).isEmpty() ? zoomed(units) : zoomedFont(units)) +
                  QStringLiteral("px");
        done = match.capturedEnd();
    }
    return result + sheet.mid(done);
}

QPointF unzoomed(const QPointF& pixels) {
    return pixels / zoomFactor();
}

void layOut(QWidget* widget, const QRect& units) {
    widget->setProperty(kPlace, units);
    widget->setGeometry(zoomed(units));
}

QRect placeOf(const QWidget& widget) {
    const QVariant placed = widget.property(kPlace);
    return placed.isValid() ? placed.toRect() : widget.geometry();
}

QRect placeRect(const QWidget& widget) {
    return {QPoint(), placeOf(widget).size()};
}

PlacePainter::PlacePainter(QWidget* widget) : QPainter(widget) {
    const QSizeF units = placeOf(*widget).size();
    scale(widget->width() / units.width(), widget->height() / units.height());
}

}  // namespace melvane
