#include "app/frm_slider_panel.h"

#include "app/main_knobs.h"
#include "controls/caption.h"
#include "controls/control_name.h"
#include "controls/window_layout.h"
#include "state/guarded.h"

namespace melvane {

namespace {

constexpr std::array<int, 2> kVolumeCentres = {324, 372};
constexpr int kSyncCentre = 420;
constexpr QSize kFader(28, 12);
constexpr QRect kColumnName(-24, 42, 48, 16);  // seen from the centre of the column
constexpr int kKeyCentre = 153;
constexpr QSize kKeyKnob(12, 18);
constexpr QRect kKeyName(394, 139, 54, 14);
constexpr QRect kKeyReadout(394, 153, 54, 14);

constexpr std::array kSources = {Accent::song, Accent::voice};
constexpr std::array kSourceTexts = {OwnText::songColumn, OwnText::voiceColumn};
constexpr std::array kVolumeEntries = {LangEntry::backgroundVolume, LangEntry::vocalVolume};

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
        const SliderValue value{kVolumeScale, [](double percent) { return QStringLiteral("%1 %").arg(percent); }};
        volm_[i] =
            add(new Slider(window, place, kSources[i], value), i == 0 ? "volm0" : "volm1",
                [this, i](double top) { mixer_.sliders().setVolume(i, static_cast<std::int16_t>(kVolumeScale(top))); });
    }
}

void SliderPanel::addSync(QWidget* window) {
    addText(window, OwnText::syncColumn, kColumnName.translated(kSyncCentre, 0), Accent::voice);
    const SliderPlace place{Qt::Vertical, kSyncTrack, kSyncCentre, kFader, kSyncTrack.neutral};
    const auto offset = [this](double top) { return syncAt(top, mixer_.run().syncOffset); };
    const SliderValue value{offset, [](double seconds) { return signedText(seconds, 2) + QStringLiteral(" s"); }};
    // Only a reset leads back to no offset, as the track's centre leaves the offset alone.
    snc_ = add(
        new Slider(window, place, Accent::voice, value), "snc",
        [this, offset](double top) { mixer_.sliders().setSync(offset(top)); }, [this] { mixer_.sliders().setSync(0); });
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
    par_ = addCaption(window, kKeyReadout, Accent::song);
    par_->setObjectName(QStringLiteral("par"));
}

Slider* SliderPanel::add(Slider* slider, const char* name, std::function<void(double)> move,
                         std::function<void()> reset) {
    slider->setObjectName(QLatin1String(name));
    if (!reset) reset = [move, neutral = slider->track().neutral] { move(neutral); };
    connect(slider, &Slider::moved, this, [this, move = std::move(move)](double position) {
        guarded(environment_.dialogs, [&] { move(position); });
        showKey();
    });
    connect(slider, &Slider::resetWanted, this, [this, reset = std::move(reset)] {
        guarded(environment_.dialogs, reset);
        showKey();
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
    showKey();
}

void SliderPanel::showKey() {
    par_->setText(tone_->valueText());
}

void SliderPanel::SetMainLanguage() {
    const modLang& language = environment_.language;
    for (const auto& [label, text] : texts_) label->setText(toQt(language.ownText(text)));
    for (std::size_t i = 0; i < volm_.size(); ++i) setName(volm_[i], toQt(language.lang(kVolumeEntries[i])));
    setName(snc_, toQt(language.lang(LangEntry::synchronization)));
    setName(tone_, toQt(language.ownText(OwnText::keyShift)));
}

}  // namespace melvane
