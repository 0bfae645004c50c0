// What the timeline shows, and how it follows what plays.
#include <algorithm>
#include <cmath>
#include <utility>

#include "audio/modAudio.h"
#include "controls/control_name.h"
#include "controls/skin.h"
#include "controls/window_layout.h"
#include "rehearsal/frmTimeline.h"
#include "rehearsal/place_text.h"
#include "settings/guarded.h"

namespace melvane {

namespace {

constexpr int kTicksALook = 6;  // at what is being read
constexpr int kPercent = 100;

std::uint16_t heardOf(const MidiState& midi) {
    unsigned heard = 0;
    for (std::int16_t c = 0; c < kMidiChannels; ++c) heard |= (midi.ChannelInfo[c].switchedOn != 0 ? 1U : 0U) << c;
    return static_cast<std::uint16_t>(midi.soloed == 0 ? heard : heard & midi.soloed);
}

// Decoding a long recording takes a while.
bool stillOpening(const std::shared_ptr<Waveform>& file) {
    return file && !file->finished() && !file->outline();
}

}  // namespace

void frmTimeline::tick() {
    if (rehearsal_.playing()) {
        guarded(dialogs_, language_, [this] {
            rehearsal_.Timer1_Timer();
            if (rehearsal_.outdated()) calls_.whileOpening([this] { rehearsal_.play(); });
        });
        if (!rehearsal_.playing()) Q_EMIT changed();
    }
    showPosition();
    followHead();
    if (++ticks_ % kTicksALook == 0) {
        lookAtWaveforms();
        refresh();
    }
}

void frmTimeline::showPosition() {
    const std::int64_t now = rehearsal_.position();
    for (Lane* lane : std::initializer_list<Lane*>{ruler_, songLane_, voiceLane_}) lane->showPlayhead(now);
    position_->setFullText(toQt(timeText(now, 1) + " / " + timeText(std::max<std::int64_t>(shown_.song, 0), 1)));
}

// Unless the user has scrolled it out of sight.
void frmTimeline::followHead() {
    const std::int64_t now = rehearsal_.position();
    const std::int64_t before = std::exchange(headBefore_, now);
    const bool seen = before >= view_.first() && before < view_.first() + view_.shown();
    if (seen && now != before && view_.turnTo(now)) showView();
}

bool frmTimeline::stillReading() const {
    return (song_ && !song_->finished()) || (voice_ && !voice_->finished());
}

void frmTimeline::lookAtWaveforms() {
    const bool reading = stillReading();
    if (!reading && !std::exchange(readBefore_, reading)) return;
    readBefore_ = reading;
    songLane_->setOutline(song_ ? song_->outline() : nullptr);
    voiceLane_->setOutline(voice_ ? voice_->outline() : nullptr);
}

std::int64_t frmTimeline::songFrames() const {
    if (isMidiFile(state_.fields.background)) return std::llround(double{midi_.midiLength} * kSampleRate);
    const auto& whose = state_.fields.background.empty() ? voice_ : song_;
    const auto outline = whose ? whose->outline() : nullptr;
    return outline ? outline->frames() : 0;
}

frmTimeline::Shown frmTimeline::shownNow() const {
    const std::int64_t song = songFrames();
    Shown now{earlierOf(state_.run), state_.run.voicePlace, rehearsal_.loop(), heardOf(midi_), 0, song, song};
    const auto voice = voice_ ? voice_->outline() : nullptr;
    if (!voice || state_.fields.background.empty()) return now;
    now.begin = std::min<std::int64_t>(0, -now.earlier);
    if (now.place.given()) now.end = std::max(now.end, voice->frames() - now.earlier);
    return now;
}

void frmTimeline::takeFiles() {
    const auto read = [this](const std::string& file) {
        return file.empty() || isMidiFile(file) ? nullptr : waveforms_.read(file);
    };
    song_ = read(state_.fields.background);
    voice_ = read(state_.fields.vocal);
    songLane_->setShowsNotes(isMidiFile(state_.fields.background));
    readBefore_ = true;
    lookAtWaveforms();
    refresh();
    showAll();
}

void frmTimeline::refresh() {
    const bool moves = rehearsal_.playing() || state_.run.isMixing || stillReading() || readBefore_;
    if (moves && isVisible() && !timer_.isActive()) timer_.start();
    if (!moves || !isVisible()) timer_.stop();
    const Shown now = shownNow();
    if (now != shown_) {
        shown_ = now;
        voiceLane_->setSongFrames(now.song);
        if (!dragged_) view_.setRange(now.begin, now.end);
        showView();
    }
    placeLabel_->setFullText(state_.fields.vocal.empty() ? QString() : toQt(placeText(language_, now.earlier)));
    showPosition();
    followFastMix();
    refreshButtons();
    refreshNote();
}

void frmTimeline::showView() {
    const auto scrollStep = [](std::int64_t frames) { return static_cast<int>(frames / kScrollFrames); };
    for (Lane* lane : std::initializer_list<Lane*>{ruler_, songLane_, voiceLane_}) lane->redraw();
    const QSignalBlocker quiet(scroll_);
    scroll_->setRange(scrollStep(view_.begin()),
                      std::max(scrollStep(view_.end() - view_.shown()), scrollStep(view_.begin())));
    scroll_->setPageStep(std::max(scrollStep(view_.shown()), 1));
    scroll_->setSingleStep(std::max(scroll_->pageStep() / 10, 1));
    scroll_->setValue(scrollStep(view_.first()));
}

void frmTimeline::refreshButtons() {
    const bool playing = rehearsal_.playing();
    const bool can = rehearsal_.canPlay();
    setButtonLook(play_, playing ? ButtonLook::running : ButtonLook::song, playing ? Symbol::pause : Symbol::play);
    setButtonText(play_, {}, toQt(language_.ownText(playing ? OwnText::pause : OwnText::play)));
    play_->setEnabled(can);
    for (Ed_Button* button : transport_) button->setEnabled(can);
    transport_.back()->setEnabled(can && rehearsal_.loop().given());
    lineUp_->setEnabled(calls_.lineUp && can && !state_.fields.background.empty() && !state_.fields.vocal.empty());
    refreshLineUp();
    refreshLevels(can);
    refreshFastMix(can);
}

// The button begins a search, and gives up the one that goes on.
void frmTimeline::refreshLineUp() {
    const bool goesOn = liningUp_ >= 0;
    setButtonLook(lineUp_, ButtonLook::plain, goesOn ? Symbol::stop : Symbol::lineUp);
    setButtonText(lineUp_, toQt(language_.ownText(goesOn ? OwnText::stop : OwnText::lineUp)),
                  toQt(language_.ownText(goesOn ? OwnText::giveUpLineUpMeaning : OwnText::lineUpMeaning)));
}

// What is being typed stays: the field's value is the old one until it is done.
void frmTimeline::refreshLevels(bool can) {
    const bool both = can && !state_.fields.background.empty() && !state_.fields.vocal.empty();
    matchLevels_->setEnabled(calls_.matchLevels && both && !mixesFast_ && calls_.fastMixRefusal().empty());
    trim_->setEnabled(!state_.fields.vocal.empty());
    const QSignalBlocker quiet(trim_);
    if (static_cast<float>(trim_->value()) != state_.run.voiceTrim) trim_->setValue(double{state_.run.voiceTrim});
    const auto& lufs = state_.run.targetLoudness;
    if (!lufs) return loudness_->setCurrentIndex(0);
    if (loudness_->findData(double{*lufs}) < 0) loudness_->addItem(lufsText(double{*lufs}), double{*lufs});
    loudness_->setCurrentIndex(loudness_->findData(double{*lufs}));
}

// The button begins a mix, and cancels it while it goes on.
void frmTimeline::refreshFastMix(bool can) {
    const std::string refusal = mixesFast_ ? "" : calls_.fastMixRefusal();
    setButtonLook(mixFast_, mixesFast_ ? ButtonLook::recording : ButtonLook::song,
                  mixesFast_ ? Symbol::stop : Symbol::mix);
    mixFast_->setEnabled(mixesFast_ || (calls_.mixFast && can && refusal.empty()));
    const std::string meaning = language_.ownText(mixesFast_ ? OwnText::cancelFastMixMeaning : OwnText::mixFastMeaning);
    setButtonText(mixFast_, toQt(language_.ownText(mixesFast_ ? OwnText::cancelFastMix : OwnText::mixFast)),
                  toQt(meaning + (refusal.empty() ? "" : "\n" + refusal)));
}

// What of several things is told: first what went wrong, then what goes on, then what was done last.
frmTimeline::Note frmTimeline::noteNow() const {
    if (const std::string failure = rehearsal_.message(); !failure.empty()) return {failure, "", true};
    if (mixesFast_) return {calls_.fastMix().text};
    if (rehearsal_.unheard()) return {language_.ownText(OwnText::rehearsalUnheard)};
    if (rehearsal_.busy()) return {calls_.opening()};
    if (const std::string decoding = calls_.decoding(); !decoding.empty()) return {decoding};
    if (Note last = note_(); !last.text.empty()) return last;
    if (stillOpening(song_) || stillOpening(voice_)) return {calls_.opening()};
    if (rehearsal_.playing() && state_.run.voiceOutsideSong) return {language_.ownText(OwnText::voiceOutsideSong)};
    return {};
}

void frmTimeline::refreshNote() {
    const Note note = noteNow();
    noteLabel_->setFullText(toQt(note.text), {}, {}, toQt(note.brief));
    setStyleState(*noteLabel_, "failed", note.failed);
}

void frmTimeline::followFastMix() {
    if (!std::exchange(mixesFast_, calls_.fastMix().going) || mixesFast_) return;
    note_ = [this] {
        const FastMixNews news = calls_.fastMix();
        return Note{news.text, news.brief, news.failed};
    };
}

void frmTimeline::showLiningUp(double done) {
    liningUp_ = done;
    note_ = [this] {
        return Note{language_.ownText(OwnText::liningUp, std::to_string(static_cast<int>(liningUp_ * kPercent)))};
    };
    refresh();
}

void frmTimeline::showLinedUp(double certainty) {
    liningUp_ = -1;
    // As long as the voice stays there.
    note_ = [this, certainty, at = state_.run.voicePlace] {
        const int percent = static_cast<int>(certainty * kPercent);
        return Note{state_.run.voicePlace == at ? language_.ownText(OwnText::linedUp, std::to_string(percent)) : ""};
    };
    refresh();
}

void frmTimeline::showNoTrace() {
    liningUp_ = -1;
    note_ = [this] { return Note{language_.ownText(OwnText::noTrace)}; };
    refresh();
}

void frmTimeline::showNotLinedUp(const std::string& failure) {
    liningUp_ = -1;
    note_ = [failure] { return Note{failure, "", true}; };
    refresh();
}

void frmTimeline::GetTimelineLanguage() {
    setTitle(toQt(language_.ownText(OwnText::rehearsal)));
    for (const NamedButton& named : names_) setButtonText(named.button, {}, toQt(language_.ownText(named.name)));
    setName(ruler_, toQt(language_.ownText(OwnText::playPosition)));
    ruler_->setToolTip(ruler_->accessibleName() + u'\n' + toQt(language_.ownText(OwnText::rulerMeaning)));
    songLane_->setAccessibleName(toQt(language_.ownText(OwnText::songColumn)));
    setName(voiceLane_, toQt(language_.ownText(OwnText::voicePlace)));
    voiceLane_->setToolTip(voiceLane_->accessibleName() + u'\n' + toQt(language_.ownText(OwnText::voicePlaceMeaning)));
    setButtonText(matchLevels_, toQt(language_.ownText(OwnText::matchLevels)),
                  toQt(language_.ownText(OwnText::matchLevelsMeaning)));
    setName(trim_, toQt(language_.ownText(OwnText::voiceTrim)));
    trim_->setToolTip(trim_->accessibleName() + u'\n' + toQt(language_.ownText(OwnText::voiceTrimMeaning)));
    trim_->setPrefix(toQt(language_.ownText(OwnText::trimField)));
    setName(loudness_, toQt(language_.ownText(OwnText::mixLoudness)));
    loudness_->setToolTip(toQt(language_.ownText(OwnText::mixLoudnessMeaning)));
    loudness_->setItemText(0, toQt(language_.ownText(OwnText::mixLoudnessOff)));
    scroll_->setAccessibleName(toQt(language_.ownText(OwnText::shownPart)));
    setButtonText(bClose_, {}, toQt(language_.lang(LangEntry::close)));
    refresh();
}

void frmTimeline::showEvent(QShowEvent* event) {
    ResizableWindow::showEvent(event);
    refresh();
}

void frmTimeline::closeEvent(QCloseEvent*) {
    guarded(dialogs_, language_, [this] { rehearsal_.end(); });
    timer_.stop();
    Q_EMIT changed();
}

// Fonts and places follow the zoom.
void frmTimeline::changeEvent(QEvent* event) {
    ResizableWindow::changeEvent(event);
    if (event->type() == QEvent::StyleChange) showView();
}

}  // namespace melvane
