#include "settings/mnuHelp.h"

#include <QEvent>
#include <QRadioButton>
#include <utility>

#include "controls/control_name.h"
#include "controls/window_layout.h"
#include "controls/window_region.h"
#include "controls/zoom.h"
#include "platform/music_performance.h"
#include "settings/guarded.h"

namespace melvane {

namespace {

constexpr QRect kTabs(kLeft, 32, kRight - kLeft, 24);
constexpr int kTabWidths[] = {124, 136, 80, 96};
constexpr QRect kPage(kLeft, 56, kRight - kLeft, 112);
constexpr QRect kNotice(kLeft, 168, 316, 40);  // three lines
constexpr QRect kOK(kRight - 110, 174, 110, 26);

// On a page: a column of names, and what they name.
constexpr QRect kName(14, 10, 140, 24);
constexpr QRect kValue(158, 10, 264, 24);
constexpr int kRowStep = 30;
constexpr QRect kHint(14, 64, 408, 18);
constexpr QRect kForce(158, 84, 264, 22);
constexpr QRect kLinesUp(14, 10, 408, 24);
constexpr QRect kLinesUpMeaning(14, 38, 408, 60);  // three lines
constexpr QRect kPageName(14, 6, 140, 24);         // of the language page, whose rows are closer
constexpr QRect kPageValue(158, 6, 264, 24);
constexpr int kPageStep = 25;
constexpr int kLanguageStep = 120;
constexpr int kZoomWidth = 90;

enum Label : std::size_t { kMidiLabel, kMixLabel, kHintLabel, kLanguageLabel, kZoomLabel, kHomeLabel, kLinesUpLabel };

constexpr std::int16_t kForced = 1;

// Every language is called as its speakers call it.
constexpr struct {
    const char* code;
    const char* name;
} kLanguages[] = {{"en", "English"}, {"pl", "Polski"}};

QFrame* addPage(QWidget* window, const char* name) {
    auto* page = new QFrame(window);
    page->setObjectName(QLatin1String(name));
    layOut(page, kPage);
    return page;
}

// Selects the device of `number`, wherever it stands now; `otherwise` when there is none. False when it has gone.
template <typename Number>
bool showDevices(DeviceList& list, KnownDevice& known, Number& number, int otherwise) {
    list.refresh();
    const bool there = followDevice(known, number, list.listed());
    list.setCurrentIndex(there && number >= 0 && number < list.count() ? static_cast<int>(number) : otherwise);
    return there;
}

void setTexts(QAbstractButton* button, const std::string& text) {
    button->setText(toQt(text));
    setName(button, button->text());
}

}  // namespace

mnuHelp::mnuHelp(Settings& settings, const modLang& language, Shell& shell, Dialogs& dialogs, DeviceNames midiPorts,
                 DeviceNames recordingInputs, QWidget* owner)
    : FramelessWindow(kWideRegion, kGripHeight, owner),
      settings_(settings),
      language_(language),
      shell_(shell),
      dialogs_(dialogs) {
    setObjectName(QStringLiteral("mnuHelp"));
    setAttribute(Qt::WA_DeleteOnClose);
    addTitle(kCaption);
    addTabs();
    addAudioPage(std::move(midiPorts), std::move(recordingInputs));
    addNotice();
    addLanguagePage();
    addRehearsalPage();
    addAboutPage();
    bOK_ = addButton(this, "bOK", kOK, ButtonLook::plain, Symbol::close, [this] { close(); });
    TABA_[0]->click();
    TABA_[0]->setFocus();
    GetPreferencesLanguage();
    refreshDevices();
}

void mnuHelp::addTabs() {
    QRect place = kTabs;
    for (std::size_t i = 0; i < TABA_.size(); ++i) {
        const int page = static_cast<int>(i);
        TABA_[i] = new QPushButton(this);
        TABA_[i]->setObjectName(QStringLiteral("TABA%1").arg(page));
        TABA_[i]->setProperty("tab", true);
        place.setWidth(kTabWidths[i]);
        layOut(TABA_[i], place);
        place.translate(place.width(), 0);
        TABA_[i]->setCheckable(true);
        TABA_[i]->setAutoExclusive(true);
        connect(TABA_[i], &QPushButton::clicked, this, [this, page] { TABA_Click(page); });
    }
}

void mnuHelp::addAudioPage(DeviceNames midiPorts, DeviceNames recordingInputs) {
    FM_ = addPage(this, "FM");
    MidiDev_ = addDeviceList("MidiDev", kMidiLabel, std::move(midiPorts));
    connect(MidiDev_, &QComboBox::activated, this, [this](int position) {
        if (settings_.midiPort == position && !portGone_) return;
        settings_.knownPort = {};
        settings_.midiPort = position;
        portGone_ = !followDevice(settings_.knownPort, settings_.midiPort, MidiDev_->listed());
        showDeviceNotice();
        Q_EMIT midiPortChanged();
    });
    MixDev_ = addDeviceList("MixDev", kMixLabel, std::move(recordingInputs));
    connect(MixDev_, &QComboBox::activated, this, [this](int position) {
        settings_.mixDevice = static_cast<std::int16_t>(position);
        settings_.mixDeviceStored = true;
        settings_.knownInput = {};
        inputGone_ = !followDevice(settings_.knownInput, settings_.mixDevice, MixDev_->listed());
        showDeviceNotice();
    });
    addLabel(kHintLabel, FM_, kHint);
    LB_[kHintLabel]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    LB_[kHintLabel]->setProperty("hint", true);
    CustMix_ = new QCheckBox(FM_);
    CustMix_->setObjectName(QStringLiteral("CustMix"));
    layOut(CustMix_, kForce);
    CustMix_->setChecked(settings_.forceMixDevice == kForced);
    connect(CustMix_, &QCheckBox::clicked, this, [this](bool on) { settings_.forceMixDevice = on ? kForced : 0; });
}

void mnuHelp::addNotice() {
    deviceNotice_ = new QLabel(this);
    deviceNotice_->setObjectName(QStringLiteral("deviceNotice"));
    deviceNotice_->setProperty("hint", true);
    deviceNotice_->setWordWrap(true);
    layOut(deviceNotice_, kNotice);
}

DeviceList* mnuHelp::addDeviceList(const char* name, int label, DeviceNames deviceNames) {
    const int down = label * kRowStep;
    addLabel(static_cast<std::size_t>(label), FM_, kName.translated(0, down));
    auto* list = new DeviceList(FM_, kValue.translated(0, down), std::move(deviceNames));
    list->setObjectName(QLatin1String(name));
    connect(list, &DeviceList::aboutToOpen, this, &mnuHelp::lookForDevices);
    // Queued: what was chosen in the list is told when it has closed.
    connect(list, &DeviceList::closed, this, &mnuHelp::refreshDevices, Qt::QueuedConnection);
    return list;
}

void mnuHelp::addRehearsalPage() {
    rehearsalPage_ = addPage(this, "rehearsalPage");
    linesUp_ = new QCheckBox(rehearsalPage_);
    linesUp_->setObjectName(QStringLiteral("linesUp"));
    layOut(linesUp_, kLinesUp);
    linesUp_->setChecked(settings_.linesUpVoices);
    connect(linesUp_, &QCheckBox::clicked, this, [this](bool on) { settings_.linesUpVoices = on; });
    addLabel(kLinesUpLabel, rehearsalPage_, kLinesUpMeaning);
    LB_[kLinesUpLabel]->setProperty("hint", true);
    LB_[kLinesUpLabel]->setWordWrap(true);
    LB_[kLinesUpLabel]->setAlignment(Qt::AlignLeft | Qt::AlignTop);
}

void mnuHelp::addAboutPage() {
    about_ = new AboutText(this, kPage);
    connect(about_, &QTextBrowser::anchorClicked, this,
            [this](const QUrl& address) { openPage(address.toString(QUrl::FullyEncoded).toStdString()); });
}

void mnuHelp::addLanguagePage() {
    languagePage_ = addPage(this, "languagePage");
    addLanguages();
    addZoom();
    addLabel(kHomeLabel, languagePage_, kPageName.translated(0, 2 * kPageStep));
    adres_ = addLink("adres", kPageValue.translated(0, 2 * kPageStep), LangEntry::homePage);
    online_ = addLink("online", kPageValue.translated(0, 3 * kPageStep), LangEntry::helpPage);
}

void mnuHelp::addLanguages() {
    addLabel(kLanguageLabel, languagePage_, kPageName);
    languages_ = new QButtonGroup(this);
    QRect place(kPageValue.topLeft(), QSize(kLanguageStep, kPageValue.height()));
    for (const auto& [code, name] : kLanguages) {
        auto* button = new QRadioButton(QLatin1String(name), languagePage_);
        button->setObjectName(QStringLiteral("language_") + QLatin1String(code));
        button->setToolTip(button->text());
        layOut(button, place);
        place.translate(kLanguageStep, 0);
        languages_->addButton(button);
        connect(button, &QRadioButton::clicked, this, [this, code = code] {
            if (settings_.language == code) return;
            settings_.language = code;
            Q_EMIT languageChanged(QLatin1String(code));
        });
    }
}

void mnuHelp::addZoom() {
    const QPoint row(0, kPageStep);
    addLabel(kZoomLabel, languagePage_, kPageName.translated(row));
    zoom_ = new QComboBox(languagePage_);
    zoom_->setObjectName(QStringLiteral("zoom"));
    layOut(zoom_, {kPageValue.topLeft() + row, QSize(kZoomWidth, kPageValue.height() - 1)});
    for (int percent = kLowestZoom; percent <= kHighestZoom; percent += kZoomStep)
        zoom_->addItem(QStringLiteral("%1 %").arg(percent), percent);
    showZoom();
    connect(zoom_, &QComboBox::activated, this, [this] { setZoom(zoom_->currentData().toInt()); });
}

void mnuHelp::showZoom() {
    zoom_->setCurrentIndex(zoom_->findData(zoom()));
}

void mnuHelp::changeEvent(QEvent* event) {
    FramelessWindow::changeEvent(event);
    if (event->type() == QEvent::StyleChange) showZoom();
}

void mnuHelp::addLabel(std::size_t number, QWidget* page, const QRect& place) {
    LB_[number] = new QLabel(page);
    LB_[number]->setObjectName(QStringLiteral("LB%1").arg(number));
    layOut(LB_[number], place);
}

LinkButton* mnuHelp::addLink(const char* name, const QRect& place, LangEntry address) {
    auto* link = new LinkButton(languagePage_);
    link->setObjectName(QLatin1String(name));
    layOut(link, place);
    connect(link, &QPushButton::clicked, this, [this, address] { openPage(language_.lang(address)); });
    return link;
}

void mnuHelp::TABA_Click(int page) {
    FM_->setVisible(page == 0);
    deviceNotice_->setVisible(page == 0);
    languagePage_->setVisible(page == 1);
    rehearsalPage_->setVisible(page == 2);
    about_->setVisible(page == 3);
}

void mnuHelp::showAbout() {
    TABA_[3]->click();
    about_->setFocus();
}

void mnuHelp::lookForDevices() {
    refreshDevices();
    Q_EMIT devicesWanted();
}

void mnuHelp::refreshDevices() {
    if (MidiDev_->isOpen() || MixDev_->isOpen()) return;
    guarded(dialogs_, language_, [this] {
        // A port that there is not is replaced by the first one wherever it is used.
        portGone_ = !showDevices(*MidiDev_, settings_.knownPort, settings_.midiPort, 0);
        inputGone_ = !showDevices(*MixDev_, settings_.knownInput, settings_.mixDevice, -1);
        showDeviceNotice();
    });
}

void mnuHelp::showDeviceNotice() {
    std::string notice;
    if (portGone_)
        notice = language_.ownText(OwnText::portGone, settings_.knownPort.name);
    else if (settings_.midiPort > 0 && settings_.midiPort < MidiDev_->count())
        notice = language_.ownText(OwnText::portOutsideMix);
    if (inputGone_)
        notice += (notice.empty() ? "" : "\n") + language_.ownText(OwnText::deviceGone, settings_.knownInput.name);
    deviceNotice_->setText(toQt(notice));
    deviceNotice_->setToolTip(deviceNotice_->text());
    MidiDev_->setAccessibleDescription(deviceNotice_->text());
}

void mnuHelp::openPage(const std::string& address) {
    if (shell_.open(address)) return;
    dialogs_.tell(language_.ownText(OwnText::cannotOpenPage, address), kProductCaption, BoxIcon::information);
}

void mnuHelp::GetPreferencesLanguage() {
    setTitle(toQt(language_.lang(LangEntry::preferences)));
    setTexts(TABA_[0], language_.lang(LangEntry::audioSettings));
    setTexts(TABA_[1], language_.ownText(OwnText::languageAndHelp));
    setTexts(TABA_[2], language_.ownText(OwnText::rehearsal));
    setTexts(TABA_[3], language_.ownText(OwnText::about));
    const std::string labels[] = {language_.lang(LangEntry::midiDevice),     language_.lang(LangEntry::mixDevice),
                                  language_.lang(LangEntry::mixDeviceHint),  language_.lang(LangEntry::language),
                                  language_.ownText(OwnText::zoom),          language_.ownText(OwnText::homePage),
                                  language_.ownText(OwnText::linesUpMeaning)};
    for (std::size_t i = 0; i < LB_.size(); ++i) LB_[i]->setText(toQt(labels[i]));
    for (const auto& [list, label] : {std::pair(MidiDev_, kMidiLabel), std::pair(MixDev_, kMixLabel)}) {
        setName(list, LB_[label]->text());
        list->setEmptyText(toQt(language_.ownText(OwnText::noDevices)));
    }
    MidiDev_->rename(kSynthesizerPort, toQt(language_.ownText(OwnText::synthesizer)));
    setName(zoom_, LB_[kZoomLabel]->text());
    MixDev_->setAccessibleDescription(LB_[kHintLabel]->text());
    showDeviceNotice();
    setTexts(CustMix_, language_.lang(LangEntry::forceMixDevice));
    setTexts(linesUp_, language_.ownText(OwnText::linesUpVoices));
    linesUp_->setAccessibleDescription(LB_[kLinesUpLabel]->text());
    for (QAbstractButton* button : languages_->buttons()) {
        button->setChecked(button->objectName() == QStringLiteral("language_") + toQt(language_.languageCode()));
        button->setFocusPolicy(button->isChecked() ? Qt::StrongFocus : Qt::ClickFocus);
    }
    setTexts(online_, language_.lang(LangEntry::online));
    setTexts(adres_, language_.lang(LangEntry::homePage));
    adres_->setAccessibleDescription(LB_[kHomeLabel]->text());
    about_->useLanguage(language_.languageCode());
    about_->setAccessibleName(toQt(language_.ownText(OwnText::aboutProgram)));
    setButtonText(bOK_, toQt(language_.lang(LangEntry::close)), toQt(language_.lang(LangEntry::close)));
}

bool mnuHelp::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate) lookForDevices();
    return FramelessWindow::event(event);
}

}  // namespace melvane
