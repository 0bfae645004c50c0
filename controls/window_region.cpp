#include "controls/window_region.h"

#include <QDataStream>
#include <QFile>
#include <cstddef>
#include <utility>
#include <vector>

#include "controls/controls_resources.h"

namespace melvane {

namespace {

// Places of the header's fields, each of 32 bits.
constexpr std::size_t kHeaderSizeAt = 0;
constexpr std::size_t kTypeAt = 1;
constexpr std::size_t kCountAt = 2;
constexpr std::size_t kDataSizeAt = 3;
constexpr std::size_t kBoundAt = 4;
constexpr std::size_t kHeader = 8;
constexpr std::size_t kRectangle = 4;
constexpr std::size_t kFieldBytes = 4;
constexpr qint32 kRectanglesType = 1;
constexpr int kLargest = 0x7FFF;  // no window is larger

using Fields = std::vector<qint32>;

Fields fieldsOf(const QByteArray& data) {
    Fields fields(static_cast<std::size_t>(data.size()) / kFieldBytes);
    QDataStream stream(data);
    stream.setByteOrder(QDataStream::LittleEndian);
    for (qint32& field : fields) stream >> field;
    return fields;
}

// An empty one when the fields make no rectangle of a window.
QRect rectangleAt(const Fields& fields, std::size_t place) {
    const int left = fields[place];
    const int top = fields[place + 1];
    const int right = fields[place + 2];
    const int bottom = fields[place + 3];
    if (left < 0 || top < 0 || right > kLargest || bottom > kLargest || left >= right || top >= bottom) return {};
    return {left, top, right - left, bottom - top};
}

bool hasGoodHeader(const Fields& fields) {
    if (fields.size() < kHeader) return false;
    const std::size_t size = fields.size() - kHeader;
    const auto is = [&](std::size_t place, std::size_t value) { return std::cmp_equal(fields[place], value); };
    return is(kHeaderSizeAt, kHeader * kFieldBytes) && fields[kTypeAt] == kRectanglesType &&
           is(kDataSizeAt, size * kFieldBytes) && size % kRectangle == 0 && is(kCountAt, size / kRectangle);
}

}  // namespace

QRegion regionFromData(const QByteArray& data) {
    const Fields fields = fieldsOf(data);
    if (data.size() % qsizetype{kFieldBytes} != 0 || !hasGoodHeader(fields)) return {};
    const QRect bound = rectangleAt(fields, kBoundAt);
    QRegion region;
    for (std::size_t place = kHeader; place < fields.size(); place += kRectangle) {
        const QRect rectangle = rectangleAt(fields, place);
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
