#include "app/frm_level_panel.h"

#include <algorithm>
#include <cmath>

#include "controls/caption.h"
#include "controls/control_name.h"
#include "controls/window_layout.h"

namespace melvane {

namespace {

constexpr QRect kSong(343, 64, 6, 72);
constexpr QRect kVoice(391, 64, 6, 72);
constexpr QRect kMix(196, 150, 48, 18);
constexpr QRect kLimiter(246, 150, 46, 18);
constexpr double kFallPerLook = 0.3;  // dB
constexpr double kLeastShown = 0.05;
constexpr double kFarthest = 99;
constexpr Handle kWholeMix = 0;

}  // namespace

LevelPanel::LevelPanel(QWidget* window, Mixer& mixer, const Environment& environment)
    : mixer_(mixer),
      environment_(environment),
      song_(new LevelMeter(window, kSong, Qt::Vertical, Accent::song)),
      voice_(new LevelMeter(window, kVoice, Qt::Vertical, Accent::voice)),
      mix_(new LevelMeter(window, kMix, Qt::Horizontal, Accent::mix)),
      limiter_(addCaption(window, kLimiter, Accent::mix, Qt::AlignRight | Qt::AlignVCenter)) {
    song_->setObjectName(QStringLiteral("songLevel"));
    voice_->setObjectName(QStringLiteral("voiceLevel"));
    mix_->setObjectName(QStringLiteral("mixLevel"));
    limiter_->setObjectName(QStringLiteral("limiter"));
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
    showLimiter(running);
}

// Falls slowly, so that it can be read.
void LevelPanel::showLimiter(bool running) {
    const double now = running ? -20 * std::log10(1 - double{environment_.library.takeReduction()}) : 0;
    taken_ = running ? std::clamp(taken_ - kFallPerLook, std::min(now, kFarthest), kFarthest) : 0;
    limiter_->setText(taken_ < kLeastShown ? QString()
                                           : QStringLiteral("-%1 dB").arg(taken_, 0, 'f', taken_ < 9.95 ? 1 : 0));
}

void LevelPanel::SetMainLanguage() {
    const modLang& language = environment_.language;
    setName(song_, toQt(language.ownText(OwnText::songLevel)));
    setName(voice_, toQt(language.ownText(OwnText::voiceLevel)));
    setName(mix_, toQt(language.ownText(OwnText::mixLevel)));
    const QString lamp = toQt(language.ownText(OwnText::lampMeaning));
    for (LevelMeter* meter : {song_, voice_, mix_}) {
        meter->setToolTip(meter->accessibleName() + u'\n' + lamp);
        meter->setAccessibleDescription(lamp);
    }
    limiter_->setToolTip(toQt(language.ownText(OwnText::limiterMeaning)));
}

}  // namespace melvane
