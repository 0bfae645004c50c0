#include "app/frm_line_up.h"

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
constexpr int kPercent = 100;
}  // namespace

LineUp::LineUp(QObject* owner, Mixer& mixer, const Environment& environment, Calls calls)
    : QObject(owner), mixer_(mixer), environment_(environment), calls_(std::move(calls)) {
    timer_.setInterval(kLookMs);
    connect(&timer_, &QTimer::timeout, this, &LineUp::look);
}

LineUp::~LineUp() {
    giveUp();
    if (found_.valid()) found_.wait();
}

void LineUp::giveUp() {
    next_ = Wish::none;
    work_->wanted = false;
}

void LineUp::startByItself() {
    const VoicePlace& place = mixer_.run().voicePlace;
    const bool placedByUser = place.given() && !(put_ && put_->place == place);
    const PathFields& files = mixer_.fields();
    const bool songReady = !isMidiFile(files.background) || mixer_.midi().loaded();
    giveUp();
    if (!mixer_.settings().linesUpVoices || placedByUser || !songReady) return;
    if (!files.background.empty() && !files.vocal.empty()) wish(Wish::byItself);
}

void LineUp::wish(Wish wish) {
    giveUp();
    next_ = wish;
    if (!found_.valid()) begin();
}

void LineUp::begin() {
    wish_ = std::exchange(next_, Wish::none);
    before_ = mixer_.run().voicePlace;
    takesTime_ = false;
    const bool midi = isMidiFile(mixer_.fields().background);
    search_ = {mixer_.fields().background, midi, midi ? mixer_.midi().reader() : nullptr, mixer_.fields().vocal,
               mixer_.run().key};
    work_ = std::make_shared<Work>();
    found_ =
        beside([work = work_, search = search_, lowers = wish_ == Wish::byItself, library = &environment_.library] {
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
    if (!areChosen(search_.song, search_.voice)) work_->wanted = false;  // what is found is worth nothing
    if (!isReady(found_) || (work_->wanted && calls_.busy())) {
        takesTime_ = work_->wanted;
        if (takesTime_) Q_EMIT looking(work_->done);
        return;
    }
    VoiceFound found{.end = SearchEnd::givenUp};
    guarded(environment_.dialogs, environment_.language, [&] { found = found_.get(); });
    timer_.stop();
    if (next_ != Wish::none) return begin();
    end(found);
}

void LineUp::end(const VoiceFound& found) {
    const bool moved = wish_ == Wish::byItself && mixer_.run().voicePlace != before_;
    const bool tellsWhyNot = wish_ == Wish::asked && work_->wanted;
    if (work_->wanted && found.end == SearchEnd::found && !moved) {
        place(found);
        Q_EMIT linedUp(found.certainty);
    } else if (!tellsWhyNot || found.end == SearchEnd::found || found.end == SearchEnd::givenUp) {
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
    if (found_.valid() && work_->wanted && takesTime_)
        return language.ownText(OwnText::liningUp, std::to_string(static_cast<int>(work_->done * kPercent)));
    const RunState& run = mixer_.run();
    const bool there = put_ && put_->place == run.voicePlace && areChosen(put_->song, put_->voice);
    return there ? linedUpText(language, earlierOf(run), put_->certainty) : "";
}

}  // namespace melvane
