// What the wide windows have in common: the strip they are held by, with caption and close button, and their margins.
#pragma once

#include <QRect>
#include <QString>
#include <string>

namespace melvane {

inline constexpr int kGripHeight = 21;
inline constexpr int kLeft = 12;
inline constexpr int kRight = 448;
inline constexpr QRect kCaption(kLeft, 1, 200, kGripHeight - 1);
inline constexpr QRect kClose(kRight - 24, 1, 24, kGripHeight - 1);

inline QString toQt(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

}  // namespace melvane
