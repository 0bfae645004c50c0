#include "app/frm_line_up.h"

#include "audio/modAudio.h"
#include "mixing/run_messages.h"
#include "settings/guarded.h"
#include "state/window_patience.h"

namespace melvane {

namespace {
constexpr int kLookMs = 50;
}  // namespace

LineUp::LineUp(QObject* owner, Mixer& mixer, const Environment& environment)
    : QObject(owner), mixer_(mixer), environment_(environment) {
    timer_.setInterval(kLookMs);
    connect(&timer_, &QTimer::timeout, this, &LineUp::look);
}

LineUp::~LineUp() {
    giveUp();
    if (found_.valid()) found_.wait();
}

void LineUp::start(frmTimeline* timeline) {
    if (found_.valid()) return;
    timeline_ = timeline;
    const bool midi = isMidiFile(mixer_.fields().background);
    search_ = {mixer_.fields().background, midi ? mixer_.midi().state().midiBytes : "", mixer_.fields().vocal,
               mixer_.run().key};
    work_ = std::make_shared<Work>();
    found_ = beside([work = work_, search = search_, library = &environment_.library, music = &environment_.music] {
        return findVoice(*library, *music, search, [&](double done) {
            work->done = done;
            return work->wanted.load();
        });
    });
    timer_.start();
}

void LineUp::look() {
    // Found for another song or voice, it is worth nothing.
    if (search_.song != mixer_.fields().background || search_.voice != mixer_.fields().vocal) giveUp();
    if (!isReady(found_)) return timeline_->showLiningUp(work_->done);
    timer_.stop();
    VoiceFound found{.end = SearchEnd::givenUp};
    guarded(environment_.dialogs, environment_.language, [&] { found = found_.get(); });
    tell(found);
}

void LineUp::tell(const VoiceFound& found) {
    if (!work_->wanted)
        timeline_->showNotLinedUp("");
    else if (found.end == SearchEnd::found)
        timeline_->showLinedUp(found.place(), found.certainty);
    else if (found.end == SearchEnd::noTrace)
        timeline_->showNoTrace();
    else
        timeline_->showNotLinedUp(searchMessage(environment_.language, found, search_.song, search_.voice));
}

}  // namespace melvane
