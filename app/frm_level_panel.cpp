#include "app/frm_level_panel.h"

#include "controls/control_name.h"
#include "controls/window_layout.h"

namespace melvane {

namespace {

constexpr QRect kSong(343, 64, 6, 72);
constexpr QRect kVoice(391, 64, 6, 72);
constexpr QRect kMix(196, 150, 94, 18);
constexpr Handle kWholeMix = 0;

}  // namespace

LevelPanel::LevelPanel(QWidget* window, Mixer& mixer, const Environment& environment)
    : mixer_(mixer),
      environment_(environment),
      song_(new LevelMeter(window, kSong, Qt::Vertical, Accent::song)),
      voice_(new LevelMeter(window, kVoice, Qt::Vertical, Accent::voice)),
      mix_(new LevelMeter(window, kMix, Qt::Horizontal, Accent::mix)) {
    song_->setObjectName(QStringLiteral("songLevel"));
    voice_->setObjectName(QStringLiteral("voiceLevel"));
    mix_->setObjectName(QStringLiteral("mixLevel"));
}

void LevelPanel::show(bool running) {
    const RunState& run = mixer_.run();
    const Handle song = run.isMidiBackground ? mixer_.midi().stream() : run.backgroundChannel;
    const std::pair<LevelMeter*, Handle> rows[] = {{song_, song}, {voice_, run.vocalChannel}, {mix_, kWholeMix}};
    for (const auto& [meter, channel] : rows) {
        const bool sounds = running && (channel != 0 || meter == mix_);
        const PeakLevels peaks = sounds ? environment_.library.takePeaks(channel) : PeakLevels{};
        meter->setPeaks(peaks.left, peaks.right);
    }
}

void LevelPanel::SetMainLanguage() {
    const modLang& language = environment_.language;
    setName(song_, toQt(language.ownText(OwnText::songLevel)));
    setName(voice_, toQt(language.ownText(OwnText::voiceLevel)));
    setName(mix_, toQt(language.ownText(OwnText::mixLevel)));
}

}  // namespace melvane
