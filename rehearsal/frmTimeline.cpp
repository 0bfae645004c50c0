#include "rehearsal/frmTimeline.h"

#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QShortcut>
#include <algorithm>
#include <cmath>
#include <utility>

#include "controls/window_layout.h"
#include "controls/zoom.h"
#include "rehearsal/place_text.h"
#include "settings/guarded.h"

namespace melvane {

namespace {

constexpr QSize kUsual(760, 358);
constexpr QSize kLeast(640, 238);
constexpr int kMargin = 12;
constexpr int kGap = 4;
constexpr int kTransportY = 28;
constexpr QSize kPlay(44, 28);
constexpr QSize kSmall(32, 28);
constexpr int kRulerY = 62;
constexpr int kRulerHeight = 20;
constexpr int kBottom = 82;  // from the scroll bar to the lower edge
constexpr int kScrollHeight = 10;
constexpr int kRowHeight = 28;
constexpr int kLineUp = 100;
constexpr int kMatchLevels = 144;
constexpr int kTrim = 116;
constexpr int kLoudness = 84;
constexpr int kMixFast = 140;
constexpr int kLabelHeight = 18;
constexpr int kGroupEnd = 2;  // of the transport's small buttons: stop, back, forth | the loop's

constexpr int kTickMs = 33;
constexpr double kStepSeconds = 5;
constexpr double kMagnified = 2;

// Space plays and pauses, also behind a click on it.
void leaveSpaceToPlay(Ed_Button* button) {
    button->setFocusPolicy(Qt::TabFocus);
}

// A file that is moved would be removed by who gave it.
void acceptCopy(QDropEvent* event) {
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

}  // namespace

QString lufsText(double lufs) {
    return QString::number(lufs) + QStringLiteral(" LUFS");
}

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
    setAcceptDrops(true);
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
    transport_ = {addControl("stop", Symbol::stop, OwnText::stopRehearsal, [this] { rehearsal_.stop(); }),
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
    connect(voiceLane_, &VoiceLane::placeWanted, this, [this](const VoicePlace& to) {
        guarded(dialogs_, language_, [&] { rehearsal_.placeVoice(to); });
        refresh();
    });
    connect(voiceLane_, &VoiceLane::changeBegins, this, [this] { dragged_ = true; });
    connect(voiceLane_, &VoiceLane::changeEnds, this, [this] {
        dragged_ = false;
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
    lineUp_ = addButton(this, "lineUp", {0, 0, kLineUp, kRowHeight}, ButtonLook::plain, Symbol::lineUp,
                        [this] { perform([this] { lineUp(); }); });
    matchLevels_ = addButton(this, "matchLevels", {0, 0, kMatchLevels, kRowHeight}, ButtonLook::plain, Symbol::settings,
                             [this] { perform(calls_.matchLevels); });
    addTrim();
    addLoudness();
    mixFast_ = addButton(this, "mixFast", {0, 0, kMixFast, kRowHeight}, ButtonLook::song, Symbol::mix,
                         [this] { perform(calls_.mixFast); });
    for (Ed_Button* button : {lineUp_, matchLevels_, mixFast_}) leaveSpaceToPlay(button);
}

// What is typed counts once it is done.
void frmTimeline::addTrim() {
    constexpr double kStep = 0.5;
    trim_ = new QDoubleSpinBox(this);
    trim_->setObjectName(QStringLiteral("trim"));
    trim_->setLocale(QLocale::c());
    trim_->setRange(-double{kMostTrim}, double{kMostTrim});
    trim_->setDecimals(1);
    trim_->setSingleStep(kStep);
    trim_->setButtonSymbols(QAbstractSpinBox::NoButtons);
    trim_->setSuffix(QStringLiteral(" dB"));
    trim_->setKeyboardTracking(false);
    connect(trim_, &QDoubleSpinBox::valueChanged, this,
            [this](double decibels) { perform([&] { rehearsal_.trimVoice(static_cast<float>(decibels)); }); });
}

void frmTimeline::addLoudness() {
    loudness_ = new QComboBox(this);
    loudness_->setObjectName(QStringLiteral("loudness"));
    loudness_->addItem(QString());
    for (const double lufs : {-14.0, -16.0, -18.0, -23.0}) loudness_->addItem(lufsText(lufs), lufs);
    connect(loudness_, &QComboBox::activated, this, [this] {
        const QVariant lufs = loudness_->currentData();
        calls_.setLoudness(lufs.isValid() ? std::optional(lufs.toFloat()) : std::nullopt);
    });
}

Ed_Button* frmTimeline::addControl(const char* name, Symbol symbol, OwnText text, const Action& action) {
    const bool large = symbol == Symbol::play;
    Ed_Button* button =
        addButton(this, name, QRect(QPoint(), large ? kPlay : kSmall), large ? ButtonLook::song : ButtonLook::plain,
                  symbol, [this, action] { perform(action); });
    leaveSpaceToPlay(button);
    names_.push_back({button, text});
    return button;
}

void frmTimeline::addKeys() {
    const auto press = [this](const QKeySequence& key, const char* button) {
        addKey(key, [this, button] { findChild<Ed_Button*>(QLatin1String(button))->click(); });
    };
    press(Qt::Key_S, "stop");
    press(Qt::Key_J, "back");
    press(Qt::Key_L, "forth");
    press(Qt::Key_I, "loopBegin");
    press(Qt::Key_O, "loopEnd");
    press(Qt::Key_U, "noLoop");
    press(Qt::Key_Plus, "zoomIn");
    press(Qt::Key_Equal, "zoomIn");
    press(Qt::Key_Minus, "zoomOut");
    press(Qt::Key_0, "whole");
    // Some window managers keep Alt with arrows to themselves.
    const auto move = [this](QKeyCombination arrow, Qt::Key bracket, int milliseconds) {
        for (const QKeySequence& key : {QKeySequence(arrow), QKeySequence(bracket)})
            addKey(key, [this, milliseconds] { voiceLane_->moveBy(milliseconds); });
    };
    move(Qt::ALT | Qt::Key_Left, Qt::Key_BracketLeft, VoiceLane::kCoarseMs);
    move(Qt::ALT | Qt::Key_Right, Qt::Key_BracketRight, -VoiceLane::kCoarseMs);
    move(Qt::ALT | Qt::SHIFT | Qt::Key_Left, Qt::Key_BraceLeft, VoiceLane::kFineMs);
    move(Qt::ALT | Qt::SHIFT | Qt::Key_Right, Qt::Key_BraceRight, -VoiceLane::kFineMs);
    addKey(Qt::Key_Home, [this] { perform([this] { seek(0); }); });
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

    arrangeBottom(right, bottomY);
    view_.setWidth(songLane_->width());
    showView();
}

// What is done with the voice on the left, the mix on the right, and what is told below.
void frmTimeline::arrangeBottom(int right, int bottomY) {
    const int rowY = bottomY + kScrollHeight + 2 * kGap;
    int x = kMargin;
    for (const auto& [control, width] : std::initializer_list<std::pair<QWidget*, int>>{
             {lineUp_, kLineUp}, {matchLevels_, kMatchLevels}, {trim_, kTrim}}) {
        layOut(control, {x, rowY, width, kRowHeight});
        x += width + kGap;
    }
    layOut(mixFast_, {right - kMixFast, rowY, kMixFast, kRowHeight});
    layOut(loudness_, {right - kMixFast - kGap - kLoudness, rowY, kLoudness, kRowHeight});
    const int labelY = rowY + kRowHeight + kGap;
    const int place = (right - kMargin) / 3;
    layOut(placeLabel_, {kMargin, labelY, place, kLabelHeight});
    layOut(noteLabel_, {kMargin + place + kGap, labelY, right - kMargin - place - kGap, kLabelHeight});
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

void frmTimeline::lineUp() {
    if (liningUp_ >= 0) return calls_.giveUpLineUp();
    showLiningUp(0);
    calls_.lineUp();
}

void frmTimeline::dragEnterEvent(QDragEnterEvent* event) {
    if (!state_.run.isMixing && event->mimeData()->hasUrls() && event->possibleActions() & Qt::CopyAction)
        acceptCopy(event);
}

void frmTimeline::dragMoveEvent(QDragMoveEvent* event) {
    acceptCopy(event);
}

void frmTimeline::dropEvent(QDropEvent* event) {
    acceptCopy(event);
    const QWidget* lane = childAt(event->position().toPoint());
    Q_EMIT filesDropped(event->mimeData()->urls(), lane == songLane_    ? FileLane::song
                                                   : lane == voiceLane_ ? FileLane::voice
                                                                        : FileLane::none);
}

void frmTimeline::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat())
        play_->click();
    else
        ResizableWindow::keyPressEvent(event);
}

}  // namespace melvane
