// What buttons look like, as vectors, and what all of them do alike.
#pragma once

#include <QAbstractButton>
#include <QPainter>
#include <QPicture>

namespace melvane {

// bar: as close, but lights in no warning colour; running: of song, while what it starts goes on.
enum class ButtonLook { plain, song, recording, close, bar, running };
enum class Symbol {
    none,
    open,
    save,
    mix,
    stop,
    effects,
    midi,
    settings,
    close,
    play,
    pause,
    next,
    back,
    list,
    listen,
    tick,
    dot,
    down,
    right,
    minimise,
    rewind,
    loopBegin,
    loopEnd,
    noLoop,
    zoomIn,
    zoomOut,
    whole,
    lineUp
};

struct ButtonPictures {
    QPicture normal;
    QPicture hot;
    QPicture disabled;
};

// `size` in units.
ButtonPictures buttonPictures(ButtonLook look, Symbol symbol, const QSize& size);

// A narrow button has its symbol in the middle, a wide one in the right half.
bool fitsCaption(const QSize& button);

// Draws a picture at its own size, whatever resolution the device has.
void drawPicture(QPainter& painter, const QPicture& picture);
// What every button adds to its picture of that size: that it is held down, that it has the focus.
void drawButtonState(QPainter& painter, const QAbstractButton& button, const QSize& size);
inline constexpr double kDisabledOpacity = 0.5;  // of a picture that stands for the disabled one

}  // namespace melvane
