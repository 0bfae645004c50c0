#include "rehearsal/rehearsal.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "audio/modAudio.h"
#include "mixing/run_messages.h"

namespace melvane {

namespace {

constexpr std::int64_t kMsPerSecond = 1000;

}  // namespace

Rehearsal::Rehearsal(const Environment& environment, MixState& state, MixGraph& graph, MidiBackground& midi)
    : with_(environment), run_(state.run), fields_(state.fields), graph_(graph), midi_(midi) {}

bool Rehearsal::canPlay() const {
    return !run_.isMixing && !(fields_.background.empty() && fields_.vocal.empty());
}

void Rehearsal::play() {
    if (busy_ || !canPlay() || (playing() && !outdated())) return;
    if (outdated()) end();
    if (!run_.isRehearsing && !open()) return close();
    paused_ = false;
    graph_.goOn();
}

void Rehearsal::pause() {
    if (!playing() || busy_) return;
    paused_ = true;
    from_ = position();
    graph_.pause();
}

bool Rehearsal::open() {
    busy_ = true;
    abandoned_ = false;
    failed_ = {};
    const RunFailure lastRun = std::exchange(run_.failure, RunFailure::none);
    const int lastCause = std::exchange(run_.cause, 0);
    run_.backgroundPath = fields_.background;
    run_.vocalPath = fields_.vocal;
    run_.isMidiBackground = isMidiFile(run_.backgroundPath);
    with_.library.holdCard();
    try {
        start();
    } catch (...) {
        busy_ = false;
        close();
        throw;
    }
    if (run_.failure != RunFailure::none) keepFailure(run_.failure);
    run_.failure = lastRun;
    run_.cause = lastCause;
    busy_ = false;
    return run_.isRehearsing && !abandoned_;
}

void Rehearsal::start() {
    const auto opens = [this] {
        graph_.closeLast();
        clock_ = run_.voicePlace.driftPpm;
        if (!graph_.open([this] { return !abandoned_; })) return false;
        graph_.playFiles();
        return true;
    };
    const bool loaded = !run_.isMidiBackground || midi_.loaded();
    if (loaded && !opens()) return;
    if (!loaded || !graph_.playSong()) run_.failure = RunFailure::midiUnplayable;
    if (abandoned_ || run_.failure != RunFailure::none) return;
    run_.isRehearsing = true;
    paused_ = true;
    graph_.applySettings();
    with_.library.loopCard(loop_.begin, loop_.end);
    if (from_ > 0) with_.library.cueCard(from_);
}

// What an earlier run has left is none of it.
void Rehearsal::keepFailure(RunFailure failure) {
    failed_ = run_;
    failed_.failure = failure;
    failed_.partPath.clear();
}

// The card is anybody's again, at once: a run, or the player.
void Rehearsal::close() {
    with_.library.holdCard();
    run_.isRehearsing = paused_ = false;
    graph_.close();
    with_.library.loopCard(0, 0);
    with_.library.resumeCard();
}

void Rehearsal::end() {
    abandoned_ = true;
    if (busy_ || !run_.isRehearsing) return;
    from_ = position();
    close();
}

void Rehearsal::stop() {
    end();
    from_ = loop_.begin;
}

void Rehearsal::forget() {
    end();
    from_ = 0;
    loop_ = {};
    failed_ = {};
}

void Rehearsal::seek(std::int64_t frame) {
    from_ = std::max<std::int64_t>(frame, 0);
    if (!run_.isRehearsing) return;
    from_ = std::min(from_, graph_.length());
    with_.library.cueCard(from_);
}

void Rehearsal::step(double seconds) {
    seek(position() + std::llround(seconds * kSampleRate));
}

void Rehearsal::setLoop(const Loop& loop) {
    loop_ = loop.given() ? loop : Loop{};
    loop_.begin = std::max<std::int64_t>(loop_.begin, 0);
    if (run_.isRehearsing) with_.library.loopCard(loop_.begin, loop_.end);
    const std::int64_t next = run_.isRehearsing ? with_.library.cardPosition() : from_;
    if (loop_.given() && next >= loop_.end) seek(loop_.begin);  // nothing else would lead back into it
}

std::int64_t Rehearsal::latency() const {
    BASS_INFO info;
    if (!with_.library.BASS_GetInfo(info)) return 0;
    return static_cast<std::int64_t>(info.latency) * kSampleRate / kMsPerSecond;
}

// What leaves the card is heard a moment later, and what was cued is not heard before its place. While it is paused the
// card stands where it goes on.
std::int64_t Rehearsal::position() const {
    if (!run_.isRehearsing) return from_;
    const std::int64_t leaves = with_.library.cardPosition();
    if (paused_) return leaves;
    const std::int64_t first = loop_.given() && leaves >= loop_.begin ? std::max(from_, loop_.begin) : from_;
    return std::clamp(leaves - latency(), std::min(first, leaves), std::max(leaves, first));
}

void Rehearsal::placeVoice(const VoicePlace& place) {
    run_.voicePlace = place;
    graph_.applySyncOffset();
}

void Rehearsal::trimVoice(float decibels) {
    constexpr float kSteps = 10;
    run_.voiceTrim = std::clamp(std::round(decibels * kSteps) / kSteps, -kMostTrim, kMostTrim);
    graph_.applyTrim();
}

void Rehearsal::Timer1_Timer() {
    if (!playing() || busy_) return;
    const RunFailure lost = graph_.lostSource();
    if (lost != RunFailure::none) {
        keepFailure(lost);
        end();
    } else if (graph_.ended() || with_.library.cardPosition() >= graph_.length()) {
        stop();
    }
}

std::string Rehearsal::message() const {
    const modLang& language = with_.language;
    if (failed_.failure == RunFailure::backgroundLost)
        return language.ownText(OwnText::rehearsalSongLost, failed_.backgroundPath);
    if (failed_.failure == RunFailure::vocalLost)
        return language.ownText(OwnText::rehearsalVoiceLost, failed_.vocalPath);
    const std::string cause = runCause(language, failed_);
    return cause.empty() ? runMessage(language, failed_) : cause;
}

bool Rehearsal::unheard() const {
    return playing() && with_.library.cardPosition() > from_ && !with_.library.cardStatus().deviceOpen;
}

}  // namespace melvane
