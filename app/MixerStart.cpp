#include "app/MixerStart.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QScreen>

#include "app/source_files.h"
#include "controls/window_layout.h"
#include "controls/window_region.h"
#include "controls/zoom.h"

namespace melvane {

namespace {

constexpr int kGripEverywhere = 174;
constexpr QRect kContinue(52, 120, 170, 32);
constexpr QRect kCloseButton(274 - kLeft - 24, 4, 24, 22);

void addLabel(QWidget* parent, const char* name, const QRect& place, const std::string& text = {}) {
    auto* label = new QLabel(toQt(text), parent);
    label->setObjectName(QLatin1String(name));
    label->setAlignment(Qt::AlignCenter);
    layOut(label, place);
}

}  // namespace

MixerStart::MixerStart(const modLang& language) : FramelessWindow(kStartRegion, kGripEverywhere) {
    setObjectName(QStringLiteral("MixerStart"));
    setWindowTitle(QLatin1String(kProductCaption));
    addLabel(this, "caption", {12, 26, 250, 36}, kProductCaption);
    addLabel(this, "songStripe", {97, 69, 39, 3});
    addLabel(this, "voiceStripe", {138, 69, 39, 3});
    addLabel(this, "tagLine", {6, 82, 262, 20}, language.ownText(OwnText::tagLine));
    CON_ = addButton(this, "CON", kContinue, ButtonLook::song, Symbol::next, [this] {
        CON_->setEnabled(false);
        Q_EMIT continued();
    });
    setButtonText(CON_, toQt(language.lang(LangEntry::continueToMixer)),
                  toQt(language.ownText(OwnText::continueToMixer)));
    bClose_ = addButton(this, "bClose", kCloseButton, ButtonLook::close, Symbol::close, [this] { close(); });
    setButtonText(bClose_, {}, toQt(language.lang(LangEntry::close)));
    CON_->setFocus();
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
}

void MixerStart::closeEvent(QCloseEvent* event) {
    FramelessWindow::closeEvent(event);
    Q_EMIT closed();
}

void MixerStart::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        close();
    else
        FramelessWindow::keyPressEvent(event);
}

}  // namespace melvane
