#include "controls/skin.h"

#include <QPalette>
#include <QStyle>
#include <utility>

namespace melvane {

namespace {

// The colours by their names in the style sheet. A name that begins with another one stands before it.
constexpr std::pair<const char*, QRgb> kColours[] = {
    {"@body", skin::kBody},
    {"@raised", skin::kRaised},
    {"@hover", skin::kHover},
    {"@inset", skin::kInset},
    {"@edge", skin::kEdge},
    {"@text", skin::kText},
    {"@muted", skin::kMuted},
    {"@faint", skin::kFaint},
    {"@songLight", skin::kSongLight},
    {"@song", skin::kSong},
    {"@voiceLight", skin::kVoiceLight},
    {"@voice", skin::kVoice},
    {"@recordingLight", skin::kRecordingLight},
    {"@recording", skin::kRecording},
    {"@focus", skin::kFocus},
};

constexpr const char* kStyleSheet = R"(
#frmMain, #frmEff, #MixerStart { background: @body; border: 1px solid @edge; }
#frmMain *, #frmEff *, #MixerStart * { font-size: 12px; }
#frmMain #caption, #frmEff #caption { font-weight: bold; }
#frmMain QLabel[accent], #frmEff QLabel[accent] { font-size: 11px; }
QLabel[heading="true"] { font-weight: bold; }
QLabel[accent="song"] { color: @song; }
QLabel[accent="voice"] { color: @voice; }
#bubble { background: @raised; border: 1px solid @edge; border-radius: 3px; padding: 1px 5px; }
#MixerStart #caption { font-size: 30px; font-weight: bold; }
#MixerStart #tagLine, #status { color: @muted; }
#status[failed="true"] { color: @recordingLight; }
#songStripe { background: @song; }
#voiceStripe { background: @voice; }
#path0, #path1, #path2 { background: @inset; border-left: 3px solid @song; padding: 0 8px; }
#path1 { border-left-color: @voice; }
#path2 { border-left-color: @recording; }
#path0[empty="true"], #path1[empty="true"], #path2[empty="true"] { color: @muted; }

QPushButton { background: @raised; color: @text; border: 2px solid @raised; border-radius: 4px; padding: 3px 10px; }
QPushButton:hover { background: @hover; border-color: @hover; }
QPushButton:pressed { background: @inset; border-color: @inset; }
QPushButton:disabled { background: @body; border-color: @raised; color: @faint; }
QPushButton:focus { border-color: @focus; }
#BR0, #BR1, #BR2, #bClose { padding: 0; }
#bClose { background: transparent; border-color: transparent; color: @muted; }
#bClose:hover { background: @recording; border-color: @recording; color: @inset; }
#bClose:pressed { background: @inset; border-color: @inset; color: @text; }
#mi_button, #b_STOP, #CON { font-weight: bold; }
#mi_button, #CON { background: @song; border-color: @song; color: @inset; }
#mi_button:hover, #CON:hover { background: @songLight; border-color: @songLight; }
#mi_button:pressed, #CON:pressed { background: @inset; border-color: @song; color: @song; }
#b_STOP { background: @recording; border-color: @recording; color: @inset; }
#b_STOP:hover { background: @recordingLight; border-color: @recordingLight; }
#b_STOP:pressed { background: @inset; border-color: @recording; color: @recordingLight; }
#mi_button:disabled, #b_STOP:disabled, #CON:disabled { background: @body; border-color: @raised; color: @faint; }
#mi_button[running="true"]:disabled { background: @inset; border-color: @song; color: @song; }
#bClose:focus { border-color: @focus; }
#mi_button:focus, #b_STOP:focus, #CON:focus { border: 3px solid @focus; }

#labPreset { background: @inset; border-color: @edge; color: @voice; padding: 0 20px 0 8px; text-align: left; }
#labPreset:hover { border-color: @voice; }
#labPreset:focus { border-color: @focus; }
#labPreset QLabel { color: @voice; }
#pList { background: @raised; border: 1px solid @voice; color: @text; outline: none; }
#pList::item { background: @raised; padding: 0 8px; }
#pList::item:hover { background: @hover; }
#pList::item:selected { background: @voice; color: @inset; }

QProgressBar { background: @inset; border: none; }
QProgressBar::chunk { background: @song; }
QToolTip { background: @raised; color: @text; border: 1px solid @edge; padding: 2px; }
)";

QPalette darkPalette() {
    QPalette palette(QColor(skin::kRaised), QColor(skin::kBody));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        palette.setColor(role, skin::kText);
    palette.setColor(QPalette::Base, skin::kInset);
    palette.setColor(QPalette::AlternateBase, skin::kBody);
    palette.setColor(QPalette::ToolTipBase, skin::kRaised);
    palette.setColor(QPalette::PlaceholderText, skin::kMuted);
    palette.setColor(QPalette::Highlight, skin::kFocus);
    palette.setColor(QPalette::HighlightedText, skin::kInset);
    palette.setColor(QPalette::Link, skin::kFocus);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, skin::kFaint);
    return palette;
}

}  // namespace

void applyStyle(QApplication& app) {
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setPalette(darkPalette());
    QString sheet = QLatin1String(kStyleSheet);
    for (const auto& [name, value] : kColours) sheet.replace(QLatin1String(name), QColor(value).name());
    app.setStyleSheet(sheet);
}

void setStyleState(QWidget& widget, const char* state, bool on) {
    if (widget.property(state) == QVariant(on)) return;
    widget.setProperty(state, on);
    widget.style()->unpolish(&widget);
    widget.style()->polish(&widget);
}

QColor accentColour(Accent accent) {
    return accent == Accent::song ? skin::kSong : skin::kVoice;
}

PartColours partColours(const QWidget& widget, Accent accent, bool pressed) {
    const QColor colour = accentColour(accent);
    if (!widget.isEnabled()) return {skin::kBody, skin::kHover, skin::kFaint};
    if (pressed) return {skin::kInset, colour, colour};
    if (!widget.underMouse()) return {colour, colour, skin::kInset};
    const QColor light = accent == Accent::song ? skin::kSongLight : skin::kVoiceLight;
    return {light, light, skin::kInset};
}

}  // namespace melvane
