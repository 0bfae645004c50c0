// The timeline under a user's hands.
#include "rehearsal/frmTimeline.h"

#include <QAccessible>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QPaintEvent>
#include <QSignalSpy>
#include <QUrl>

#include "rehearsal/place_text.h"
#include "tests/program_fixture.h"
#include "tests/sound.h"

namespace melvane {
namespace {

using namespace melvane::test;

// What of a widget is painted.
struct PaintedPart : QObject {
    explicit PaintedPart(QWidget& widget) { widget.installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint) region += static_cast<QPaintEvent*>(event)->region();
        return false;
    }
    int pixels() const {
        int sum = 0;
        for (const QRect& part : region) sum += part.width();
        return sum;
    }
    QRegion region;
};

modLang english() {
    modLang language;
    language.InitLanguage(FakeFileNames(), "en");
    return language;
}

struct TimelineFixture : testing::Test, SilentProgram {
    static constexpr std::int64_t kSong = 441'000;
    static constexpr std::int64_t kVoice = 88'200;

    TimelineFixture() {
        const std::string song = dir.write("song.mp3", "a song");
        const std::string voice = dir.write("voice.wav", "a voice");
        library.readers = {{song, noise16(kSong, 1)}, {voice, noise16(kVoice, 2)}};
        library.length = kSong * kBytesPerFrame;
        library.lengths = {{voice, kVoice * kBytesPerFrame}};
        main().takeFiles({song, voice});
        QTest::keyClick(&main(), Qt::Key_R, Qt::ControlModifier);
        window = main().findChild<frmTimeline*>();
        EXPECT_TRUE(giveFocus(*window));
        EXPECT_TRUE(QTest::qWaitFor([&] { return find<Lane>(*window, "voiceLane").value().most == 2.0; }));
        EXPECT_TRUE(QTest::qWaitFor([&] { return label("position") == "0:00.0 / 0:10.0"; }));
        EXPECT_TRUE(waitFor("Ready")) << "nothing to line up";
        EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::focusWidget()->window() == window; }));
    }
    std::string label(const char* name) { return find<QLabel>(*window, name).text().toStdString(); }
    void choose(const char* name) { main().findChild<QAction*>(QLatin1String(name))->trigger(); }
    void press(const char* name) { test::click(*window, name); }
    void key(Qt::Key key, Qt::KeyboardModifiers with = {}) { QTest::keyClick(QApplication::focusWidget(), key, with); }
    // Where a frame of the song is on a lane.
    QPoint at(const char* name, double part) {
        auto& lane = find<QWidget>(*window, name);
        return lane.mapTo(window, QPoint(qRound(part * lane.width()), lane.height() / 2));
    }
    void drag(const char* lane, double from, double to, Qt::KeyboardModifiers with = {}) {
        QTest::mousePress(window->windowHandle(), Qt::LeftButton, with, at(lane, from));
        for (const double place : {from + (to - from) / 2, to})
            QTest::mouseEvent(QTest::MouseMove, window->windowHandle(), Qt::LeftButton, with, at(lane, place));
        QTest::mouseRelease(window->windowHandle(), Qt::LeftButton, with, at(lane, to));
    }
    const VoicePlace& place() { return mixer().run().voicePlace; }

    frmTimeline* window = nullptr;
};

TEST_F(TimelineFixture, PlaysPausesSeeksAndLoops) {
    key(Qt::Key_Space);
    EXPECT_TRUE(mixer().rehearsal().playing()) << mixer().rehearsal().message();
    EXPECT_EQ(status(), "Rehearsal: nothing is recorded.");
    EXPECT_EQ(find<Ed_Button>(*window, "play").accessibleName(), QStringLiteral("Pause"));
    library.cardPlace = 220'500;
    EXPECT_TRUE(QTest::qWaitFor([&] { return label("position") == "0:05.0 / 0:10.0"; })) << "it follows";
    key(Qt::Key_J);
    EXPECT_EQ(library.cardPlace, 0);
    key(Qt::Key_L);
    EXPECT_EQ(library.cardPlace, 220'500);
    clickAt(*window, at("songLane", 0.25));
    EXPECT_NEAR(static_cast<double>(library.cardPlace), kSong * 0.25, kSong / 500.0);
    EXPECT_FALSE(find<QWidget>(*window, "noLoop").isEnabled());
    drag("ruler", 0.75, 0.5);
    EXPECT_NEAR(static_cast<double>(mixer().rehearsal().loop().begin), kSong * 0.5, kSong / 500.0);
    EXPECT_NEAR(static_cast<double>(mixer().rehearsal().loop().end), kSong * 0.75, kSong / 500.0);
    EXPECT_NEAR(static_cast<double>(library.cardPlace), kSong * 0.25, kSong / 500.0) << "it plays into the loop";
    key(Qt::Key_Home);
    EXPECT_EQ(library.cardPlace, 0);
    library.cardPlace = kSong * 7 / 8;
    key(Qt::Key_O);
    EXPECT_EQ(library.cardPlace, mixer().rehearsal().loop().begin) << "or goes back to it";
    key(Qt::Key_U);
    EXPECT_FALSE(mixer().rehearsal().loop().given());
    mixer().rehearsal().seek(kSong / 2);
    key(Qt::Key_I);
    EXPECT_EQ(mixer().rehearsal().loop(), (Rehearsal::Loop{kSong / 2, kSong}));
    press("play");
    EXPECT_FALSE(mixer().rehearsal().playing());
    EXPECT_TRUE(mixer().run().isRehearsing);
    key(Qt::Key_S);
    EXPECT_FALSE(mixer().run().isRehearsing);
    press("play");
    window->close();
    EXPECT_FALSE(mixer().run().isRehearsing);

    SilentProgram::press("progress");
    EXPECT_TRUE(window->isVisible());
    press("play");
    mixer().fields().destination = dir / "mix.mp3";
    main().SetMainLanguage();
    SilentProgram::press("mi_button");
    EXPECT_TRUE(mixer().run().isMixing && !mixer().run().isRehearsing) << "the run ends it";
    EXPECT_FALSE(find<QWidget>(*window, "play").isEnabled());
    SilentProgram::press("b_STOP");
    press("play");
    main().takeFiles({dir.write("other.mp3", "")});
    EXPECT_FALSE(mixer().run().isRehearsing) << "another song does too";
}

TEST_F(TimelineFixture, TheVoiceIsDraggedToItsPlace) {
    drag("voiceLane", 0.5, 0.4);
    EXPECT_NEAR(static_cast<double>(place().earlier), kSong * 0.1, kSong / 300.0);
    EXPECT_EQ(label("place"), placeText(english(), place().earlier));
    key(Qt::Key_Left, Qt::AltModifier);
    const std::int64_t whole = place().earlier;
    EXPECT_EQ(whole, std::llround(std::round(static_cast<double>(whole) / 44.1) * 44.1)) << "to whole steps";
    key(Qt::Key_Right, Qt::AltModifier | Qt::ShiftModifier);
    EXPECT_NEAR(static_cast<double>(whole - place().earlier), 44.1, 1);
    key(Qt::Key_BracketLeft);
    key(Qt::Key_BraceRight);
    EXPECT_NEAR(static_cast<double>(place().earlier - whole), 8 * 44.1, 1) << "where Alt is taken";
    drag("voiceLane", 0.5, 0.9, Qt::ShiftModifier);
    EXPECT_NEAR(static_cast<double>(place().earlier), static_cast<double>(whole) - kSong * 0.04, kSong / 300.0);
    drag("voiceLane", 0.9, 0.1);
    EXPECT_EQ(place().earlier, kVoice) << "its whole length before the song at most";
    press("whole");
    for (int round = 0; round < 3; ++round) drag("voiceLane", 0.01, 0.99);
    EXPECT_EQ(place().earlier, -kSong);
    QTest::mouseDClick(window->windowHandle(), Qt::LeftButton, {}, at("voiceLane", 0.5));
    EXPECT_FALSE(place().given());
    EXPECT_EQ(label("place"), "Voice begins with the song");

    window->showLiningUp(0.4);
    EXPECT_EQ(label("note"), "Looking for the song in the voice… 40 %");
    window->showNoTrace();
    EXPECT_FALSE(place().given());
    mixer().rehearsal().placeVoice({44'100, 60});
    window->showLinedUp(0.98);
    EXPECT_EQ(label("note"), "Voice lined up, 98 % sure");

    auto& lane = find<QWidget>(*window, "voiceLane");
    QAccessibleInterface* access = QAccessible::queryAccessibleInterface(&lane);
    access->valueInterface()->setCurrentValue(1.5);
    EXPECT_EQ(place().earlier, 66'150);
    EXPECT_EQ(access->text(QAccessible::Value), QStringLiteral("Voice begins 1.500 s before the song"));

    press("lineUp");
    key(Qt::Key_Space);
    EXPECT_TRUE(mixer().rehearsal().playing()) << "whatever was clicked";
    const auto opened = [this](const char* clock) {
        return std::ranges::count(library.calls, "openRecording " + dir.path() + "/voice.wav " + clock + " 4");
    };
    mixer().rehearsal().placeVoice({44'100, -20});
    EXPECT_TRUE(QTest::qWaitFor([&] { return opened("-20.000000") == 1; })) << "its clock changes while it plays, too";
    library.calls.clear();
    choose("undo");
    EXPECT_EQ(place(), (VoicePlace{66'150, 60}));
    EXPECT_TRUE(QTest::qWaitFor([&] { return opened("60.000000") == 1 && mixer().rehearsal().playing(); }));
}

TEST_F(TimelineFixture, FilesGoToTheLaneTheyAreDroppedOn) {
    const std::string file = dir.write("either.mp3", "sound");
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(file))});
    for (const auto& [lane, field] : {std::pair("voiceLane", &PathFields::vocal), {"ruler", &PathFields::background}}) {
        QDragEnterEvent enter(at(lane, 0.5), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(window, &enter);
        ASSERT_TRUE(enter.isAccepted() && enter.dropAction() == Qt::CopyAction);
        QDropEvent drop(at(lane, 0.5), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(window, &drop);
        EXPECT_TRUE(QTest::qWaitFor([&] { return mixer().fields().*field == file; })) << lane;
    }
}

TEST_F(TimelineFixture, NewVoicesAreLinedUpByThemselves) {
    constexpr std::size_t kSecond = kSampleRate;
    const Sound sound = noise16(40 * kSecond, 5);
    const std::string song = dir.write("evening.mp3", "");
    const std::string take = dir.write("take.wav", "");
    const std::string other = dir.write("other take.wav", "");
    library.readers.put(song, sound);
    library.readers.put(take, Sound{sound.begin() + 10 * kSecond, sound.begin() + 76 * kSecond});
    library.readers.put(other, Sound{sound.begin() + 4 * kSecond, sound.begin() + 70 * kSecond});
    const auto linedUp = [this] { return status().starts_with("Voice lined up: begins "); };
    const auto searched = [this] {
        QTest::qWait(100);
        return QTest::qWaitFor([this] { return status() == "Ready"; });
    };
    *library.readersWait = true;
    main().takeFiles({song, take});
    EXPECT_TRUE(waitFor("Looking for the song in the voice… 0 %"));
    *library.readersWait = false;
    EXPECT_TRUE(QTest::qWaitFor(linedUp)) << status();
    EXPECT_TRUE(status().starts_with("Voice lined up: begins 5.000 s after the song's beginning (")) << status();
    EXPECT_NEAR(static_cast<double>(place().earlier), -5.0 * kSecond, 10);
    EXPECT_TRUE(label("note").starts_with("Voice lined up, "));
    QTest::keyClick(&main(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(place().given());
    EXPECT_EQ(status(), "Ready");
    QTest::keyClick(&main(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_NEAR(static_cast<double>(place().earlier), -5.0 * kSecond, 10);
    main().takeFiles({other});
    EXPECT_TRUE(QTest::qWaitFor([&] { return place().given() && linedUp(); })) << status();
    EXPECT_NEAR(static_cast<double>(place().earlier), -2.0 * kSecond, 10);

    mixer().rehearsal().placeVoice({1000, 0});
    main().takeFiles({song});
    EXPECT_TRUE(searched());
    EXPECT_EQ(place().earlier, 1000) << "where the user put it";
    mixer().settings().linesUpVoices = false;
    main().takeFiles({take});
    EXPECT_TRUE(searched() && !place().given()) << "not wanted";
    mixer().settings().linesUpVoices = true;
    choose("lastJob");
    EXPECT_TRUE(searched());
    EXPECT_EQ(place().earlier, 1000) << "as that job had it";
    *library.readersWait = true;
    main().takeFiles({take});
    SilentProgram::press("mi_button");
    EXPECT_TRUE(mixer().run().isMixing);
    *library.readersWait = false;
    QTest::qWait(200);
    EXPECT_FALSE(place().given()) << "a mix comes first";
}

TEST_F(TimelineFixture, FollowingPaintsThePlayheadAndTurnsPages) {
    press("play");
    QTest::qWait(50);
    for (const char* name : {"ruler", "songLane", "voiceLane"}) {
        auto& lane = find<QWidget>(*window, name);
        int least = lane.width();
        for (int look = 0; look < 3 && least > zoomed(8); ++look) {  // the end of the reading paints all once more
            library.cardPlace += 11'025;
            PaintedPart painted(lane);
            EXPECT_TRUE(QTest::qWaitFor([&] { return !painted.region.isEmpty(); }));
            least = std::min(least, painted.pixels());
        }
        EXPECT_LE(least, zoomed(8)) << name;
    }
    for (int notch = 0; notch < 8; ++notch) {
        QWidget& lane = find<QWidget>(*window, "songLane");
        turnWheel(lane, 120, Qt::ControlModifier);
    }
    auto& scroll = find<QScrollBar>(*window, "scroll");
    library.cardPlace = kSong / 10 * 9;
    const int before = scroll.value();
    QTest::qWait(100);
    EXPECT_EQ(scroll.value(), before) << "the playhead was out of sight";
    mixer().rehearsal().seek(0);
    press("stop");
    press("play");
    EXPECT_EQ(scroll.value(), 0);
    library.cardPlace = 100;
    QTest::qWait(100);
    library.cardPlace = kSong / 2;
    EXPECT_TRUE(QTest::qWaitFor([&] { return scroll.value() > 0; })) << "turned";
}

TEST_F(TimelineFixture, TrimsTheVoiceInOneStepAndChoosesALoudness) {
    auto& trim = find<QDoubleSpinBox>(*window, "trim");
    trim.setFocus();
    trim.selectAll();
    QTest::keyClicks(&trim, QStringLiteral("-0.7"));
    EXPECT_EQ(mixer().run().voiceTrim, 0) << "not while it is being typed";
    window->refresh();
    QTest::keyClick(&trim, Qt::Key_Return);
    EXPECT_EQ(mixer().run().voiceTrim, -0.7F);
    QAction& undo = *main().findChild<QAction*>(QStringLiteral("undo"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return undo.text().remove(u'&') == QStringLiteral("Undo: Trim of the voice"); }));
    auto& loudness = find<QComboBox>(*window, "loudness");
    loudness.setFocus();
    QTest::keyClick(&loudness, Qt::Key_Down);
    EXPECT_EQ(mixer().run().targetLoudness, -14.0F);
    EXPECT_TRUE(QTest::qWaitFor([&] { return undo.text().contains(QStringLiteral("oudness")); }));
    choose("undo");
    choose("undo");
    EXPECT_EQ(mixer().run().targetLoudness, std::nullopt);
    EXPECT_EQ(mixer().run().voiceTrim, 0);
    EXPECT_EQ(trim.value(), 0);
    EXPECT_EQ(loudness.currentIndex(), 0);
}

TEST_F(TimelineFixture, KeepsItsSizeAndGrowsWithTheZoom) {
    window->setUnits({640, 400});
    EXPECT_EQ(window->size(), QSize(640, 400));
    const QPoint corner(window->width() - 3, window->height() - 3);
    QTest::mousePress(window->windowHandle(), Qt::LeftButton, {}, corner);
    QTest::mouseMove(window->windowHandle(), corner + QPoint(100, -50));
    QTest::mouseRelease(window->windowHandle(), Qt::LeftButton, {}, corner + QPoint(100, -50));
    EXPECT_EQ(window->units(), QSize(740, 350));
    setZoom(150);
    EXPECT_EQ(window->size(), QSize(1110, 525));
    EXPECT_EQ(window->units(), QSize(740, 350));
    setZoom(100);
    window->close();
    main().close();
    restart();
    QTest::keyClick(&main(), Qt::Key_R, Qt::ControlModifier);
    EXPECT_EQ(main().findChild<frmTimeline*>()->units().height(), 350);
}

}  // namespace
}  // namespace melvane
