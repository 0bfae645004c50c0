#include "controls/skin.h"

#include <QPalette>
#include <QProxyStyle>
#include <utility>

#include "controls/controls_resources.h"
#include "controls/symbol_icons.h"
#include "controls/zoom.h"

namespace melvane {

namespace {

// In the order of Accent, at rest and hot.
constexpr std::pair<QRgb, QRgb> kAccents[] = {
    {skin::kSong, skin::kSongLight}, {skin::kVoice, skin::kVoiceLight}, {skin::kMix, skin::kMixLight}};

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
    {"@mix", skin::kMix},
};

constexpr const char* kStyleSheet = R"(
melvane--FramelessWindow *, QMenu, QDialog, QDialog * { font-size: 12px; }
melvane--FramelessWindow #caption { font-weight: bold; }
melvane--FramelessWindow QLabel[accent] { font-size: 11px; }
QLabel[heading="true"] { font-weight: bold; }
QLabel[accent="song"] { color: @song; }
QLabel[accent="voice"] { color: @voice; }
QLabel[accent="mix"] { color: @mix; }
#bubble { background: @raised; border: 1px solid @edge; border-radius: 3px; padding: 1px 5px; }
#MixerStart #caption { font-size: 30px; font-weight: bold; }
#MixerStart #tagLine, #status { color: @muted; }
#frmTimeline #note { font-size: 11px; color: @muted; }
#frmTimeline #note[failed="true"] { color: @recordingLight; }
#status[warned="true"] { color: @song; }
#status[failed="true"] { color: @recordingLight; }
#songStripe { background: @song; }
#voiceStripe { background: @voice; }
#path0, #path1, #path2 { background: @inset; border-left: 3px solid @song; padding: 0 8px; }
#path1 { border-left-color: @voice; }
#path2 { border-left-color: @recording; }
#path0[dropping="true"], #path1[dropping="true"], #path2[dropping="true"] { background: @hover; color: @text; }
#path0[empty="true"], #path1[empty="true"], #path2[empty="true"] { color: @muted; }

QPushButton { background: @raised; color: @text; border: 2px solid @raised; border-radius: 4px; padding: 3px 10px; }
QPushButton:hover { background: @hover; border-color: @hover; }
QPushButton:pressed { background: @inset; border-color: @inset; }
QPushButton:disabled { background: @body; border-color: @raised; color: @faint; }
QPushButton:focus { border-color: @focus; }
QPushButton[tab="true"] { background: transparent; border: none; border-bottom: 2px solid @edge; border-radius: 0;
    padding: 3px 6px; color: @muted; }
QPushButton[tab="true"]:hover { color: @text; }
QPushButton[tab="true"]:checked { border-bottom-color: @song; color: @text; }
QPushButton[tab="true"]:focus { border-bottom-color: @focus; color: @focus; }

#labPreset { background: @inset; border-color: @edge; color: @voice; padding: 0 20px 0 8px; text-align: left; }
#labPreset:hover { border-color: @voice; }
#labPreset:focus { border-color: @focus; }
#labPreset QLabel { color: @voice; }
#pList { background: @raised; border: 1px solid @voice; color: @text; outline: none; }
#pList::item { background: @raised; padding: 0 8px; width: 89px; height: 20px; }
#pList::item:hover { background: @hover; }
#pList::item:selected { background: @voice; color: @inset; }

#frmChann #hint { font-size: 10px; color: @muted; }
QLabel[hint="true"], #frmPlayer #time, #frmPlayer #loudness { font-size: 11px; color: @muted; }
#FM, #languagePage, #rehearsalPage { background: @raised; border-radius: 4px; }
QPushButton[link="true"] { background: transparent; border-color: transparent; padding: 0 3px; color: @focus;
    text-align: left; text-decoration: underline; }
QPushButton[link="true"]:hover { color: @text; }
QPushButton[link="true"]:focus { border-color: @focus; }

#about { background: @raised; color: @text; border: 1px solid @raised; border-radius: 4px; padding: 4px 2px 4px 10px; }
#about:focus { border-color: @focus; }

QMenu { background: @raised; color: @text; border: 1px solid @edge; padding: 4px 0; }
#mnuKar { min-width: 372px; }
QMenu::item { background: transparent; padding: 4px 26px; }
QMenu::item:selected { background: @song; color: @inset; }
QMenu::item:disabled { background: transparent; color: @faint; }
QMenu::indicator { left: 7px; width: 12px; height: 12px; }
QMenu::indicator:checked { image: url(tick@song.symbol); }
QMenu::indicator:checked:selected { image: url(tick@inset.symbol); }
QMenu::right-arrow { image: url(right@muted.symbol); width: 12px; height: 12px; }
QMenu::right-arrow:selected { image: url(right@inset.symbol); }
QMenu::separator { background: @edge; height: 1px; margin: 4px 8px; }

QComboBox { background: @inset; color: @text; border: 1px solid @edge; border-radius: 4px; padding: 2px 7px;
    combobox-popup: 0; }
QComboBox:hover { border-color: @muted; }
QComboBox:focus { border: 2px solid @focus; padding: 1px 6px; }
QComboBox:disabled { background: @body; color: @faint; }
QComboBox::drop-down { border: none; width: 20px; }
QComboBox::down-arrow { image: url(down@muted.symbol); width: 12px; height: 12px; }
QDoubleSpinBox { background: @inset; color: @text; border: 1px solid @edge; border-radius: 4px; padding: 2px 4px; }
QDoubleSpinBox:hover { border-color: @muted; }
QDoubleSpinBox:focus { border: 2px solid @focus; padding: 1px 3px; }
QDoubleSpinBox:disabled { background: @body; color: @faint; }
QComboBox QAbstractItemView { background: @raised; color: @text; border: 1px solid @edge; outline: none;
    selection-background-color: @song; selection-color: @inset; }

QLineEdit { background: @inset; color: @text; border: 1px solid @edge; border-radius: 4px; padding: 1px 5px; }
QLineEdit:hover { border-color: @muted; }
QLineEdit:focus { border: 2px solid @focus; padding: 0 4px; }
QLineEdit:disabled { background: @body; color: @faint; }
#frmTags #picture { background: @inset; border: 1px solid @edge; border-radius: 4px; color: @muted; padding: 2px; }

QListWidget { background: @inset; color: @text; border: 1px solid @edge; outline: none; }
QListWidget:focus { border-color: @focus; }
QListWidget::item { background: @inset; padding: 2px 8px; }
#List3::item { padding: 0 8px; height: 18px; }
QListWidget::item:hover { background: @hover; }
QListWidget::item:selected { background: @song; color: @inset; }

QCheckBox, QRadioButton { color: @text; spacing: 7px; }
QCheckBox:disabled, QRadioButton:disabled { color: @faint; }
QCheckBox::indicator, QRadioButton::indicator { background: @inset; border: 1px solid @muted; width: 12px;
    height: 12px; }
QCheckBox::indicator { border-radius: 3px; }
QRadioButton::indicator { border-radius: 7px; }
QCheckBox::indicator:hover, QRadioButton::indicator:hover { border-color: @text; }
QCheckBox::indicator:checked { background: @song; image: url(tick@inset.symbol); }
QRadioButton::indicator:checked { background: @song; image: url(dot@inset.symbol); }
QCheckBox::indicator:disabled, QRadioButton::indicator:disabled { background: @hover; border-color: @faint; }
QCheckBox:focus, QRadioButton:focus { color: @focus; }
QCheckBox::indicator:focus, QRadioButton::indicator:focus { border-color: @focus; }

QScrollBar:vertical { background: @inset; border: none; width: 10px; margin: 0; }
QScrollBar::handle:vertical { background: @faint; border-radius: 4px; margin: 1px; min-height: 18px; }
QScrollBar::handle:vertical:hover { background: @muted; }
QScrollBar::add-line:vertical, QScrollBar::sub-line:vertical { height: 0; }
QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical { background: transparent; }
QScrollBar:horizontal { background: @inset; border: none; height: 10px; margin: 0; }
QScrollBar::handle:horizontal { background: @faint; border-radius: 4px; margin: 1px; min-width: 18px; }
QScrollBar::handle:horizontal:hover { background: @muted; }
QScrollBar::add-line:horizontal, QScrollBar::sub-line:horizontal { width: 0; }
QScrollBar::add-page:horizontal, QScrollBar::sub-page:horizontal { background: transparent; }
QFileDialog { min-width: 460px; min-height: 300px; }
QToolTip { background: @raised; color: @text; border: 1px solid @faint; padding: 3px 5px; font-size: 12px; }
)";

// What the style sheet leaves open, as in boxes and file dialogs.
class ZoomedStyle : public QProxyStyle {
public:
    ZoomedStyle() : QProxyStyle(QStringLiteral("Fusion")) {}
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override {
        const int units = QProxyStyle::pixelMetric(metric, option, widget);
        return units > 0 ? zoomed(units) : units;
    }
};

QPalette darkPalette() {
    QPalette palette{QColor(skin::kRaised), QColor(skin::kBody)};
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
    initControlsResources();
    initSymbolIcons();
    QApplication::setStyle(new ZoomedStyle);
    QApplication::setPalette(darkPalette());
    app.setStyleSheet(styleSheet());
}

QString styleSheet() {
    QString sheet = zoomedStyle(QLatin1String(kStyleSheet));
    for (const auto& [name, value] : kColours) sheet.replace(QLatin1String(name), QColor(value).name());
    return sheet;
}

void setStyleState(QWidget& widget, const char* state, bool on) {
    if (widget.property(state) == QVariant(on)) return;
    widget.setProperty(state, on);
    widget.style()->unpolish(&widget);
    widget.style()->polish(&widget);
}

QColor accentColour(Accent accent) {
    return kAccents[static_cast<std::size_t>(accent)].first;
}

PartColours partColours(const QWidget& widget, Accent accent, bool pressed) {
    const QColor colour = accentColour(accent);
    if (!widget.isEnabled()) return {skin::kBody, skin::kHover, skin::kFaint};
    if (pressed) return {skin::kInset, colour, colour};
    if (!widget.underMouse()) return {colour, colour, skin::kInset};
    const QColor light = kAccents[static_cast<std::size_t>(accent)].second;
    return {light, light, skin::kInset};
}

}  // namespace melvane
