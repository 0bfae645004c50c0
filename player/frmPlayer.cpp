#include "player/frmPlayer.h"

#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QShortcut>
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <utility>

#include "base/paths.h"
#include "controls/control_name.h"
#include "controls/skin.h"
#include "controls/window_layout.h"
#include "controls/window_region.h"
#include "controls/zoom.h"
#include "mixing/loudness_text.h"
#include "settings/guarded.h"
#include "state/numbers.h"
#include "state/window_patience.h"

namespace melvane {

namespace {

constexpr QSize kSize(274, 146);
constexpr int kBarLeft = (kSize.width() - PlayBar::kUnits) / 2;
constexpr QRect kFile(14, 14, kSize.width() - 28, 22);
constexpr QRect kTime(44, 38, kSize.width() - 88, 16);
constexpr QPoint kBack(14, 36);
constexpr short kBackButton = 1;
constexpr QRect kBar(kBarLeft - PlayBar::kMargin, 58, PlayBar::kUnits + 2 * PlayBar::kMargin, 18);
constexpr QRect kLoudness(14, 76, kSize.width() - 28, 16);
constexpr QRect kPlay(14, 94, 40, 28);
constexpr int kButtonStep = 46;
constexpr QRect kCloseButton(156, 94, 104, 28);

constexpr int kTickMs = 200;
constexpr int kOpeningMs = 10;
constexpr int kBytesPerSecond = kSampleRate * kBytesPerFrame;

// The background: a wave that goes through the whole window.
class Picture : public QWidget {
public:
    explicit Picture(QWidget* window) : QWidget(window) { layOut(this, {QPoint(), kSize}); }

protected:
    void paintEvent(QPaintEvent*) override {
        constexpr double kTurns = 0.045;  // of the phase a unit
        constexpr int kWaves = 3;
        PlacePainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(QColor(skin::kRaised), 1));
        constexpr int width = kSize.width();
        constexpr double middle = kSize.height() / 2.0;
        for (int wave = 1; wave <= kWaves; ++wave) {
            QPainterPath path(QPointF(0, middle));
            for (int x = 0; x <= width; x += 2) {
                const double swell = std::sin(M_PI * x / width) * kSize.height() / 2.5;
                path.lineTo(x, middle + swell * std::sin(kTurns * x + wave) * wave / kWaves);
            }
            painter.drawPath(path);
        }
    }
};

QString timeText(std::uint64_t bytes) {
    return QString::fromStdString(clockText(static_cast<std::int64_t>(bytes / kBytesPerSecond)));
}

}  // namespace

frmPlayer::frmPlayer(AudioLibrary& library, const modLang& language, Dialogs& dialogs, std::string playerFile,
                     QWidget* owner)
    : FramelessWindow(kPlayerRegion, kSize.height(), owner),
      library_(library),
      language_(language),
      dialogs_(dialogs),
      playerFile_(std::move(playerFile)) {
    setObjectName(QStringLiteral("frmPlayer"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::ApplicationModal);
    auto* Image1 = new Picture(this);
    Image1->setObjectName(QStringLiteral("Image1"));
    Label1_ = new ElidedLabel(this, Qt::ElideMiddle);
    Label1_->setObjectName(QStringLiteral("Label1"));
    Label1_->setAlignment(Qt::AlignCenter);
    layOut(Label1_, kFile);
    addBar();
    addButtons();
    open();
    GetPlayerLanguage();
    setFocus();  // a stray Space closes nothing
    // The menu, whose key this is, belongs to a window that waits.
    connect(new QShortcut(Qt::CTRL | Qt::Key_Q, this), &QShortcut::activated, this, [this] {
        close();
        Q_EMIT quitWanted();
    });
    Timer1_.setObjectName(QStringLiteral("Timer1"));
    Timer1_.setInterval(kTickMs);
    connect(&Timer1_, &QTimer::timeout, this, &frmPlayer::Timer1_Timer);
    Timer1_.start();
}

frmPlayer::~frmPlayer() {
    if (opening_.valid()) {
        while (!isReady(opening_, kEventPatience)) library_.giveUpOpening();
        playerStream_ = opening_.get();
    }
    library_.BASS_ChannelStop(playerStream_);
    library_.BASS_MusicFree(playerStream_);
}

void frmPlayer::open() {
    opening_ = std::async(std::launch::async | std::launch::deferred,
                          [this] { return library_.BASS_StreamCreateFile(false, playerFile_.c_str(), 0, 0, 0); });
    connect(&opened_, &QTimer::timeout, this, &frmPlayer::lookWhetherOpened);
    opened_.start(kOpeningMs);
}

void frmPlayer::lookWhetherOpened() {
    if (!isReady(opening_)) return;
    opened_.stop();
    playerStream_ = opening_.get();
    length_ = library_.BASS_ChannelGetLength(playerStream_);
    if (playerStream_ != 0) measuring_.start(playerFile_);
    for (QWidget* control : std::initializer_list<QWidget*>{progress_, Ed_Button1_, Ed_Button2_, Ed_Button3_})
        control->setEnabled(playerStream_ != 0);
    if (!focusWidget() || focusWidget() == this)
        (playerStream_ == 0 ? static_cast<QWidget*>(bClose_) : progress_)->setFocus();
    GetPlayerLanguage();
}

void frmPlayer::addBar() {
    time_ = new QLabel(this);
    time_->setObjectName(QStringLiteral("time"));
    time_->setAlignment(Qt::AlignCenter);
    layOut(time_, kTime);
    loudnessLabel_ = new ElidedLabel(this, Qt::ElideRight);
    loudnessLabel_->setObjectName(QStringLiteral("loudness"));
    loudnessLabel_->setAlignment(Qt::AlignCenter);
    layOut(loudnessLabel_, kLoudness);
    progress_ = new PlayBar(this);
    progress_->setObjectName(QStringLiteral("progress"));
    layOut(progress_, kBar);
    progress_->setEnabled(false);
    connect(progress_, &PlayBar::pointedAt, this, [this](double ratio) { seek(ratio * static_cast<double>(length_)); });
    connect(progress_, &PlayBar::stepped, this, [this](int seconds) {
        seek(static_cast<double>(library_.BASS_ChannelGetPosition(playerStream_)) + seconds * kBytesPerSecond);
    });
}

void frmPlayer::addButtons() {
    const QRect pause = kPlay.translated(kButtonStep, 0);
    const QRect stop = pause.translated(kButtonStep, 0);
    Ed_Button1_ = addControl("Ed_Button1", kPlay, ButtonLook::song, Symbol::play, &frmPlayer::Ed_Button1_Click);
    Ed_Button2_ = addControl("Ed_Button2", pause, ButtonLook::plain, Symbol::pause, &frmPlayer::Ed_Button2_Click);
    Ed_Button3_ = addControl("Ed_Button3", stop, ButtonLook::plain, Symbol::stop, &frmPlayer::Ed_Button3_Click);
    b_main_ = addNavButton(this, "b_main", kBack, kBackButton, [this] { close(); });
    bClose_ = addButton(this, "bClose", kCloseButton, ButtonLook::plain, Symbol::close, [this] { close(); });
}

Ed_Button* frmPlayer::addControl(const char* name, const QRect& place, ButtonLook look, Symbol symbol,
                                 void (frmPlayer::*click)()) {
    Ed_Button* button = addButton(this, name, place, look, symbol,
                                  [this, click] { guarded(dialogs_, language_, [&] { (this->*click)(); }); });
    button->setEnabled(false);
    // Space plays and pauses, also behind a click on this button.
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

void frmPlayer::Ed_Button1_Click() {
    setPlaying(library_.BASS_ChannelPlay(playerStream_, false));
}

// The library knows no pause: a stopped channel keeps its position.
void frmPlayer::Ed_Button2_Click() {
    Ed_Button3_Click();
}

void frmPlayer::Ed_Button3_Click() {
    library_.BASS_ChannelStop(playerStream_);
    setPlaying(false);
    showPosition();
}

// The play button is lit and says so while it plays.
void frmPlayer::setPlaying(bool playing) {
    playing_ = playing;
    setButtonLook(Ed_Button1_, playing ? ButtonLook::running : ButtonLook::song, Symbol::play);
    setButtonText(Ed_Button1_, {}, toQt(language_.ownText(playing ? OwnText::playing : OwnText::play)));
}

void frmPlayer::Timer1_Timer() {
    if (const auto measured = measuring_.ended()) {
        loudness_ = measured;
        showLoudness();
    }
    if (!playing_) return;
    // Asked before the position: a channel that came to its end is no longer active.
    const bool active = library_.BASS_ChannelIsActive(playerStream_) == ChannelActivity::playing;
    showPosition();
    if (!active || ratio() == 1) Ed_Button3_Click();
}

void frmPlayer::showLoudness() {
    if (loudness_)
        loudnessLabel_->setFullText(toQt(loudnessText(language_, *loudness_)), {}, {},
                                    toQt(loudnessBrief(language_, *loudness_)));
}

double frmPlayer::ratio() const {
    if (length_ == 0) return 0;
    return static_cast<double>(library_.BASS_ChannelGetPosition(playerStream_)) / static_cast<double>(length_);
}

void frmPlayer::showPosition() {
    progress_->setValue(static_cast<int>(ratio() * PlayBar::kUnits));
    if (playerStream_ == 0) return;
    time_->setText(timeText(library_.BASS_ChannelGetPosition(playerStream_)) + QStringLiteral(" / ") +
                   timeText(length_));
}

void frmPlayer::seek(double position) {
    const auto bytes = static_cast<std::uint64_t>(std::clamp(position, 0.0, static_cast<double>(length_)));
    library_.BASS_ChannelSetPosition(playerStream_, bytes - bytes % kBytesPerFrame);
    showPosition();
}

void frmPlayer::GetPlayerLanguage() {
    const auto tip = [this](OwnText text) { return toQt(language_.ownText(text)); };
    time_->setText(opening_.valid() ? tip(OwnText::opening) : QString());
    if (playerStream_ != 0 || opening_.valid())
        Label1_->setFullText(toQt(playerFile_));
    else
        Label1_->setFullText(toQt(language_.ownText(OwnText::cannotPlayFile, toText(toPath(playerFile_).filename()))));
    setName(progress_, tip(OwnText::playPosition));
    setPlaying(playing_);
    setButtonText(Ed_Button2_, {}, tip(OwnText::pause));
    setButtonText(Ed_Button3_, {}, tip(OwnText::playerStop));
    const QString close = toQt(language_.lang(LangEntry::menuClose));
    setName(b_main_, tip(OwnText::backToMain));
    setButtonText(bClose_, close, close);
    setTitle(tip(OwnText::listen));
    showPosition();
    showLoudness();
}

void frmPlayer::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Space && playerStream_ != 0 && !event->isAutoRepeat())
        playing_ ? Ed_Button2_Click() : Ed_Button1_Click();
    else
        FramelessWindow::keyPressEvent(event);
}

}  // namespace melvane
