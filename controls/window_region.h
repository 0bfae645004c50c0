// The outlines of the windows, stored as lists of rectangles in the RGNDATA layout.
#pragma once

#include <QByteArray>
#include <QRegion>
#include <cstdint>

namespace melvane {

// Outlines by their resource ids.
inline constexpr std::int16_t kMainRegion = 101;
inline constexpr std::int16_t kWideRegion = 102;  // effects, channels, preferences
inline constexpr std::int16_t kPlayerRegion = 103;
inline constexpr std::int16_t kStartRegion = 104;  // start window, picker

// In pixels of the window. Empty when there is no such resource or it is damaged: the window is a rectangle then.
QRegion RegionFromResource(std::int16_t id);

// The same of a resource's bytes.
QRegion regionFromData(const QByteArray& data);

}  // namespace melvane
