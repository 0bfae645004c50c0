#include "effects/frmEff.h"

#include "controls/caption.h"
#include "controls/control_name.h"
#include "controls/window_layout.h"
#include "controls/window_region.h"
#include "controls/zoom.h"
#include "effects/effect_knobs.h"
#include "effects/presets.h"
#include "settings/guarded.h"

namespace melvane {

namespace {

constexpr QRect kEqualiser(kLeft, 30, 78, 20);
constexpr QRect kPreset(kLeft + 82, 29, 134, 22);
constexpr QRect kList(kLeft, 53, 216, 146);

// The vocal effects stand in columns from the left on.
constexpr int kEffectStep = 54;
constexpr QRect kEffectName(kLeft, 54, kEffectStep, 14);
constexpr QRect kEffectSwitch(kLeft + 10, 72, 34, 20);
constexpr QSize kLevelKnob(30, 10);
constexpr QRect kSpareName(kRight - 120, 187, 82, 16);
constexpr QRect kSpareSwitch(kRight - 34, 185, 34, 20);

// Song and voice have a column each, around the middle of their balance track.
constexpr std::array<int, 2> kMiddles = {284, 393};
constexpr QRect kSourceName(-54, 30, 108, 20);  // this and the following seen from the middle
constexpr int kToneMiddle = 27;
constexpr QRect kToneName(-kToneMiddle, 54, 2 * kToneMiddle, 14);
constexpr QSize kToneKnob(30, 12);
constexpr QRect kBalanceName(-40, 144, 50, 16);
constexpr QRect kBalanceReadout(10, 144, 30, 16);
constexpr QSize kBalanceKnob(14, 18);
constexpr int kBalanceCentre = 172;
constexpr QRect kBalanceBar(-40, 168, 80, 8);

constexpr std::array kSources = {Accent::song, Accent::voice};
constexpr std::array kSourceTexts = {OwnText::songColumn, OwnText::voiceColumn};
constexpr std::array kEffectTexts = {OwnText::reverb, OwnText::echo, OwnText::chorus, OwnText::flanger,
                                     OwnText::spareEffect};
constexpr std::array kToneEntries = {LangEntry::backgroundBass, LangEntry::backgroundTreble, LangEntry::vocalBass,
                                     LangEntry::vocalTreble};
constexpr std::array kBalanceEntries = {LangEntry::backgroundBalance, LangEntry::vocalBalance};

}  // namespace

frmEff::frmEff(EffectChain& effects, Settings& settings, const modLang& language, Dialogs& dialogs, QWidget* owner)
    : FramelessWindow(kWideRegion, kGripHeight, owner),
      effects_(effects),
      settings_(settings),
      language_(language),
      dialogs_(dialogs) {
    setObjectName(QStringLiteral("frmEff"));
    addTitle(kCaption);
    addPresets();
    addEffects();
    for (const std::size_t source : {0U, 1U}) {
        QLabel* name = addText(kSourceTexts[source], kSourceName.translated(kMiddles[source], 0), kSources[source]);
        setStyleState(*name, "heading", true);
        addTone(2 * source);
        addTone(2 * source + 1);
        addBalance(source);
    }
    bClose_ = addButton(this, "bClose", kClose, ButtonLook::close, Symbol::close, [this] { close(); });
    GetEffectsLanguage();
    SetEffects();
    labPreset_->setFocus();
    moveOntoScreen(owner->pos() + QPoint(0, owner->height() + 8));
}

QLabel* frmEff::addText(OwnText text, const QRect& place, Accent accent, Qt::Alignment alignment) {
    QLabel* label = addCaption(this, place, accent, alignment);
    texts_.emplace_back(label, text);
    return label;
}

void frmEff::addPresets() {
    addText(OwnText::equaliser, kEqualiser, Accent::voice, Qt::AlignLeft | Qt::AlignVCenter);
    labPreset_ = new QPushButton(this);
    labPreset_->setObjectName(QStringLiteral("labPreset"));
    layOut(labPreset_, kPreset);
    auto* arrow = new QLabel(QStringLiteral("▾"), labPreset_);
    arrow->setAttribute(Qt::WA_TransparentForMouseEvents);
    layOut(arrow, {kPreset.width() - 18, 0, 12, kPreset.height()});
    pList_ = new PresetList(this);
    pList_->setObjectName(QStringLiteral("pList"));
    layOut(pList_, kList);
    connect(labPreset_, &QPushButton::clicked, this, [this] { pList_->open(settings_.currentPreset); });
    connect(pList_, &PresetList::chosen, this, &frmEff::choosePreset);
}

void frmEff::addEffects() {
    for (std::size_t i = 0; i < efo_.size(); ++i) {
        const bool spare = i >= ef_.size();
        const int step = static_cast<int>(i) * kEffectStep;
        QLabel* name = addText(kEffectTexts[i], spare ? kSpareName : kEffectName.translated(step, 0), Accent::voice,
                               spare ? Qt::AlignRight | Qt::AlignVCenter : Qt::AlignCenter);
        if (spare) spare_ = name;
        efo_[i] = new Switch(this, spare ? kSpareSwitch : kEffectSwitch.translated(step, 0), Accent::voice);
        efo_[i]->setObjectName(QStringLiteral("efo%1").arg(i + 1));
        connect(efo_[i], &Switch::clicked, this,
                [this, i](bool on) { guarded(dialogs_, language_, [&] { effects_.setEffectEnabled(i, on); }); });
        if (spare) continue;
        ef_[i] = addSlider(
            "ef", i + 1,
            {Qt::Vertical, kLevelTrack, kEffectName.x() + kEffectStep / 2 + step, kLevelKnob, kLevelTrack.first},
            Accent::voice, {kLevelScale, [](double level) { return QStringLiteral("%1 %").arg(level); }},
            [this, i](double top) {
                effects_.setEffectLevel(i, static_cast<std::int16_t>(kLevelScale(top)), !ef_[i]->isDragged());
            });
    }
}

void frmEff::addTone(std::size_t index) {
    const std::size_t source = index / 2;
    const bool treble = index % 2 == 1;
    const int middle = kMiddles[source] + (treble ? kToneMiddle : -kToneMiddle);
    const auto value = [](double top) { return static_cast<std::int16_t>(kToneScale(top)); };
    addText(treble ? OwnText::treble : OwnText::bass, kToneName.translated(middle, 0), kSources[source]);
    eq_song_[index] =
        addSlider("eq_song", index, {Qt::Vertical, kToneTrack, middle, kToneKnob, kToneTrack.neutral}, kSources[source],
                  {[value](double top) { return toneGain(value(top)); },
                   [](double gain) { return signedText(gain, 1) + QStringLiteral(" dB"); }},
                  [this, index, value](double top) { effects_.setTone(index, value(top)); });
}

void frmEff::addBalance(std::size_t index) {
    const int middle = kMiddles[index];
    const Track& track = kBalanceTracks[index];
    addText(OwnText::balance, kBalanceName.translated(middle, 0), kSources[index], Qt::AlignLeft | Qt::AlignVCenter);
    par_[index] =
        addCaption(this, kBalanceReadout.translated(middle, 0), kSources[index], Qt::AlignRight | Qt::AlignVCenter);
    par_[index]->setObjectName(QStringLiteral("par%1").arg(index));
    bbg_[index] = new QWidget(this);
    bbg_[index]->setObjectName(QStringLiteral("bbg%1").arg(index));
    layOut(bbg_[index], kBalanceBar.translated(middle, 0));
    bbg_[index]->setAutoFillBackground(true);
    bal_[index] =
        addSlider("bal", index, {Qt::Horizontal, track, kBalanceCentre, kBalanceKnob, track.neutral, false},
                  kSources[index], {balanceReadout(index), [](double value) { return QString::number(value, 'f', 1); }},
                  [this, index](double left) {
                      effects_.setBalance(index, static_cast<std::int32_t>(balanceScale(index)(left)));
                      showBalance(index);
                  });
}

Slider* frmEff::addSlider(const char* name, std::size_t number, const SliderPlace& place, Accent accent,
                          SliderValue value, std::function<void(double)> move) {
    auto* slider = new Slider(this, place, accent, std::move(value));
    slider->setObjectName(QLatin1String(name) + QString::number(number));
    const auto apply = [this, slider, move = std::move(move)] {
        guarded(dialogs_, language_, [&] { move(slider->position()); });
    };
    connect(slider, &Slider::moved, this, apply);
    connect(slider, &Slider::resetWanted, this, apply);
    return slider;
}

void frmEff::SetEffects() {
    for (std::size_t i = 0; i < eq_song_.size(); ++i)
        eq_song_[i]->setPosition(kToneScale.positionOf(settings_.toneValue[i]));
    for (std::size_t i = 0; i < bal_.size(); ++i) {
        bal_[i]->setPosition(balanceScale(i).positionOf(settings_.balanceValue[i]));
        showBalance(i);
    }
    for (std::size_t i = 0; i < ef_.size(); ++i)
        ef_[i]->setPosition(kLevelScale.positionOf(settings_.EffectState[i].level));
    for (std::size_t i = 0; i < efo_.size(); ++i) efo_[i]->setChecked(settings_.EffectState[i].enabled != 0);
    showPreset();
}

void frmEff::choosePreset(int row) {
    guarded(dialogs_, language_, [&] { effects_.ApplyPreset(static_cast<std::int16_t>(row)); });
    showPreset();
}

void frmEff::showPreset() {
    const QListWidgetItem* item = pList_->item(settings_.currentPreset);
    labPreset_->setText(item ? item->text().toUpper() : QString());
    labPreset_->setAccessibleName(toQt(language_.ownText(OwnText::equaliser)) + QStringLiteral(": ") +
                                  labPreset_->text());
}

void frmEff::showBalance(std::size_t index) {
    const double left = bal_[index]->position();
    par_[index]->setText(bal_[index]->valueText());
    QPalette palette = bbg_[index]->palette();
    palette.setColor(QPalette::Window, QColor(balanceRed(index, left), 0, 0));
    bbg_[index]->setPalette(palette);
}

void frmEff::GetEffectsLanguage() {
    setTitle(toQt(language_.ownText(OwnText::effects)));
    for (const auto& [label, text] : texts_) label->setText(toQt(language_.ownText(text)));
    for (std::size_t i = 0; i < efo_.size(); ++i) {
        const std::string name = language_.ownText(kEffectTexts[i]);
        efo_[i]->setAccessibleName(toQt(name));
        if (i < ef_.size()) ef_[i]->setAccessibleName(toQt(language_.ownText(OwnText::effectLevel, name)));
    }
    const QString unused = toQt(language_.ownText(OwnText::spareHint));
    for (QWidget* part : std::initializer_list<QWidget*>{efo_.back(), spare_}) part->setToolTip(unused);
    efo_.back()->setAccessibleDescription(unused);
    for (std::size_t i = 0; i < eq_song_.size(); ++i) setName(eq_song_[i], toQt(language_.lang(kToneEntries[i])));
    // The entries of these two do not say what they are, and a tooltip would be read out as well.
    for (const auto& [knob, text] : {std::pair(eq_song_[2], OwnText::vocalBass), {eq_song_[3], OwnText::vocalTreble}}) {
        knob->setAccessibleName(toQt(language_.ownText(text)));
        knob->setAccessibleDescription(knob->accessibleName());
    }
    for (std::size_t i = 0; i < bal_.size(); ++i) setName(bal_[i], toQt(language_.lang(kBalanceEntries[i])));
    setName(bClose_, toQt(language_.lang(LangEntry::close)));
    pList_->setAccessibleName(toQt(language_.ownText(OwnText::equaliserPresets)));
    showPreset();
}

void frmEff::showEvent(QShowEvent* event) {
    FramelessWindow::showEvent(event);
    settings_.effectsWindowOpen = -1;
}

void frmEff::closeEvent(QCloseEvent*) {
    settings_.effectsWindowOpen = 0;
}

}  // namespace melvane
