#include "controls/button_pictures.h"

#include <algorithm>

#include "controls/skin.h"
#include "controls/symbol_paths.h"

namespace melvane {

namespace {

constexpr qreal kMargin = 2;  // around the face, for the focus ring
constexpr qreal kRadius = 4;
constexpr qreal kStroke = 1.6;
constexpr int kLargestSymbol = 16;
constexpr int kSymbolMargin = 6;
constexpr double kCaptionRatio = 1.6;  // of width and height, from which on there is room for a caption

struct Face {
    QRgb top;
    QRgb bottom;
    QRgb symbol;
};

// In the order of ButtonLook; at rest, and under the mouse.
constexpr Face kFaces[][2] = {
    {{skin::kKeyLight, skin::kKey, skin::kCaption}, {skin::kWhite, skin::kKeyLight, skin::kCaptionHot}},
    {{skin::kSongLight, skin::kSong, skin::kCaption}, {skin::kSongHot, skin::kSongLight, skin::kCaptionHot}},
    {{skin::kStopLight, skin::kStop, skin::kCaption}, {skin::kStopHot, skin::kStopLight, skin::kCaptionHot}},
    {{0, 0, skin::kMuted}, {skin::kRecordingLight, skin::kRecording, skin::kWhite}},
    {{0, 0, skin::kMuted}, {skin::kKeyLight, skin::kKey, skin::kCaptionHot}},
    {{skin::kInset, skin::kInset, skin::kSong}, {skin::kInset, skin::kInset, skin::kSongLight}},
};
constexpr Face kDisabled = {skin::kKeyOff, skin::kKeyOff, skin::kCaption};
constexpr Face kBareDisabled = {0, 0, skin::kFaint};

QRectF faceRect(const QSize& size) {
    return QRectF(QPointF(), QSizeF(size)).adjusted(kMargin, kMargin, -kMargin, -kMargin);
}

void drawFace(QPainter& painter, const Face& face, const QRectF& place) {
    if (qAlpha(face.bottom) == 0) return;
    QLinearGradient gradient(place.topLeft(), place.bottomLeft());
    gradient.setColorAt(0, QColor(face.top));
    gradient.setColorAt(1, QColor(face.bottom));
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(skin::kInset));
    painter.drawRoundedRect(place.adjusted(-1, -1, 1, 1), kRadius + 1, kRadius + 1);
    painter.setBrush(gradient);
    painter.drawRoundedRect(place, kRadius, kRadius);
}

void drawSymbol(QPainter& painter, Symbol symbol, QRgb colour, const QSize& button) {
    const int side = std::min(kLargestSymbol, std::min(button.width(), button.height()) - kSymbolMargin);
    if (symbol == Symbol::none || side <= 0) return;
    const qreal middle = fitsCaption(button) ? button.width() * 0.75 : button.width() / 2.0;
    const qreal scale = side / kSymbolGrid;
    painter.translate(qRound(middle - side / 2.0), qRound((button.height() - side) / 2.0));
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(colour), kStroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(QTransform::fromScale(scale, scale).map(symbolPath(symbol)));
}

QPicture picture(const Face& face, Symbol symbol, const QSize& size) {
    QPicture made;
    QPainter painter(&made);
    painter.setRenderHint(QPainter::Antialiasing);
    drawFace(painter, face, faceRect(size));
    drawSymbol(painter, symbol, face.symbol, size);
    return made;
}

}  // namespace

bool fitsCaption(const QSize& button) {
    return button.width() >= kCaptionRatio * button.height();
}

ButtonPictures buttonPictures(ButtonLook look, Symbol symbol, const QSize& size) {
    const auto& [rest, hot] = kFaces[static_cast<std::size_t>(look)];
    return {picture(rest, symbol, size), picture(hot, symbol, size),
            picture(qAlpha(rest.bottom) == 0 ? kBareDisabled : kDisabled, symbol, size)};
}

void drawPicture(QPainter& painter, const QPicture& picture) {
    painter.save();
    // Pictures grow with the device's dots per inch; windows are laid out in pixels.
    painter.scale(qreal(picture.logicalDpiX()) / painter.device()->logicalDpiX(),
                  qreal(picture.logicalDpiY()) / painter.device()->logicalDpiY());
    painter.drawPicture(QPointF(), picture);
    painter.restore();
}

void drawButtonState(QPainter& painter, const QAbstractButton& button, const QSize& size) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF face = faceRect(size);
    if (button.isDown()) {
        QLinearGradient shade(face.topLeft(), face.bottomLeft());
        shade.setColorAt(0, QColor(0, 0, 0, 70));
        shade.setColorAt(1, QColor(0, 0, 0, 20));
        painter.setPen(Qt::NoPen);
        painter.setBrush(shade);
        painter.drawRoundedRect(face, kRadius, kRadius);
    }
    if (button.hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(QColor(skin::kInset), 1));
        painter.drawRoundedRect(face.adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
        painter.setPen(QPen(QColor(skin::kFocus), kMargin));
        painter.drawRoundedRect(face.adjusted(-1, -1, 1, 1), kRadius + 1, kRadius + 1);
    }
    painter.restore();
}

}  // namespace melvane
