#include "controls/symbol_paths.h"

#include <iterator>
#include <sstream>

namespace melvane {

namespace {

// In the order of Symbol. "M x y" goes to a point, "L x y" draws a line there, "C" a cubic curve over two control
// points, "Z" closes the figure; "O x y r" is a circle, "A x y r start sweep" goes along one (degrees, anticlockwise).
constexpr const char* kLines[] = {
    "",
    // open: a folder
    "M 2 13 L 2 3.5 L 6 3.5 L 7.6 5.5 L 14 5.5 L 14 13 Z",
    // save: an arrow onto a disk
    "M 8 2 L 8 9.6 M 4.8 6.6 L 8 9.8 L 11.2 6.6 M 2 10.5 L 2 13.8 L 14 13.8 L 14 10.5",
    // mix: two lines that become one
    "M 2 3.5 C 6.5 3.5 5.5 8 10 8 M 2 12.5 C 6.5 12.5 5.5 8 10 8 L 14 8 M 11.4 5.2 L 14.2 8 L 11.4 10.8",
    // stop
    "M 3.5 3.5 L 12.5 3.5 L 12.5 12.5 L 3.5 12.5 Z",
    // effects: sliders
    "M 3.5 2 L 3.5 8.6 M 3.5 12.4 L 3.5 14 O 3.5 10.5 1.7 M 8 2 L 8 3.6 M 8 7.4 L 8 14 O 8 5.5 1.7 "
    "M 12.5 2 L 12.5 7.1 M 12.5 10.9 L 12.5 14 O 12.5 9 1.7",
    // midi: a socket with five pins
    "O 8 8 6.4 M 4.4 8.4 L 4.4 8.5 M 5.5 5.4 L 5.5 5.5 M 8 4.2 L 8 4.3 M 10.5 5.4 L 10.5 5.5 M 11.6 8.4 L 11.6 8.5 "
    "M 6.6 11.6 L 9.4 11.6",
    // settings: a gear
    "M 12.8 6.8 L 14.8 7 L 14.8 9 L 12.8 9.2 L 12.2 10.5 L 13.5 12.1 L 12.1 13.5 L 10.5 12.2 L 9.2 12.8 L 9 14.8 "
    "L 7 14.8 L 6.8 12.8 L 5.5 12.2 L 3.9 13.5 L 2.5 12.1 L 3.8 10.5 L 3.2 9.2 L 1.2 9 L 1.2 7 L 3.2 6.8 L 3.8 5.5 "
    "L 2.5 3.9 L 3.9 2.5 L 5.5 3.8 L 6.8 3.2 L 7 1.2 L 9 1.2 L 9.2 3.2 L 10.5 3.8 L 12.1 2.5 L 13.5 3.9 L 12.2 5.5 Z "
    "O 8 8 2",
    // close
    "M 4 4 L 12 12 M 12 4 L 4 12",
    // play
    "M 4.5 3 L 13 8 L 4.5 13 Z",
    // pause
    "M 5.3 3.2 L 5.3 12.8 M 10.7 3.2 L 10.7 12.8",
    // next
    "M 3.4 3.5 L 7.9 8 L 3.4 12.5 M 8.4 3.5 L 12.9 8 L 8.4 12.5",
    // back: an arrow that turns round, as two that point to the left are known from rewinding
    "M 6.3 2.6 L 2.3 6.6 L 6.3 10.6 M 2.3 6.6 L 10 6.6 C 14.6 6.6 14.6 13.2 10 13.2 L 6.5 13.2",
    // list
    "M 6 3.5 L 14 3.5 M 6 8 L 14 8 M 6 12.5 L 14 12.5 M 2.4 3.5 L 2.5 3.5 M 2.4 8 L 2.5 8 M 2.4 12.5 L 2.5 12.5",
    // listen: headphones
    "M 2.3 11 L 2.3 8.2 A 8 8.2 5.7 180 -180 L 13.7 11 M 2.3 9.2 L 4.8 9.2 L 4.8 13.8 L 2.3 13.8 Z "
    "M 13.7 9.2 L 11.2 9.2 L 11.2 13.8 L 13.7 13.8 Z",
    // tick
    "M 3.3 8.7 L 6.7 12 L 12.7 4.7",
    // dot
    "O 8 8 1.2 O 8 8 2.3",
    // down: of a list that opens
    "M 3.3 6 L 8 10.7 L 12.7 6",
    // right: of a menu that opens
    "M 6 3.3 L 10.7 8 L 6 12.7",
    // minimise
    "M 3.5 12 L 12.5 12",
    // rewind
    "M 12.6 3.5 L 8.1 8 L 12.6 12.5 M 7.6 3.5 L 3.1 8 L 7.6 12.5",
    // loop from here, to here, no loop: a line with an arrow behind or before it, a crossed circle
    "M 3.5 2.5 L 3.5 13.5 M 6.5 8 L 13.5 8 M 10.7 5.2 L 13.5 8 L 10.7 10.8",
    "M 12.5 2.5 L 12.5 13.5 M 2.5 8 L 9.5 8 M 6.7 5.2 L 9.5 8 L 6.7 10.8",
    "O 8 8 5.5 M 3 13 L 13 3",
    // a glass with plus and minus
    "O 7 7 4.5 M 10.3 10.3 L 14 14 M 5 7 L 9 7 M 7 5 L 7 9",
    "O 7 7 4.5 M 10.3 10.3 L 14 14 M 5 7 L 9 7",
    // whole: from one end to the other
    "M 2 3 L 2 13 M 14 3 L 14 13 M 4.5 8 L 11.5 8 M 6.7 5.8 L 4.5 8 L 6.7 10.2 M 9.3 5.8 L 11.5 8 L 9.3 10.2",
    // line up: two waves whose hills lie below each other
    "M 1.5 5.5 L 5 5.5 L 6.5 2 L 8 7 L 9.5 4 L 10.5 5.5 L 14.5 5.5 M 1.5 11.5 L 5 11.5 L 6.5 8.5 L 8 14 L 9.5 10.5 "
    "L 10.5 11.5 L 14.5 11.5",
};

QRectF squareAround(qreal x, qreal y, qreal radius) {
    return {x - radius, y - radius, 2 * radius, 2 * radius};
}

}  // namespace

QPainterPath symbolPath(Symbol symbol) {
    std::istringstream lines(kLines[static_cast<std::size_t>(symbol)]);
    const auto number = [&] {
        qreal value = 0;
        lines >> value;
        return value;
    };
    // Braces, as arguments would be read in any order.
    const auto point = [&] { return QPointF{number(), number()}; };
    QPainterPath path;
    for (char command = 0; lines >> command;) {
        if (command == 'Z') {
            path.closeSubpath();
            continue;
        }
        const QPointF at = point();
        if (command == 'M') path.moveTo(at);
        if (command == 'L') path.lineTo(at);
        if (command == 'C') {
            const QPointF second = point();
            path.cubicTo(at, second, point());
        }
        if (command != 'O' && command != 'A') continue;
        const QRectF circle = squareAround(at.x(), at.y(), number());
        const qreal start = command == 'A' ? number() : 0;
        if (command == 'O' || path.elementCount() == 0) path.arcMoveTo(circle, start);
        path.arcTo(circle, start, command == 'A' ? number() : 360);
    }
    return path;
}

}  // namespace melvane
