#include "controls/window_region.h"

#include <QFile>
#include <QtEndian>

#include "controls/controls_resources.h"

namespace melvane {

namespace {

// Byte offsets of the header, each field of 32 bits.
constexpr qsizetype kHeaderSizeAt = 0;
constexpr qsizetype kTypeAt = 4;
constexpr qsizetype kCountAt = 8;
constexpr qsizetype kDataSizeAt = 12;
constexpr qsizetype kBoundAt = 16;
constexpr qsizetype kHeader = 32;
constexpr qsizetype kRectangle = 16;
constexpr qsizetype kRectanglesType = 1;
constexpr int kLargest = 0x7FFF;  // no window is larger

qint32 fieldAt(const QByteArray& data, qsizetype offset) {
    return qFromLittleEndian<qint32>(data.constData() + offset);
}

// An empty one when the fields make no rectangle of a window.
QRect rectangleAt(const QByteArray& data, qsizetype offset) {
    const int left = fieldAt(data, offset);
    const int top = fieldAt(data, offset + 4);
    const int right = fieldAt(data, offset + 8);
    const int bottom = fieldAt(data, offset + 12);
    if (left < 0 || top < 0 || right > kLargest || bottom > kLargest || left >= right || top >= bottom) return {};
    return {left, top, right - left, bottom - top};
}

bool hasGoodHeader(const QByteArray& data) {
    if (data.size() < kHeader) return false;
    const qsizetype size = data.size() - kHeader;
    return fieldAt(data, kHeaderSizeAt) == kHeader && fieldAt(data, kTypeAt) == kRectanglesType &&
           fieldAt(data, kDataSizeAt) == size && size % kRectangle == 0 && fieldAt(data, kCountAt) == size / kRectangle;
}

}  // namespace

QRegion regionFromData(const QByteArray& data) {
    if (!hasGoodHeader(data)) return {};
    const QRect bound = rectangleAt(data, kBoundAt);
    QRegion region;
    for (qsizetype offset = kHeader; offset < data.size(); offset += kRectangle) {
        const QRect rectangle = rectangleAt(data, offset);
        if (rectangle.isEmpty() || !bound.contains(rectangle)) return {};
        region += rectangle;
    }
    return region;
}

QRegion RegionFromResource(std::int16_t id) {
    initControlsResources();
    QFile resource(QStringLiteral(":/RGN/%1").arg(id));
    return resource.open(QIODevice::ReadOnly) ? regionFromData(resource.readAll()) : QRegion();
}

}  // namespace melvane
