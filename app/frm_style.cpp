#include "app/frm_style.h"

#include <QPalette>
#include <QStyle>
#include <utility>

namespace melvane {

namespace {

// The colours by their names in the style sheet. A name that begins with another one stands before it.
constexpr std::pair<const char*, const char*> kColours[] = {
    {"@body", "#20242B"},      {"@raised", "#2F3641"}, {"@hover", "#3D4654"}, {"@inset", "#171A1F"},
    {"@edge", "#3A424E"},      {"@text", "#E6E9EE"},   {"@muted", "#9AA3AF"}, {"@faint", "#646D79"},
    {"@songLight", "#F8BC6C"}, {"@song", "#F2A541"},   {"@voice", "#3EC1B3"}, {"@recordingLight", "#F0727A"},
    {"@recording", "#E5484D"}, {"@focus", "#8AB4F8"},
};

constexpr const char* kStyleSheet = R"(
#frmMain, #MixerStart { background: @body; border: 1px solid @edge; }
#frmMain *, #MixerStart * { font-size: 12px; }
#frmMain #caption { font-weight: bold; }
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

QProgressBar { background: @inset; border: none; }
QProgressBar::chunk { background: @song; }
QToolTip { background: @raised; color: @text; border: 1px solid @edge; padding: 2px; }
)";

QColor colour(const char* wanted) {
    for (const auto& [name, value] : kColours)
        if (qstrcmp(name, wanted) == 0) return QColor(QLatin1String(value));
    return {};
}

QPalette darkPalette() {
    QPalette palette(colour("@raised"), colour("@body"));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        palette.setColor(role, colour("@text"));
    palette.setColor(QPalette::Base, colour("@inset"));
    palette.setColor(QPalette::AlternateBase, colour("@body"));
    palette.setColor(QPalette::ToolTipBase, colour("@raised"));
    palette.setColor(QPalette::PlaceholderText, colour("@muted"));
    palette.setColor(QPalette::Highlight, colour("@focus"));
    palette.setColor(QPalette::HighlightedText, colour("@inset"));
    palette.setColor(QPalette::Link, colour("@focus"));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, colour("@faint"));
    return palette;
}

}  // namespace

void applyStyle(QApplication& app) {
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setPalette(darkPalette());
    QString sheet = QLatin1String(kStyleSheet);
    for (const auto& [name, value] : kColours) sheet.replace(QLatin1String(name), QLatin1String(value));
    app.setStyleSheet(sheet);
}

void setStyleState(QWidget& widget, const char* state, bool on) {
    if (widget.property(state) == QVariant(on)) return;
    widget.setProperty(state, on);
    widget.style()->unpolish(&widget);
    widget.style()->polish(&widget);
}

}  // namespace melvane
