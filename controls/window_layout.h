// What the wide windows have in common: where they are held, their margins, caption and close button.
#pragma once

#include <QRect>
#include <QString>
#include <string>

namespace melvane {

inline constexpr int kGripHeight = 21;
inline constexpr int kLeft = 12;
inline constexpr int kRight = 448;
inline constexpr QRect kCaption(kLeft, 2, 200, 26);
inline constexpr QRect kClose(kRight - 24, 4, 24, 22);

inline QString toQt(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

}  // namespace melvane
