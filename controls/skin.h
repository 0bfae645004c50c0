// How the windows look: dark, with one colour for the song and one for the voice.
#pragma once

#include <QApplication>
#include <QColor>
#include <QWidget>

namespace melvane {

namespace skin {

inline constexpr QRgb kBody = 0xFF20242B;
inline constexpr QRgb kRaised = 0xFF2F3641;
inline constexpr QRgb kHover = 0xFF3D4654;
inline constexpr QRgb kInset = 0xFF171A1F;
inline constexpr QRgb kEdge = 0xFF3A424E;
inline constexpr QRgb kText = 0xFFE6E9EE;
inline constexpr QRgb kMuted = 0xFF9AA3AF;
inline constexpr QRgb kFaint = 0xFF646D79;
inline constexpr QRgb kSong = 0xFFF2A541;
inline constexpr QRgb kSongLight = 0xFFF8BC6C;
inline constexpr QRgb kVoice = 0xFF3EC1B3;
inline constexpr QRgb kVoiceLight = 0xFF75D8CD;
inline constexpr QRgb kRecording = 0xFFE5484D;
inline constexpr QRgb kRecordingLight = 0xFFF0727A;
inline constexpr QRgb kFocus = 0xFF8AB4F8;

}  // namespace skin

// Whom a control belongs to.
enum class Accent { song, voice };

// Colours for every window and dialog of the program; before the first window is made.
void applyStyle(QApplication& app);

// Sets a property that the style sheet asks for, such as "running".
void setStyleState(QWidget& widget, const char* state, bool on);

// How the parts of a control are painted in its present state.
struct PartColours {
    QColor fill;
    QColor border;
    QColor mark;  // what is drawn on the fill
};

// `widget` is asked whether it is enabled and under the mouse.
PartColours partColours(const QWidget& widget, Accent accent, bool pressed);
QColor accentColour(Accent accent);

}  // namespace melvane
