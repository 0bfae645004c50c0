// What the main window is made of: its buttons, rows and menu, where they are, what they say, and when they can be
// used.
#include "app/frmMain.h"
#include "base/paths.h"
#include "controls/control_name.h"
#include "controls/window_layout.h"
#include "controls/zoom.h"

namespace melvane {

namespace {

constexpr short kListButton = 2;

constexpr QRect kBrowse(254, 31, 36, 24);  // of the first row
constexpr int kRowStep = 28;
constexpr int kGap = 6;
constexpr int kButtonsY = 117;
constexpr int kButtonHeight = 26;
constexpr QRect kMix(kLeft, kButtonsY, 94, kButtonHeight);
constexpr QRect kStop(kMix.right() + 1 + kGap, kButtonsY, 70, kButtonHeight);
constexpr QRect kMidi(188, kButtonsY, 30, kButtonHeight);
constexpr QRect kEffects(224, kButtonsY, 30, kButtonHeight);
constexpr QRect kListen(260, kButtonsY, 30, kButtonHeight);
constexpr QRect kProgress(kLeft, 148, OverviewBar::kColumns, 22);
constexpr QRect kStatus(kLeft, 172, kRight - kLeft, 18);
constexpr QRect kHelp = kClose.translated(-30, 0);
constexpr QPoint kMenu(kHelp.x() - 28, 2);
constexpr QRect kMinimise(kMenu.x() - 28, kHelp.y(), 24, kHelp.height());

constexpr std::array kBrowseEntries = {LangEntry::browseBackground, LangEntry::browseVocal,
                                       LangEntry::browseDestination};
constexpr std::array kRowSymbols = {Symbol::open, Symbol::open, Symbol::save};

}  // namespace

void frmMain::addRow(int index) {
    const auto row = static_cast<std::size_t>(index);
    const QRect browse = kBrowse.translated(0, index * kRowStep);
    path_[row] = new ElidedLabel(this, Qt::ElideMiddle);
    path_[row]->setObjectName(QStringLiteral("path%1").arg(index));
    layOut(path_[row], {kLeft, browse.y(), browse.x() - kGap - kLeft, browse.height()});
    const QByteArray name = QByteArrayLiteral("BR") + QByteArray::number(index);
    BR_[row] = add(name.constData(), browse, ButtonLook::plain, kRowSymbols[row], [this, index] { BR_Click(index); });
}

void frmMain::addButtons() {
    mi_button_ = add("mi_button", kMix, ButtonLook::song, Symbol::mix, [this] { mi_button_Click(); });
    b_STOP_ = add("b_STOP", kStop, ButtonLook::recording, Symbol::stop, [this] { b_STOP_Click(); });
    b_midi_ = add("b_midi", kMidi, ButtonLook::plain, Symbol::midi, [this] { windows_->showChannels(); });
    b_midi_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(b_midi_, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& place) { menu_->mnuMidi()->popup(b_midi_->mapToGlobal(place)); });
    b_eff_ = add("b_eff", kEffects, ButtonLook::plain, Symbol::effects, [this] { windows_->showEffects(); });
    b_listen_ = add("b_listen", kListen, ButtonLook::plain, Symbol::listen, [this] { listen(); });
    bMinimise_ = add("bMinimise", kMinimise, ButtonLook::bar, Symbol::minimise, [this] { showMinimized(); });
    bMinimise_->setFocusPolicy(Qt::TabFocus);  // a Space in the window that came back would send it away again
    b_menu_ = addNavButton(this, "b_menu", kMenu, kListButton,
                           [this] { menu_->mnuKar()->popup(b_menu_->mapToGlobal(QPoint(0, b_menu_->height()))); });
    bHelp_ = add("bHelp", kHelp, ButtonLook::bar, Symbol::settings, [this] { windows_->showPreferences(); });
    bClose_ = add("bClose", kClose, ButtonLook::close, Symbol::close, [this] { close(); });
}

void frmMain::addStatus() {
    status_ = new StatusRow(this, environment_.library, waveforms_, kProgress, kStatus);
    connect(status_->overview(), &OverviewBar::clicked, this,
            [this] { perform([this] { windows_->showTimeline(); }); });
    connect(status_, &StatusRow::read, this, [this] { refreshStatus(mixer_.isRunning()); });
}

Ed_Button* frmMain::add(const char* name, const QRect& place, ButtonLook look, Symbol symbol,
                        std::function<void()> click) {
    return addButton(this, name, place, look, symbol, [this, click = std::move(click)] { perform(click); });
}

void frmMain::addMenu() {
    menu_ = new frmMenu(mixer_.midi().state(), environment_.language, this);
    const auto on = [this](auto signal, std::function<void()> action) {
        connect(menu_, signal, this, [this, action = std::move(action)] { perform(action); });
    };
    connect(menu_, &frmMenu::browse, this, [this](int index) { perform([&] { BR_Click(index); }); });
    on(&frmMenu::preferences, [this] { windows_->showPreferences(); });
    on(&frmMenu::help, [this] { openHelp(); });
    on(&frmMenu::about, [this] { windows_->showAbout(); });
    on(&frmMenu::closeWanted, [this] { close(); });
    on(&frmMenu::mix, [this] { mi_button_Click(); });
    on(&frmMenu::stop, [this] { b_STOP_Click(); });
    on(&frmMenu::listen, [this] { listen(); });
    on(&frmMenu::rehearse, [this] { windows_->showTimeline(); });
    on(&frmMenu::tags, [this] { windows_->showTags(); });
    on(&frmMenu::showChannels, [this] { windows_->showChannels(); });
    on(&frmMenu::restoreMidi, [this] { mixer_.midi().MidiRestore(); });
    connect(menu_->recentMenu(), &QMenu::aboutToShow, this, &frmMain::fillRecentJobs);
}

void frmMain::SetMainLanguage() {
    const modLang& language = environment_.language;
    for (std::size_t i = 0; i < BR_.size(); ++i) setButtonText(BR_[i], {}, toQt(language.lang(kBrowseEntries[i])));
    const QString mix = toQt(language.ownText(OwnText::mix));
    const QString stop = toQt(language.ownText(OwnText::stop));
    setButtonText(mi_button_, mix, mix);
    setButtonText(b_STOP_, stop, stop);
    setButtonText(b_midi_, {}, toQt(language.ownText(OwnText::midiChannels)));
    setButtonText(b_eff_, {}, toQt(language.ownText(OwnText::effects)));
    setButtonText(b_listen_, {}, toQt(language.ownText(OwnText::listenToLastMix)));
    setName(b_menu_, toQt(language.ownText(OwnText::menuButton)));
    setButtonText(bMinimise_, {}, toQt(language.ownText(OwnText::minimise)));
    setButtonText(bHelp_, {}, toQt(language.lang(LangEntry::preferences)));
    setButtonText(bClose_, {}, toQt(language.lang(LangEntry::close)));
    status_->overview()->setAccessibleName(toQt(language.ownText(OwnText::mixProgress)));
    sliders_->SetMainLanguage();
    levels_.SetMainLanguage();
    menu_->SetMenuLanguage();
    windows_->SetMainLanguage();
    refresh();
}

// The focus goes with the run: from the mix button to the progress, where a stray key does nothing, and back.
void frmMain::switchButton(Ed_Button* button, bool on) {
    if (!on && focusWidget() == button) button->clearFocus();
    button->setEnabled(on);
}

void frmMain::refreshButtons(bool running) {
    const bool idle = !running && !files_.choosing;
    const bool canStop = fast_.going() || (running && (!mixer_.mixingRun().busy() || mixer_.mixingRun().opening()));
    for (Ed_Button* button : BR_) switchButton(button, idle);
    switchButton(mi_button_, idle && !fast_.going());
    switchButton(b_STOP_, canStop);
    switchButton(b_listen_, canListen());
    menu_->setRunning(!idle);
    menu_->setCanMix(idle && !fast_.going());
    const std::string whyNot = whyNoFastMix();
    menu_->setCanMixFast(idle && !fast_.going() && whyNot.empty(), toQt(whyNot));
    menu_->setCanStop(canStop);
    menu_->setCanListen(canListen());
    const bool parked = !focusWidget() || focusWidget() == status_->overview();
    if (parked && !idle) status_->overview()->setFocus();
    if (parked && idle) mi_button_->setFocus();
}

}  // namespace melvane
