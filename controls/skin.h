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

// What belongs to song and voice alike.
inline constexpr QRgb kMix = 0xFFB9C4D6;
inline constexpr QRgb kMixLight = 0xFFDCE3EE;

// The body of a window: its strip at the top, and from there to the bottom.
inline constexpr QRgb kStrip = 0xFF343B47;
inline constexpr QRgb kBodyLow = 0xFF2B313A;

// Faces of buttons are light: their captions are dark.
inline constexpr QRgb kCaption = 0xFF404040;
inline constexpr QRgb kCaptionHot = 0xFF0000C0;
inline constexpr QRgb kKey = 0xFFC9CFD8;
inline constexpr QRgb kKeyLight = 0xFFDFE4EA;
inline constexpr QRgb kKeyOff = 0xFF6F7782;
inline constexpr QRgb kWhite = 0xFFFFFFFF;
inline constexpr QRgb kSongHot = 0xFFFCD9A6;
inline constexpr QRgb kVoiceHot = 0xFFABE9E2;
inline constexpr QRgb kStop = 0xFFF4969B;
inline constexpr QRgb kStopLight = 0xFFF8B4B8;
inline constexpr QRgb kStopHot = 0xFFFCD3D5;

}  // namespace skin

// What a control belongs to.
enum class Accent { song, voice, mix };

// Colours for every window and dialog of the program; before the first window is made.
void applyStyle(QApplication& app);
// Of all of them, at the present zoom.
QString styleSheet();

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
