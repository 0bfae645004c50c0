#include "app/frm_line_up.h"

#include <chrono>
#include <utility>

#include "audio/modAudio.h"
#include "base/low_priority.h"
#include "mixing/run_messages.h"
#include "rehearsal/place_text.h"
#include "settings/guarded.h"
#include "state/window_patience.h"

namespace melvane {

namespace {
constexpr int kLookMs = 50;
constexpr std::chrono::seconds kEndPatience{1};
constexpr int kPercent = 100;
}  // namespace

LineUp::LineUp(QObject* owner, Mixer& mixer, const Environment& environment, Waveforms& waveforms, Calls calls)
    : QObject(owner), mixer_(mixer), environment_(environment), calls_(std::move(calls)), waveforms_(waveforms) {
    timer_.setInterval(kLookMs);
    connect(&timer_, &QTimer::timeout, this, &LineUp::look);
}

LineUp::~LineUp() {
    leave();
    const auto limit = std::chrono::steady_clock::now() + kEndPatience;
    for (const auto& left : left_) left.wait_until(limit);
}

void LineUp::leave() {
    std::erase_if(left_, [](const auto& left) { return isReady(left); });
    if (!found_.valid()) return;
    work_->wanted = false;
    timer_.stop();
    left_.push_back(std::move(found_));
}

void LineUp::giveUp() {
    if (!found_.valid()) return;
    leave();
    Q_EMIT notLinedUp("");
}

void LineUp::startByItself() {
    const VoicePlace& place = mixer_.run().voicePlace;
    const bool placedByUser = place.given() && !(put_ && put_->place == place);
    const PathFields& files = mixer_.fields();
    const bool songReady = !isMidiFile(files.background) || mixer_.midi().loaded();
    giveUp();
    if (!mixer_.settings().linesUpVoices || placedByUser || !songReady) return;
    if (!files.background.empty() && !files.vocal.empty()) begin(Wish::byItself);
}

void LineUp::begin(Wish wish) {
    leave();
    wish_ = wish;
    before_ = mixer_.run().voicePlace;
    takesTime_ = false;
    const PathFields& files = mixer_.fields();
    const bool midi = isMidiFile(files.background);
    const auto imprintOf = [this](const std::string& file) {
        return [waveform = waveforms_.read(file)](const auto& goOn) { return waveform->imprint(goOn); };
    };
    search_ = {files.background, midi, midi ? mixer_.midi().reader() : nullptr, files.vocal, mixer_.run().key};
    VoiceSearch search = search_;
    search.voiceImprint = imprintOf(files.vocal);
    if (!midi) search.songImprint = imprintOf(files.background);
    work_ = std::make_shared<Work>();
    found_ = beside(
        [work = work_, search = std::move(search), lowers = wish == Wish::byItself, library = &environment_.library] {
            if (lowers) lowerPriority();
            return findVoice(*library, search, [&](double done) {
                work->done = done;
                return work->wanted.load();
            });
        });
    timer_.start();
}

bool LineUp::areChosen(const std::string& song, const std::string& voice) const {
    return song == mixer_.fields().background && voice == mixer_.fields().vocal;
}

void LineUp::look() {
    if (!areChosen(search_.song, search_.voice)) return giveUp();  // what is found is worth nothing
    if (!isReady(found_) || calls_.busy()) {
        takesTime_ = true;
        Q_EMIT looking(work_->done);
        return;
    }
    timer_.stop();
    VoiceFound found{.end = SearchEnd::givenUp};
    guarded(environment_.dialogs, environment_.language, [&] { found = found_.get(); });
    end(found);
}

void LineUp::end(const VoiceFound& found) {
    const bool moved = wish_ == Wish::byItself && mixer_.run().voicePlace != before_;
    if (found.end == SearchEnd::found && !moved) {
        place(found);
        Q_EMIT linedUp(found.certainty);
    } else if (wish_ == Wish::byItself || found.end == SearchEnd::givenUp) {
        Q_EMIT notLinedUp("");
    } else if (found.end == SearchEnd::noTrace) {
        Q_EMIT noTrace();
    } else {
        Q_EMIT notLinedUp(searchMessage(environment_.language, found, search_.song, search_.voice));
    }
}

void LineUp::place(const VoiceFound& found) {
    calls_.change([&] { mixer_.rehearsal().placeVoice(found.place()); });
    put_ = {search_.song, search_.voice, mixer_.run().voicePlace, found.certainty};
}

std::string LineUp::message() const {
    const modLang& language = environment_.language;
    if (found_.valid() && takesTime_)
        return language.ownText(OwnText::liningUp, std::to_string(static_cast<int>(work_->done * kPercent)));
    const RunState& run = mixer_.run();
    const bool there = put_ && put_->place == run.voicePlace && areChosen(put_->song, put_->voice);
    return there ? linedUpText(language, earlierOf(run), put_->certainty) : "";
}

}  // namespace melvane
