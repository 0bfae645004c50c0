#include "rehearsal/frmTimeline.h"

#include <QKeyEvent>
#include <QShortcut>
#include <algorithm>
#include <cmath>
#include <utility>

#include "audio/modAudio.h"
#include "controls/control_name.h"
#include "controls/skin.h"
#include "controls/window_layout.h"
#include "controls/zoom.h"
#include "rehearsal/place_text.h"
#include "settings/guarded.h"

namespace melvane {

namespace {

constexpr QSize kUsual(760, 340);
constexpr QSize kLeast(560, 220);
constexpr int kMargin = 12;
constexpr int kGap = 4;
constexpr int kTransportY = 28;
constexpr QSize kPlay(44, 28);
constexpr QSize kSmall(32, 28);
constexpr int kRulerY = 62;
constexpr int kRulerHeight = 20;
constexpr int kBottom = 64;  // from the scroll bar to the lower edge
constexpr int kScrollHeight = 10;
constexpr QSize kLineUp(110, 28);
constexpr QSize kMixFast(150, 28);
constexpr int kLabelHeight = 18;
constexpr int kGroupEnd = 2;  // of the transport's small buttons: stop, back, forth | the loop's

constexpr int kTickMs = 33;
constexpr int kTicksALook = 6;  // at what is being read
constexpr double kStepSeconds = 5;
constexpr double kMagnified = 2;
constexpr std::int64_t kScrollFrames = 64;  // one step of the scroll bar
constexpr int kPercent = 100;

std::uint16_t heardOf(const MidiState& midi) {
    unsigned heard = 0;
    for (std::int16_t c = 0; c < kMidiChannels; ++c) heard |= (midi.ChannelInfo[c].switchedOn != 0 ? 1U : 0U) << c;
    return static_cast<std::uint16_t>(midi.soloed == 0 ? heard : heard & midi.soloed);
}

int scrollStep(std::int64_t frames) {
    return static_cast<int>(frames / kScrollFrames);
}

}  // namespace

frmTimeline::frmTimeline(Rehearsal& rehearsal, const MixState& state, const MidiState& midi, Waveforms& waveforms,
                         const modLang& language, Dialogs& dialogs, TimelineCalls calls, QWidget* owner)
    : ResizableWindow(kUsual, kLeast, kGripHeight, owner),
      rehearsal_(rehearsal),
      state_(state),
      midi_(midi),
      waveforms_(waveforms),
      language_(language),
      dialogs_(dialogs),
      calls_(std::move(calls)) {
    setObjectName(QStringLiteral("frmTimeline"));
    addTitle(kCaption);
    addTransport();
    addLanes();
    addBottom();
    bClose_ = addButton(this, "bClose", kClose, ButtonLook::close, Symbol::close, [this] { close(); });
    addKeys();
    timer_.setObjectName(QStringLiteral("ticks"));
    timer_.setInterval(kTickMs);
    connect(&timer_, &QTimer::timeout, this, &frmTimeline::tick);
    arrange(units());
    GetTimelineLanguage();
    play_->setFocus();
}

void frmTimeline::addTransport() {
    play_ = addControl("play", Symbol::play, OwnText::play, [this] { play(); });
    const auto mark = [this](bool begin) {
        const Rehearsal::Loop loop = rehearsal_.loop();
        const std::int64_t here = rehearsal_.position();
        const std::int64_t end = loop.end > here ? loop.end : songFrames();
        begin ? setLoop(here, end) : setLoop(loop.begin < here ? loop.begin : 0, here);
    };
    transport_ = {addControl("stop", Symbol::stop, OwnText::playerStop, [this] { rehearsal_.stop(); }),
                  addControl("back", Symbol::rewind, OwnText::stepBack, [this] { rehearsal_.step(-kStepSeconds); }),
                  addControl("forth", Symbol::next, OwnText::stepForth, [this] { rehearsal_.step(kStepSeconds); }),
                  addControl("loopBegin", Symbol::loopBegin, OwnText::loopFromHere, [mark] { mark(true); }),
                  addControl("loopEnd", Symbol::loopEnd, OwnText::loopToHere, [mark] { mark(false); }),
                  addControl("noLoop", Symbol::noLoop, OwnText::noLoop, [this] { setLoop(0, 0); })};
    position_ = new ElidedLabel(this, Qt::ElideRight);
    position_->setObjectName(QStringLiteral("position"));
    zooms_ = {addControl("zoomOut", Symbol::zoomOut, OwnText::zoomOut, [this] { zoomAtHead(kMagnified); }),
              addControl("zoomIn", Symbol::zoomIn, OwnText::zoomIn, [this] { zoomAtHead(1 / kMagnified); }),
              addControl("whole", Symbol::whole, OwnText::wholeSong, [this] { showAll(); })};
}

void frmTimeline::addLanes() {
    ruler_ = new TimeRuler(this, view_, rehearsal_);
    songLane_ = new SongLane(this, view_, rehearsal_, midi_);
    voiceLane_ = new VoiceLane(this, view_, rehearsal_, state_.run, language_);
    for (Lane* lane : std::initializer_list<Lane*>{ruler_, songLane_, voiceLane_}) {
        connect(lane, &Lane::seekWanted, this, [this](std::int64_t frame) { perform([&] { seek(frame); }); });
        connect(lane, &Lane::zoomWanted, this, &frmTimeline::zoomBy);
        connect(lane, &Lane::scrollWanted, this, &frmTimeline::scrollBy);
    }
    connect(ruler_, &TimeRuler::loopWanted, this, [this](std::int64_t begin, std::int64_t end) {
        perform([&] { setLoop(std::max<std::int64_t>(begin, 0), std::min(end, songFrames())); });
    });
    connect(voiceLane_, &VoiceLane::placeWanted, this, [this](const VoicePlace& to) { perform([&] { place(to); }); });
    connect(voiceLane_, &VoiceLane::changeBegins, this, [this] {
        dragged_ = true;
        Q_EMIT changeBegins();
    });
    connect(voiceLane_, &VoiceLane::changeEnds, this, [this] {
        dragged_ = false;
        Q_EMIT changeEnds();
        refresh();
    });
    scroll_ = new QScrollBar(Qt::Horizontal, this);
    scroll_->setObjectName(QStringLiteral("scroll"));
    connect(scroll_, &QScrollBar::valueChanged, this, [this](int value) {
        view_.scrollTo(value * kScrollFrames);
        showView();
    });
}

void frmTimeline::addBottom() {
    placeLabel_ = new ElidedLabel(this, Qt::ElideRight);
    placeLabel_->setObjectName(QStringLiteral("place"));
    placeLabel_->setProperty("accent", QStringLiteral("voice"));
    noteLabel_ = new ElidedLabel(this, Qt::ElideRight);
    noteLabel_->setObjectName(QStringLiteral("note"));
    lineUp_ = addButton(this, "lineUp", QRect(QPoint(), kLineUp), ButtonLook::plain, Symbol::lineUp,
                        [this] { perform([this] { lineUp(); }); });
    mixFast_ = addButton(this, "mixFast", QRect(QPoint(), kMixFast), ButtonLook::song, Symbol::mix,
                         [this] { perform(calls_.mixFast); });
}

Ed_Button* frmTimeline::addControl(const char* name, Symbol symbol, OwnText text, const Action& action) {
    const bool large = symbol == Symbol::play;
    Ed_Button* button =
        addButton(this, name, QRect(QPoint(), large ? kPlay : kSmall), large ? ButtonLook::song : ButtonLook::plain,
                  symbol, [this, action] { perform(action); });
    button->setFocusPolicy(Qt::TabFocus);  // Space plays and pauses, also behind a click on it
    names_.push_back({button, text});
    return button;
}

void frmTimeline::addKeys() {
    const auto press = [this](const QKeySequence& key, const char* button) {
        addKey(key, [this, button] { findChild<Ed_Button*>(QLatin1String(button))->click(); });
    };
    press(Qt::Key_J, "back");
    press(Qt::Key_L, "forth");
    press(Qt::Key_I, "loopBegin");
    press(Qt::Key_O, "loopEnd");
    press(Qt::Key_U, "noLoop");
    press(Qt::Key_Plus, "zoomIn");
    press(Qt::Key_Equal, "zoomIn");
    press(Qt::Key_Minus, "zoomOut");
    press(Qt::Key_0, "whole");
    const auto move = [this](QKeyCombination key, int milliseconds) {
        addKey(key, [this, milliseconds] { voiceLane_->moveBy(milliseconds); });
    };
    move(Qt::ALT | Qt::Key_Left, VoiceLane::kCoarseMs);
    move(Qt::ALT | Qt::Key_Right, -VoiceLane::kCoarseMs);
    move(Qt::ALT | Qt::SHIFT | Qt::Key_Left, VoiceLane::kFineMs);
    move(Qt::ALT | Qt::SHIFT | Qt::Key_Right, -VoiceLane::kFineMs);
    addKey(Qt::CTRL | Qt::Key_Left, [this] { scrollBy(-songLane_->width() / 2.0); });
    addKey(Qt::CTRL | Qt::Key_Right, [this] { scrollBy(songLane_->width() / 2.0); });
}

void frmTimeline::addKey(const QKeySequence& key, Action action) {
    auto* shortcut = new QShortcut(key, this);
    connect(shortcut, &QShortcut::activated, this, std::move(action));
}

void frmTimeline::perform(const Action& action) {
    guarded(dialogs_, language_, action);
    refresh();
    Q_EMIT changed();
}

void frmTimeline::arrange(const QSize& units) {
    const int right = units.width() - kMargin;
    layOut(bClose_, {right - kClose.width(), kClose.y(), kClose.width(), kClose.height()});
    layOut(play_, {QPoint(kMargin, kTransportY), kPlay});
    int x = kMargin + kPlay.width() + kGap;
    for (std::size_t i = 0; i < transport_.size(); ++i) {
        layOut(transport_[i], {QPoint(x, kTransportY), kSmall});
        x += kSmall.width() + (i == kGroupEnd ? 3 * kGap : kGap);
    }
    const int zoomsX = right - static_cast<int>(zooms_.size()) * (kSmall.width() + kGap) + kGap;
    layOut(position_, {x + 2 * kGap, kTransportY, zoomsX - x - 4 * kGap, kSmall.height()});
    for (std::size_t i = 0; i < zooms_.size(); ++i)
        layOut(zooms_[i], {QPoint(zoomsX + static_cast<int>(i) * (kSmall.width() + kGap), kTransportY), kSmall});

    const int wide = right - kMargin;
    const int lanesY = kRulerY + kRulerHeight + 1;
    const int bottomY = units.height() - kBottom;
    const int lane = (bottomY - lanesY - 2 * kGap) / 2;
    layOut(ruler_, {kMargin, kRulerY, wide, kRulerHeight});
    layOut(songLane_, {kMargin, lanesY, wide, lane});
    layOut(voiceLane_, {kMargin, lanesY + lane + kGap, wide, lane});
    layOut(scroll_, {kMargin, bottomY, wide, kScrollHeight});

    const int rowY = bottomY + kScrollHeight + 2 * kGap;
    layOut(mixFast_, {QPoint(right - kMixFast.width(), rowY + kGap), kMixFast});
    layOut(lineUp_, {QPoint(right - kMixFast.width() - kGap - kLineUp.width(), rowY + kGap), kLineUp});
    const int labels = placeOf(*lineUp_).x() - kMargin - 2 * kGap;
    layOut(placeLabel_, {kMargin, rowY, labels, kLabelHeight});
    layOut(noteLabel_, {kMargin, rowY + kLabelHeight, labels, kLabelHeight});
    view_.setWidth(songLane_->width());
    showView();
}

// --- what the user does ---

void frmTimeline::play() {
    if (rehearsal_.playing()) return rehearsal_.pause();
    calls_.whileOpening([this] { rehearsal_.play(); });
    headBefore_ = rehearsal_.position();
    if (view_.turnTo(headBefore_)) showView();
}

void frmTimeline::seek(std::int64_t frame) {
    rehearsal_.seek(std::min(frame, std::max<std::int64_t>(view_.end() - 1, 0)));
    headBefore_ = rehearsal_.position();
    if (view_.turnTo(headBefore_)) showView();
}

void frmTimeline::setLoop(std::int64_t begin, std::int64_t end) {
    rehearsal_.setLoop({begin, end});
}

void frmTimeline::zoomBy(double factor, double x) {
    view_.zoomBy(factor, x);
    showView();
}

// Around what is heard, as long as it is to be seen.
void frmTimeline::zoomAtHead(double factor) {
    const double x = view_.xOf(rehearsal_.position());
    const double wide = songLane_->width();
    zoomBy(factor, x >= 0 && x < wide ? x : wide / 2);
}

void frmTimeline::scrollBy(double pixels) {
    view_.scrollTo(view_.first() + std::llround(pixels * view_.framesPerPixel()));
    showView();
}

void frmTimeline::showAll() {
    view_.showAll();
    showView();
}

void frmTimeline::place(const VoicePlace& place) {
    calls_.whileOpening([&] { rehearsal_.placeVoice(place); });
}

void frmTimeline::lineUp() {
    if (liningUp_ >= 0) return calls_.giveUpLineUp();
    showLiningUp(0);
    calls_.lineUp();
}

// --- what is shown ---

void frmTimeline::tick() {
    if (rehearsal_.playing()) {
        guarded(dialogs_, language_, [this] { rehearsal_.Timer1_Timer(); });
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
    position_->setFullText(toQt(timeText(now, 1) + " / " + timeText(std::max<std::int64_t>(songFrames(), 0), 1)));
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
    Shown now{earlierOf(state_.run), state_.run.voicePlace, rehearsal_.loop(), heardOf(midi_), 0, songFrames()};
    const auto voice = voice_ ? voice_->outline() : nullptr;
    if (!voice || state_.fields.background.empty()) return now;
    now.begin = std::min<std::int64_t>(0, -now.earlier);
    if (now.place.given()) now.end = std::max(now.end, voice->frames() - now.earlier);
    return now;
}

void frmTimeline::takeFiles() {
    const auto read = [this](std::shared_ptr<Waveform>& waveform, const std::string& file) {
        if (waveform) waveform->forget();
        waveform = file.empty() || isMidiFile(file) ? nullptr : waveforms_.read(file);
    };
    read(song_, state_.fields.background);
    read(voice_, state_.fields.vocal);
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
        voiceLane_->setSongFrames(songFrames());
        if (!dragged_) view_.setRange(now.begin, now.end);
        showView();
    }
    placeLabel_->setFullText(state_.fields.vocal.empty() ? QString() : toQt(placeText(language_, now.earlier)));
    showPosition();
    refreshButtons();
    refreshNote();
}

void frmTimeline::showView() {
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
    const std::string refusal = calls_.fastMixRefusal();
    mixFast_->setEnabled(calls_.mixFast && can && refusal.empty());
    setButtonText(lineUp_, toQt(language_.ownText(liningUp_ < 0 ? OwnText::lineUp : OwnText::stop)),
                  toQt(language_.ownText(OwnText::lineUpMeaning)));
    setButtonText(mixFast_, toQt(language_.ownText(OwnText::mixFast)),
                  toQt(language_.ownText(OwnText::mixFastMeaning) + (refusal.empty() ? "" : "\n" + refusal)));
}

void frmTimeline::refreshNote() {
    const std::string failure = rehearsal_.message();
    std::string note = note_();
    if (rehearsal_.busy()) note = language_.ownText(OwnText::opening);
    if (rehearsal_.unheard()) note = language_.ownText(OwnText::rehearsalUnheard);
    if (!failure.empty()) note = failure;
    noteLabel_->setFullText(toQt(note));
    setStyleState(*noteLabel_, "failed", !failure.empty() || noteFailed_);
}

void frmTimeline::showLiningUp(double done) {
    liningUp_ = done;
    noteFailed_ = false;
    note_ = [this] {
        return language_.ownText(OwnText::liningUp, std::to_string(static_cast<int>(liningUp_ * kPercent)));
    };
    refresh();
}

void frmTimeline::showLinedUp(double certainty) {
    liningUp_ = -1;
    note_ = [this, certainty] {
        return language_.ownText(OwnText::linedUp, std::to_string(static_cast<int>(certainty * kPercent)));
    };
    refresh();
}

void frmTimeline::showNoTrace() {
    liningUp_ = -1;
    note_ = [this] { return language_.ownText(OwnText::noTrace); };
    refresh();
}

void frmTimeline::showNotLinedUp(const std::string& failure) {
    liningUp_ = -1;
    noteFailed_ = !failure.empty();
    note_ = [failure] { return failure; };
    refresh();
}

void frmTimeline::GetTimelineLanguage() {
    setTitle(toQt(language_.ownText(OwnText::rehearsal)));
    for (const NamedButton& named : names_) setButtonText(named.button, {}, toQt(language_.ownText(named.name)));
    setName(ruler_, toQt(language_.ownText(OwnText::playPosition)));
    ruler_->setToolTip(ruler_->accessibleName() + u'\n' + toQt(language_.ownText(OwnText::rulerMeaning)));
    songLane_->setAccessibleName(toQt(language_.ownText(OwnText::songColumn)));
    setName(voiceLane_, toQt(language_.ownText(OwnText::voiceInSong)));
    voiceLane_->setToolTip(voiceLane_->accessibleName() + u'\n' + toQt(language_.ownText(OwnText::voicePlaceMeaning)));
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

void frmTimeline::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat())
        play_->click();
    else
        ResizableWindow::keyPressEvent(event);
}

// Fonts and places follow the zoom.
void frmTimeline::changeEvent(QEvent* event) {
    ResizableWindow::changeEvent(event);
    if (event->type() == QEvent::StyleChange) showView();
}

}  // namespace melvane
