#include "midi/frmChann.h"

#include <QAction>
#include <algorithm>

#include "controls/control_name.h"
#include "controls/window_layout.h"
#include "controls/window_region.h"
#include "controls/zoom.h"
#include "midi/channel_knobs.h"
#include "midi/channel_names.h"
#include "settings/guarded.h"
#include "settings/instrument_names.h"

namespace melvane {

namespace {

constexpr QRect kTitle(kLeft, 1, 100, 20);
constexpr QRect kHint(114, 1, 304, 20);
constexpr QRect kNoSong(kLeft, 90, kRight - kLeft, 30);
constexpr QRect kBalanceRow(10, 26, 16, 46);
constexpr QRect kVolumeRow(10, 73, 16, 58);
constexpr QPoint kBack(4, 184);
constexpr short kBackButton = 1;
constexpr QRect kChannelsClose = kClose;

// Of the first strip. The knobs are given by their tracks; balance stands over volume.
constexpr QRect kToggle(30, 26, kStripStep, 17);
constexpr QSize kBalanceKnob(5, 11);
constexpr int kBalanceCentre = 50;
constexpr QSize kVolumeKnob(17, 10);
constexpr int kVolumeMiddle = 42;
constexpr QRect kInstrument(31, 132, kStripStep - 2, 73);

QString number(double value) {
    return QString::number(value, 'f', 0);
}

QString instrumentOn(std::int16_t channel, int instrument) {
    return toQt(GetInstrumentName(channel == kPercussionChannel ? kPercussionInstrument : instrument));
}

// What a song without a removable vocal can do instead: the entry's second sentence.
QString switchOffHint(const modLang& language) {
    return toQt(language.lang(LangEntry::switchOffInstead)).section(u'.', 1).trimmed();
}

}  // namespace

frmChann::frmChann(MidiBackground& midi, Settings& settings, const modLang& language, Dialogs& dialogs, QWidget* owner)
    : FramelessWindow(kWideRegion, kGripHeight, owner),
      midi_(midi),
      state_(midi.state()),
      settings_(settings),
      language_(language),
      dialogs_(dialogs),
      hint_(new ElidedLabel(this, Qt::ElideRight)),
      noSong_(new QLabel(this)),
      balanceRow_(new UpwardText(this, kBalanceRow)),
      volumeRow_(new UpwardText(this, kVolumeRow)) {
    setObjectName(QStringLiteral("frmChann"));
    addTitle(kTitle);
    hint_->setObjectName(QStringLiteral("hint"));
    layOut(hint_, kHint);
    hint_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    noSong_->setObjectName(QStringLiteral("noSong"));
    layOut(noSong_, kNoSong);
    noSong_->setAlignment(Qt::AlignCenter);
    b_main_ = addNavButton(this, "b_main", kBack, kBackButton, [this] {
        parentWidget()->raise();
        parentWidget()->activateWindow();
    });
    for (std::int16_t c = 0; c < kMidiChannels; ++c) addStrip(c);
    bClose_ = addButton(this, "bClose", kChannelsClose, ButtonLook::close, Symbol::close, [this] { close(); });
    GetChannelsLanguage();
    updateChannels();
}

void frmChann::addStrip(std::int16_t channel) {
    const auto c = static_cast<std::size_t>(channel);
    const int step = kStripStep * channel;
    onoff_[c] = new ChannelToggle(this, kToggle.translated(step, 0), channel + 1);
    onoff_[c]->setObjectName(QStringLiteral("onoff%1").arg(c));
    connect(onoff_[c], &ChannelToggle::clicked, this, [this, channel] { onoff_Click(channel); });
    connect(onoff_[c], &ChannelToggle::soloWanted, this, [this, channel] { solo(channel); });
    const Track balance = channelBalanceTrack(channel);
    bl_[c] = addKnob("bl", channel, {Qt::Horizontal, balance, kBalanceCentre, kBalanceKnob, balance.neutral},
                     channelBalanceScale(channel), &ChannelSettings::balance, kNeutralBalance,
                     [this, channel](std::int16_t value) {
                         guarded(dialogs_, language_, [&] { midi_.setChannelBalance(channel, value); });
                     });
    vol_[c] =
        addKnob("vol", channel,
                {Qt::Vertical, kChannelVolumeTrack, kVolumeMiddle + step, kVolumeKnob, kChannelVolumeTrack.last},
                kChannelVolumeScale, &ChannelSettings::volume, kNeutralVolume, [this, channel](std::int16_t value) {
                    // One that is off is heard with it once it is switched on.
                    if (onoff_[static_cast<std::size_t>(channel)]->isChecked()) setVolume(channel, value, true);
                });
    ins_[c] = new InstrumentLabel(this, kInstrument.translated(step, 0));
    ins_[c]->setObjectName(QStringLiteral("ins%1").arg(c));
    connect(ins_[c], &InstrumentLabel::clicked, this, [this, channel] { ins_DblClick(channel); });
}

Slider* frmChann::addKnob(const char* name, std::int16_t channel, const SliderPlace& place, const Scale& scale,
                          std::int16_t ChannelSettings::*set, std::int16_t neutral,
                          std::function<void(std::int16_t)> change) {
    const auto value = [this, channel, scale, set, track = place.track](double position) {
        const std::int16_t exact = state_.ChannelInfo[channel].*set;
        return position == onTrack(track, scale.positionOf(exact)) ? exact : scale(position);
    };
    auto* slider = new Slider(this, place, Accent::song, {value, number});
    slider->setObjectName(QLatin1String(name) + QString::number(channel));
    connect(slider, &Slider::moved, this, [this, channel, scale, change](double position) {
        change(static_cast<std::int16_t>(scale(position)));
        nameStrip(channel);
    });
    connect(slider, &Slider::resetWanted, this, [this, channel, neutral, change = std::move(change)] {
        change(neutral);
        nameStrip(channel);
    });
    addReset(slider);
    return slider;
}

void frmChann::addReset(Slider* slider) {
    auto* reset = new QAction(slider);
    connect(reset, &QAction::triggered, slider, [slider] {
        slider->place(slider->track().neutral);
        Q_EMIT slider->resetWanted();
        slider->tellValue();
    });
    slider->addAction(reset);
    slider->setContextMenuPolicy(Qt::ActionsContextMenu);
    resets_.push_back(reset);
}

std::array<QWidget*, 4> frmChann::strip(std::int16_t channel) const {
    const auto c = static_cast<std::size_t>(channel);
    return {onoff_[c], bl_[c], vol_[c], ins_[c]};
}

void frmChann::onoff_Click(std::int16_t channel) {
    const auto c = static_cast<std::size_t>(channel);
    const bool on = onoff_[c]->isChecked();
    setVolume(channel, static_cast<std::int16_t>(on ? kSwitchedOnVolumeScale(vol_[c]->position()) : 0), on);
}

// Several may be heard together.
void frmChann::solo(std::int16_t channel) {
    guarded(dialogs_, language_, [&] { midi_.solo(static_cast<std::uint16_t>(state_.soloed ^ 1U << channel)); });
    for (std::int16_t c = 0; c < kMidiChannels; ++c) {
        showOn(c, onoff_[static_cast<std::size_t>(c)]->isChecked());
        nameSwitch(c);
    }
    Q_EMIT heardChanged();
}

void frmChann::showSounding() {
    if (!isVisible()) return;
    const std::uint16_t sounding = midi_.soundingChannels();
    for (std::size_t c = 0; c < onoff_.size(); ++c) onoff_[c]->setSounding((sounding >> c & 1) != 0);
}

void frmChann::setVolume(std::int16_t channel, std::int16_t volume, bool on) {
    guarded(dialogs_, language_, [&] { midi_.switchChannel(channel, volume, on); });
    showOn(channel, on);
    nameStrip(channel);
    Q_EMIT heardChanged();
}

void frmChann::ins_DblClick(std::int16_t channel) {
    if (!picker_) {
        picker_ = new frmIns(midi_, language_, dialogs_, this);
        connect(picker_, &frmIns::picked, this, &frmChann::showInstrument);
    }
    picker_->editedChannel = channel;
    picker_->SelectInstrument(ins_[static_cast<std::size_t>(channel)]->text());
    picker_->open();
}

void frmChann::showInstrument(std::int16_t channel) {
    ins_[static_cast<std::size_t>(channel)]->setText(instrumentOn(channel, state_.ChannelInfo[channel].instrument));
    nameStrip(channel);
}

void frmChann::nameStrip(std::int16_t channel) {
    const auto c = static_cast<std::size_t>(channel);
    const QString number = QString::number(channel + 1);
    const TouchedSettings& touched = state_.touched[channel];
    const SongSettings& songs = state_.songSettings[channel];
    const auto digits = [](const auto& value) { return value ? QString::number(*value) : QString(); };
    describe(bl_[c], toQt(channelBalanceName(language_, channel + 1)), touched.balance, digits(songs.balance));
    describe(vol_[c], toQt(channelVolumeName(language_, channel + 1)), touched.volume, digits(songs.volume));
    describe(ins_[c],
             toQt(language_.ownText(OwnText::channelInstrument, number.toStdString())) + QStringLiteral(": ") +
                 ins_[c]->text(),
             touched.instrument, songs.program ? instrumentOn(channel, *songs.program) : QString());
}

void frmChann::nameSwitch(std::int16_t channel) {
    ChannelToggle* toggle = onoff_[static_cast<std::size_t>(channel)];
    const QString track = toQt(state_.trackNames[channel]);
    setName(toggle, toQt(language_.lang(LangEntry::channelSwitch)) + QString::number(channel + 1));
    QStringList said;
    if (!track.isEmpty()) said << track;
    if (isSolo(channel)) said << toQt(language_.ownText(OwnText::soloOn));
    toggle->setAccessibleDescription(said.join(QStringLiteral(", ")));
    QStringList lines{toggle->accessibleName(), toQt(language_.ownText(OwnText::soloMeaning))};
    if (!track.isEmpty()) lines.insert(1, track);
    const QString tip = lines.join(u'\n');
    toggle->setToolTip(Qt::mightBeRichText(tip) ? tip.toHtmlEscaped() : tip);  // a track's name is no markup
}

void frmChann::describe(QWidget* control, const QString& name, bool touched, const QString& songs) {
    setName(control, name);
    QString said;
    if (!touched)
        said = toQt(songs.isEmpty() ? language_.ownText(OwnText::songSetsNothing)
                                    : language_.ownText(OwnText::songSets, songs.toStdString()));
    control->setAccessibleDescription(said);
    if (!touched) control->setToolTip(name + u'\n' + said);
}

void frmChann::updateChannels() {
    bool any = false;
    for (std::int16_t c = 0; c < kMidiChannels; ++c) {
        const bool shown = state_.deviceOpen && state_.ChannelInfo[c].shown != 0;
        any = any || shown;
        for (QWidget* control : strip(c)) control->setVisible(shown);
        if (shown)
            showStrip(c);
        else
            showOn(c, true);
    }
    noSong_->setVisible(!any);
    for (QWidget* text : std::initializer_list<QWidget*>{hint_, balanceRow_, volumeRow_}) text->setVisible(any);
    if (picker_ && !any) picker_->close();
    if (startFlags.waitsForSong && any) open();
}

void frmChann::showStrip(std::int16_t channel) {
    const auto c = static_cast<std::size_t>(channel);
    const ChannelSettings& row = state_.ChannelInfo[channel];
    showInstrument(channel);
    nameSwitch(channel);
    // The volume of a channel that is off is 0: its knob stays where it will be switched on again.
    if (row.switchedOn != 0)
        vol_[c]->setPosition(kChannelVolumeScale.positionOf(row.volume));
    else if (onoff_[c]->isChecked())
        vol_[c]->setPosition(kChannelVolumeScale.positionOf(state_.InitialChannel[channel].volume));
    bl_[c]->setPosition(channelBalanceScale(channel).positionOf(row.balance));
    showOn(channel, row.switchedOn != 0);
}

void frmChann::showOn(std::int16_t channel, bool on) {
    const auto c = static_cast<std::size_t>(channel);
    onoff_[c]->setChecked(on);
    onoff_[c]->setSolo(isSolo(channel));
    const bool heard = on && (state_.soloed == 0 || isSolo(channel));
    for (Slider* knob : {bl_[c], vol_[c]}) knob->setDimmed(!heard);
}

void frmChann::GetChannelsLanguage() {
    setTitle(toQt(language_.ownText(OwnText::midiChannels)));
    hint_->setFullText(switchOffHint(language_));
    hint_->setToolTip(toQt(language_.lang(LangEntry::switchOffInstead)));
    noSong_->setText(toQt(language_.ownText(OwnText::noMidiSong)));
    balanceRow_->setText(toQt(language_.ownText(OwnText::balanceRow)));
    volumeRow_->setText(toQt(language_.ownText(OwnText::volumeRow)));
    for (std::int16_t channel = 0; channel < kMidiChannels; ++channel) {
        nameSwitch(channel);
        nameStrip(channel);
    }
    for (QAction* reset : resets_) reset->setText(toQt(language_.lang(LangEntry::reset)));
    setName(b_main_, toQt(language_.ownText(OwnText::backToMain)));
    setButtonText(bClose_, {}, toQt(language_.lang(LangEntry::close)));
    if (picker_) picker_->GetInstrumentsLanguage();
}

void frmChann::open() {
    const auto waiting = [](const QWidget* toggle) { return toggle->isHidden(); };
    if (startFlags.waitsForSong && std::all_of(onoff_.begin(), onoff_.end(), waiting)) return;
    startFlags.waitsForSong = false;
    bringUp(startFlags.takesFocus);
}

void frmChann::showEvent(QShowEvent* event) {
    FramelessWindow::showEvent(event);
    settings_.channelsWindowOpen = -1;
}

void frmChann::closeEvent(QCloseEvent*) {
    settings_.channelsWindowOpen = 0;
    if (picker_) picker_->close();
}

}  // namespace melvane
