// How large the windows are: one factor for the places, fonts, pictures and mouse of all of them.
//
// Windows are laid out in units, which are pixels at 100 %; here they become pixels. What the screen scales by itself
// comes on top. The zoom is the application's, as its font and its style sheet are.
#pragma once

#include <QPainter>
#include <QWidget>

namespace melvane {

// In percent; in between in steps.
inline constexpr int kLowestZoom = 100;
inline constexpr int kHighestZoom = 300;
inline constexpr int kZoomStep = 25;

int zoom();
// Goes to the nearest step. Every window follows at once; the application's property kZoomProperty tells of a change.
void setZoom(int percent);
inline constexpr const char* kZoomProperty = "zoom";
// The largest at which the main window takes two fifths of the width and three tenths of the height of a screen at
// most: 100 for 1366x768, 150 for 1920x1080, 300 for 3840x2160. `room` is what the desktop leaves to windows, in
// pixels.
int zoomFor(const QSize& room);

double zoomFactor();
// To the nearest pixel. What touches in units touches in pixels too.
int zoomed(int units);
QSize zoomed(const QSize& units);
QRect zoomed(const QRect& units);
// Fonts are rather too small than too wide for their room.
int zoomedFont(int units);
// Lengths of a style sheet, which are written as "3px". Corners are rather too small than
// rounder than their box, and rows than too many for their list.
QString zoomedStyle(const QString& sheet);
// Of the mouse.
QPointF unzoomed(const QPointF& pixels);

// Puts a widget there, now and after each change of the zoom. In units of its parent.
void layOut(QWidget* widget, const QRect& units);
// Where it was put; the geometry of a widget that was not.
QRect placeOf(const QWidget& widget);

// Paints a widget in units, from its top left corner to the far corner of its place.
class PlacePainter : public QPainter {
public:
    explicit PlacePainter(QWidget* widget);
};
QRect placeRect(const QWidget& widget);  // all of it, as it is painted

}  // namespace melvane
