#include "app/frm_slider_panel.h"

#include <cmath>

#include "app/main_knobs.h"
#include "controls/caption.h"
#include "controls/control_name.h"
#include "controls/window_layout.h"
#include "settings/guarded.h"

namespace melvane {

namespace {

constexpr std::array<int, 2> kVolumeCentres = {324, 372};
constexpr int kSyncCentre = 420;
constexpr QSize kFader(28, 12);
constexpr QRect kColumnName(-24, 22, 48, 14);  // this and the following seen from the centre of the column
constexpr QRect kVolumeReadout(-20, 40, 40, 14);
constexpr QRect kSyncReadout(-28, 36, 56, 26);
constexpr int kKeyCentre = 153;
constexpr QSize kKeyKnob(12, 18);
constexpr QRect kKeyName(394, 139, 54, 14);
constexpr QRect kKeyReadout(394, 153, 54, 14);

constexpr std::array kSources = {Accent::song, Accent::voice};
constexpr std::array kSourceTexts = {OwnText::songColumn, OwnText::voiceColumn};
constexpr std::array kVolumeEntries = {LangEntry::backgroundVolume, LangEntry::vocalVolume};

// Of the knob of a stored value that is the value itself: several values may have one position.
template <typename Stored>
auto exactly(const Scale& scale, const Track& track, Stored stored) {
    return [=](double position) {
        const double value = stored();
        return position == onTrack(track, scale.positionOf(value)) ? value : scale(position);
    };
}

QString seconds(double offset) {
    return QString::number(std::abs(offset), 'f', 2);
}

}  // namespace

SliderPanel::SliderPanel(QWidget* window, Mixer& mixer, const Environment& environment)
    : QObject(window), mixer_(mixer), environment_(environment) {
    addVolumes(window);
    addSync(window);
    addKey(window);
}

void SliderPanel::addVolumes(QWidget* window) {
    for (std::size_t i = 0; i < volm_.size(); ++i) {
        const int centre = kVolumeCentres[i];
        addText(window, kSourceTexts[i], kColumnName.translated(centre, 0), kSources[i]);
        const SliderPlace place{Qt::Vertical, kVolumeTrack, centre, kFader, kVolumeTrack.last};
        const auto stored = [this, i] { return double{1} * mixer_.settings().volume[i]; };
        const SliderValue value{exactly(kVolumeScale, kVolumeTrack, stored),
                                [](double percent) { return QStringLiteral("%1 %").arg(percent); }};
        volm_[i] =
            add(new Slider(window, place, kSources[i], value), i == 0 ? "volm0" : "volm1",
                [this, i](double top) { mixer_.sliders().setVolume(i, static_cast<std::int16_t>(kVolumeScale(top))); });
        volumeReadouts_[i] = addReadout(window, kVolumeReadout.translated(centre, 0), kSources[i],
                                        i == 0 ? "volumeReadout0" : "volumeReadout1");
    }
}

void SliderPanel::addSync(QWidget* window) {
    addText(window, OwnText::syncColumn, kColumnName.translated(kSyncCentre, 0), Accent::voice);
    const SliderPlace place{Qt::Vertical, kSyncTrack, kSyncCentre, kFader, kSyncTrack.neutral};
    const auto offset = [this](double top) { return syncAt(top, mixer_.run().syncOffset); };
    const SliderValue value{offset, [this](double shift) { return syncText(shift); }};
    // Only a reset leads back to no offset, as the track's centre leaves the offset alone.
    snc_ = add(
        new Slider(window, place, Accent::voice, value), "snc",
        [this, offset](double top) { mixer_.sliders().setSync(offset(top)); }, [this] { mixer_.sliders().setSync(0); });
    syncReadout_ = addReadout(window, kSyncReadout.translated(kSyncCentre, 0), Accent::voice, "syncReadout");
}

QLabel* SliderPanel::addReadout(QWidget* window, const QRect& place, Accent accent, const char* name) {
    QLabel* readout = addCaption(window, place, accent);
    readout->setObjectName(QLatin1String(name));
    return readout;
}

// The voice comes earlier with a positive offset.
QString SliderPanel::syncText(double offset) const {
    if (offset == 0) return QStringLiteral("0 s");
    const OwnText text = offset > 0 ? OwnText::voiceEarlier : OwnText::voiceLater;
    return toQt(environment_.language.ownText(text, seconds(offset).toStdString()));
}

void SliderPanel::addKey(QWidget* window) {
    const SliderPlace place{Qt::Horizontal,
                            kKeyTrack,
                            kKeyCentre,
                            kKeyKnob,
                            kKeyTrack.neutral,
                            true,
                            {kSemitone, kTenthOfSemitone, kKeyPage}};
    const SliderValue value{keyAt, [](double semitones) { return signedText(semitones, 1); }};
    tone_ = add(new Slider(window, place, Accent::song, value), "tone",
                [this](double left) { mixer_.sliders().setKey(keyAt(left)); });
    addText(window, OwnText::keyColumn, kKeyName, Accent::song);
    par_ = addReadout(window, kKeyReadout, Accent::song, "par");
}

Slider* SliderPanel::add(Slider* slider, const char* name, std::function<void(double)> move,
                         std::function<void()> reset) {
    slider->setObjectName(QLatin1String(name));
    if (!reset) reset = [move, neutral = slider->track().neutral] { move(neutral); };
    connect(slider, &Slider::moved, this, [this, move = std::move(move)](double position) {
        guarded(environment_.dialogs, environment_.language, [&] { move(position); });
        showValues();
    });
    connect(slider, &Slider::resetWanted, this, [this, reset = std::move(reset)] {
        guarded(environment_.dialogs, environment_.language, reset);
        showValues();
    });
    return slider;
}

void SliderPanel::addText(QWidget* window, OwnText text, const QRect& place, Accent accent) {
    texts_.emplace_back(addCaption(window, place, accent), text);
}

void SliderPanel::place() {
    for (std::size_t i = 0; i < volm_.size(); ++i)
        volm_[i]->setPosition(kVolumeScale.positionOf(mixer_.settings().volume[i]));
    snc_->setPosition(kSyncScale.positionOf(mixer_.run().syncOffset));
    tone_->setPosition(kKeyScale.exactPositionOf(mixer_.run().key));
    showValues();
}

void SliderPanel::showValues() {
    for (std::size_t i = 0; i < volm_.size(); ++i) volumeReadouts_[i]->setText(volm_[i]->valueText());
    showSync();
    par_->setText(tone_->valueText());
    nameKey();
}

void SliderPanel::showSync() {
    const modLang& language = environment_.language;
    const float offset = mixer_.run().syncOffset;
    const QString direction =
        offset == 0 ? QString() : toQt(language.ownText(offset > 0 ? OwnText::earlier : OwnText::later));
    syncReadout_->setText((offset == 0 ? QStringLiteral("0") : seconds(offset)) + QStringLiteral(" s\n") + direction);
    syncReadout_->setToolTip(syncText(double{offset}));
}

// The notes of a MIDI song move by whole semitones, whatever the key is.
void SliderPanel::nameKey() {
    const modLang& language = environment_.language;
    const QString name = toQt(language.ownText(OwnText::keyShift));
    const QString sounding =
        mixer_.midi().loaded()
            ? toQt(language.ownText(OwnText::midiKey,
                                    signedText(MidiBackground::soundingKey(mixer_.run().key), 0).toStdString()))
            : QString();
    tone_->setAccessibleName(name);
    tone_->setAccessibleDescription(sounding);
    tone_->setToolTip(sounding.isEmpty() ? name : name + u'\n' + sounding);
}

void SliderPanel::SetMainLanguage() {
    const modLang& language = environment_.language;
    for (const auto& [label, text] : texts_) label->setText(toQt(language.ownText(text)));
    for (std::size_t i = 0; i < volm_.size(); ++i) setName(volm_[i], toQt(language.lang(kVolumeEntries[i])));
    setName(snc_, toQt(language.lang(LangEntry::synchronization)));
    showValues();
}

}  // namespace melvane
