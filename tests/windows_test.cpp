// The start window and the main window, driven by mouse and keyboard, over a library that makes no sound.
#include <sys/wait.h>
#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QImage>
#include <QMimeData>
#include <QSignalSpy>
#include <QUrl>

#include <filesystem>
#include <fstream>
#include <functional>
#include <set>

#include "app/mixer_job.h"
#include "base/cache_folder.h"
#include "base/paths.h"
#include "controls/free_place.h"
#include "controls/level_meter.h"
#include "controls/window_layout.h"
#include "job/job_text.h"
#include "mixing/run_messages.h"
#include "tags/mix_tag.h"
#include "tests/disk_questions.h"
#include "tests/file_accesses.h"
#include "tests/program_fixture.h"

namespace melvane {
namespace {

using namespace melvane::test;

struct WindowFixture : testing::Test, SilentProgram {
    void browse(const char* button, const std::string& chosen) {
        dialogs.nextFile = chosen;
        press(button);
    }
    void chooseFiles() {
        mixer().fields() = {"/song.mp3", "/voice.wav", dir / "mix.mp3"};
        main().SetMainLanguage();
    }
    void startRun() {
        chooseFiles();
        press("mi_button");
    }
    std::string whole(const char* label) { return find<QLabel>(main(), label).toolTip().toStdString(); }
    std::string title() { return main().windowTitle().toStdString(); }
    // Names of the buttons that are switched on.
    std::string enabled() {
        std::string list;
        for (const char* name :
             {"BR0", "BR1", "BR2", "mi_button", "b_STOP", "b_midi", "b_eff", "b_listen", "bHelp", "bClose"})
            if (find<QWidget>(main(), name).isEnabled()) list += name + std::string(" ");
        return list;
    }
    // The bar of progress and overview, a pixel for each column.
    QImage bar() { return find<OverviewBar>(main(), "progress").grab().toImage().scaledToWidth(OverviewBar::kColumns); }
    int mixedPixels() {
        const QImage image = bar();
        int mixed = 0;
        for (int x = 0; x < image.width(); ++x) mixed += image.pixelColor(x, image.height() / 2) == QColor(skin::kSong);
        return mixed;
    }
    QAction& action(const char* name) { return *main().findChild<QAction*>(QLatin1String(name)); }
    void choose(const char* name) { action(name).trigger(); }
    std::vector<std::string> recentJobs() {
        QMenu* menu = main().findChild<frmMenu*>()->recentMenu();
        Q_EMIT menu->aboutToShow();
        std::vector<std::string> entries;
        for (const QAction* entry : menu->actions()) entries.push_back(entry->text().toStdString());
        return entries;
    }
};

const std::string kIdle = "BR0 BR1 BR2 mi_button b_midi b_eff bHelp bClose ";
const std::string kMixed = "BR0 BR1 BR2 mi_button b_midi b_eff b_listen bHelp bClose ";

TEST_F(WindowFixture, BrowsingFillsTheFields) {
    const std::string name = "a song <b>with a very long name, longer than any field";
    EXPECT_EQ(find<QLabel>(main(), "path0").text(), QStringLiteral("Drop a song here"));
    browse("BR0", "/music/" + name + ".mp3");
    EXPECT_EQ(whole("path0"), "/music/a song &lt;b&gt;with a very long name, longer than any field.mp3");
    EXPECT_TRUE(find<QLabel>(main(), "path0").text().contains(u'…'));
    EXPECT_TRUE(find<QLabel>(main(), "path0").text().startsWith(QStringLiteral("a song")));
    browse("BR1", "/voice.wav");
    browse("BR2", dir / "mix");
    EXPECT_EQ(dialogs.lastQuestion.start, "/music/" + name + ".mp3");
    EXPECT_EQ(find<QLabel>(main(), "path2").accessibleName().toStdString(),
              "Mixing destination: " + dir.path() + "/mix.mp3");
}

TEST_F(WindowFixture, WholeJobsComeBackInTheMenuAtOneAccessAnAction) {
    const std::string stored = dir / "registry.json";
    const std::string song = dir.write("you & me.mp3", "");
    const std::string other = dir.write("other.mp3", "");
    const std::string voice = dir.write("voice.wav", "");
    const SettingsStore store(registry);
    store.WriteSetting(kRecentKey, "0", song);
    EXPECT_EQ(recentJobs(), std::vector<std::string>{dir / "you && me.mp3"}) << "as an earlier program kept it";
    store.WriteSetting(kRecentKey, "0", dir.write("take.m4a", ""));
    recentJobs();
    main().findChild<frmMenu*>()->recentMenu()->actions().back()->trigger();
    EXPECT_EQ(mixer().fields().vocal, dir / "take.m4a") << "not asked again";
    store.WriteSetting(kRecentKey, "0", "");
    EXPECT_EQ(recentJobs(), std::vector<std::string>{"(none)"});
    main().endSession();  // nothing is left to be written by itself meanwhile
    EXPECT_EQ(accessesTo(stored, [&] { main().takeFiles({voice, dir / "missing.mp3", song}); }), Accesses(1, 1));
    EXPECT_EQ(dialogs.boxes.size(), 1U) << "what is missing is told";
    mixer().sliders().setKey(-2.5);
    main().endSession();
    EXPECT_EQ(accessesTo(stored, [&] { browse("BR0", other); }), Accesses(1, 1));
    EXPECT_EQ(accessesTo(stored, [&] { recentJobs(); }), Accesses(1, 0));
    mixer().sliders().setKey(1);
    EXPECT_EQ(accessesTo(stored, [&] { press("bClose"); }), Accesses(1, 1)) << "settings, places and the job";
    restart();
    EXPECT_EQ(mixer().fields(), PathFields()) << "the last job comes by choice";
    EXPECT_EQ(recentJobs(), (std::vector<std::string>{"other.mp3 + voice.wav", "you && me.mp3 + voice.wav"}));
    choose("lastJob");
    EXPECT_EQ(mixer().fields().background, other);
    EXPECT_EQ(mixer().run().key, 1);
    main().findChild<frmMenu*>()->recentMenu()->actions().back()->trigger();
    EXPECT_EQ(mixer().fields(), (PathFields{song, voice, dir / "you & me2.mp3"}));
    EXPECT_EQ(mixer().run().key, -2.5);
    browse("BR1", "");
    EXPECT_EQ(dialogs.lastQuestion.start, dir.path()) << "where a voice was taken before";
}

TEST_F(WindowFixture, AJobIsADocument) {
    const std::string song = dir.write("song.mp3", "");
    main().takeFiles({song, dir.write("voice.wav", "")});
    dialogs.nextFile = dir / "my";
    choose("saveJobAs");
    EXPECT_EQ(dialogs.lastQuestion.start, dir / "song.melvane");
    EXPECT_EQ(title(), "my.melvane – Melvane");
    QTest::keyClick(&find<QWidget>(main(), "tone"), Qt::Key_Right);
    EXPECT_TRUE(QTest::qWaitFor([&] { return title() == "my.melvane* – Melvane"; }));
    dialogs.nextAnswer = BoxAnswer::cancel;
    press("bClose");
    EXPECT_TRUE(main().isVisible()) << "unsaved changes of a document are asked about";
    EXPECT_EQ(dialogs.boxes.back(), "Melvane: The job my.melvane has changed. Save the changes?");
    choose("saveJob");
    EXPECT_EQ(title(), "my.melvane – Melvane");
    choose("saveJobAs");
    EXPECT_EQ(dialogs.boxes.size(), 1U) << "its own file is not asked about";

    std::filesystem::remove(song);
    QTest::keyClick(&find<QWidget>(main(), "tone"), Qt::Key_Home);
    dialogs.nextAnswer = BoxAnswer::no;
    press("bClose");
    launch({dir / "my.melvane"});
    enter();
    EXPECT_EQ(mixer().run().key, 1);
    EXPECT_EQ(mixer().fields(), (PathFields{"", dir / "voice.wav", dir / "song2.mp3"}));
    EXPECT_NE(dialogs.boxes.back().find("have gone: \n" + song + "\n"), std::string::npos) << dialogs.boxes.back();
    dialogs.nextFile = dir.write("broken.melvane", "{}");
    choose("openJob");
    EXPECT_NE(dialogs.boxes.back().find("This file is no Melvane job"), std::string::npos);
    EXPECT_EQ(title(), "my.melvane – Melvane");
    dialogs.nextFile = dir / "no folder/my.melvane";
    choose("saveJobAs");
    EXPECT_NE(dialogs.boxes.back().find("There is no such folder"), std::string::npos);
}

TEST_F(WindowFixture, EveryKnobGoesBackAndForthAlsoInARun) {
    names.temporaryMidi = dir / "tmp.mid";
    main().takeFiles({dir.write("song.mid", songOf("\x90\x93")), dir.write("voice.wav", "")});
    press("b_eff");
    press("b_midi");
    auto& effects = *main().findChild<frmEff*>();
    auto& channels = *main().findChild<frmChann*>();
    press("mi_button");
    ASSERT_TRUE(mixer().run().isMixing) << status();
    QTest::qWait(50);
    EXPECT_FALSE(action("undo").isEnabled());
    std::vector<Job> jobs{takeJob(mixer())};
    const auto step = [&](const char* what, const std::function<void()>& change) {
        const bool steps = QTest::qWaitFor([&] {
            if (takeJob(mixer()) == jobs.back()) change();
            return action("undo").text().remove(u'&') == QLatin1String("Undo: ") + QLatin1String(what);
        });
        EXPECT_TRUE(steps) << what << ", but: " << action("undo").text().toStdString();
        jobs.push_back(takeJob(mixer()));
    };
    step("Vocal volume", [&] { drag(find(main(), "volm1"), 90); });
    step("Synchronization", [&] { drag(find(main(), "snc"), 80); });
    step("Karaoke background key", [&] { drag(find(main(), "tone"), 350); });
    step("Vocal treble", [&] { drag(find(effects, "eq_song3"), 80); });
    step("Echo: level", [&] { drag(find(effects, "ef2"), 150); });
    step("Reverb", [&] { click(effects, "efo1"); });
    step("Spare", [&] { click(effects, "efo5"); });
    step("Switch on/off channel 4", [&] { click(channels, "onoff3"); });
    step("Channel 1 balance",
         [&] { drag(find(channels, "bl0"), static_cast<int>(find(channels, "bl0").position()) + 4); });
    step("Solo of channel 4", [&] {
        mixer().midi().solo(1 << 3);
        main().update();
    });
    step("Place of the voice", [&] {
        mixer().rehearsal().placeVoice({44100, 60});
        main().update();
    });
    Q_EMIT main().findChild<frmMenu*>()->mnuMidi()->aboutToShow();
    step("MIDI channels", [&] { choose("mnuMidi0"); });
    const std::vector<std::string> sentSoFar = music->calls;
    for (std::size_t i = jobs.size() - 1; i-- > 0;) {
        choose("undo");
        EXPECT_TRUE(takeJob(mixer()) == jobs[i]) << i << jobText(takeJob(mixer()), "");
    }
    EXPECT_GT(music->calls.size(), sentSoFar.size()) << "it is heard";
    EXPECT_EQ(find(main(), "volm1").valueText(), QStringLiteral("100 %"));
    EXPECT_FALSE(find<QAbstractButton>(effects, "efo1").isChecked());
    EXPECT_TRUE(find<QAbstractButton>(channels, "onoff3").isChecked());
    for (std::size_t i = 1; i < jobs.size(); ++i) {
        choose("redo");
        EXPECT_TRUE(takeJob(mixer()) == jobs[i]) << i << jobText(takeJob(mixer()), "");
    }
    EXPECT_FALSE(action("redo").isEnabled());
    chooseLanguage("pl");
    EXPECT_EQ(action("undo").text().remove(u'&').toStdString(), "Cofnij: Kanały MIDI");
    mixer().mixingRun().stopRec();
    main().takeFiles({dir.write("other.wav", "")});
    EXPECT_TRUE(QTest::qWaitFor([&] { return !action("undo").isEnabled(); })) << "the place was the other voice's";
    EXPECT_EQ(mixer().run().voicePlace, VoicePlace());
}

TEST_F(WindowFixture, KeysOnOneKnobAreOneStep) {
    auto& key = find<QWidget>(main(), "tone");
    QTest::qWait(50);
    for (int i = 0; i < 3; ++i) {
        QTest::keyClick(&key, Qt::Key_Right);
        QCoreApplication::processEvents();
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return action("undo").isEnabled(); }));
    QTest::keyClick(&main(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(mixer().run().key, 0);
    QTest::keyClick(&main(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(mixer().run().key, 3);
}

TEST_F(WindowFixture, TheTagsOfTheSongAreSeenChangedAndUndone) {
    QByteArray png;
    QBuffer buffer(&png);
    ASSERT_TRUE(QImage(2000, 1000, QImage::Format_RGB32).save(&buffer, "PNG"));
    const Cover cover{png.toStdString(), "image/png"};
    main().takeFiles({dir.write("song.mp3", renderTag({"Zażółć", "美空", "", "1999", ""}, &cover) + "sound")});
    choose("tags");
    const auto& window = find<QWidget>(main(), "frmTags");
    auto& title = find<QLineEdit>(window, "title");
    const auto& picture = find<QLabel>(window, "picture");
    EXPECT_TRUE(QTest::qWaitFor([&] { return !picture.pixmap(Qt::ReturnByValue).isNull(); }));
    EXPECT_EQ(title.text().toStdString(), "Zażółć");
    EXPECT_EQ(find<QLineEdit>(window, "year").text(), QStringLiteral("1999"));
    QTest::qWait(50);
    const auto& tags = mixer().tags();
    QTest::keyClick(&title, Qt::Key_End);
    QTest::keyClick(&title, Qt::Key_Exclam, Qt::ShiftModifier);
    EXPECT_EQ(tags.texts[kTitleTag], "Zażółć!");
    QTest::keyClick(&title, Qt::Key_Backspace);
    EXPECT_EQ(tags, TagChoice()) << "the song's own is no choice";
    QTest::keyClick(&title, Qt::Key_Exclam, Qt::ShiftModifier);
    click(window, "songsTags");
    EXPECT_EQ(tags, TagChoice());
    EXPECT_EQ(title.text().toStdString(), "Zażółć");
    QTest::qWait(50);  // until that is known

    click(window, "removeCover");
    EXPECT_EQ(tags.cover, "");
    EXPECT_TRUE(QTest::qWaitFor([&] { return picture.text() == QStringLiteral("(no cover)"); }));
    EXPECT_EQ(action("undo").text().remove(u'&'), QStringLiteral("Undo: Tags of the mix"));
    choose("undo");
    EXPECT_EQ(tags, TagChoice());
    EXPECT_TRUE(QTest::qWaitFor([&] { return picture.text().isEmpty(); }));
    for (const auto& [file, says] : {std::pair(dir.write("text.jpg", "La la la"), "A cover is a JPEG or PNG"),
                                     {dir.write("cut.png", png.left(60).toStdString()), "A cover is a JPEG or PNG"},
                                     {dir / "gone.jpg", "has gone"}}) {
        dialogs.nextFile = file;
        click(window, "chooseCover");
        EXPECT_NE(dialogs.boxes.back().find(says), std::string::npos) << dialogs.boxes.back();
        EXPECT_FALSE(tags.cover);
    }
    dialogs.nextFile = dir.write("cover.png", cover.bytes);
    click(window, "chooseCover");
    EXPECT_EQ(tags.cover, dialogs.nextFile);
    click(window, "wanted");
    EXPECT_FALSE(tags.wanted || title.isEnabled());
    main().takeFiles({dir.write("other.mp3", "")});
    EXPECT_EQ(tags, TagChoice{.wanted = false}) << "the others were the first song's";
    EXPECT_TRUE(QTest::qWaitFor([&] { return title.text().isEmpty(); }));
}

TEST_F(WindowFixture, NothingButTheCardIsMixedFast) {
    chooseFiles();
    EXPECT_TRUE(action("mixFast").isEnabled());
    mixer().settings().forceMixDevice = 1;
    mixer().settings().mixDevice = 0;
    main().SetMainLanguage();
    EXPECT_FALSE(action("mixFast").isEnabled());
    EXPECT_NE(action("mixFast").toolTip().indexOf(QStringLiteral("another input")), -1);
}

TEST_F(WindowFixture, ARunLocksTheWindowShowsItsProgressAndEndsWithTheSong) {
    EXPECT_EQ(status(), "Ready");
    EXPECT_EQ(enabled(), kIdle);
    chooseFiles();
    library.framesCaptured = 125 * kSampleRate;
    library.length = static_cast<std::uint64_t>(library.framesCaptured) * kBytesPerFrame;
    library.product = taggedMp3(library.framesCaptured);
    find<QWidget>(main(), "mi_button").setFocus();
    QTest::keyClick(&main(), Qt::Key_Return);
    EXPECT_EQ(enabled(), "b_STOP b_midi b_eff bHelp bClose ");
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return}) QTest::keyClick(QApplication::focusWidget(), key);
    EXPECT_TRUE(mixer().run().isMixing) << "no stray key ends it";
    EXPECT_EQ(status(), "0:00 / 2:05 – Mixing…");

    library.position = library.length / 2 + 1;
    EXPECT_TRUE(QTest::qWaitFor([&] { return title() == "50 % – Melvane"; })) << title();
    EXPECT_EQ(status(), "1:02 / 2:05 – Mixing…");
    EXPECT_TRUE(QTest::qWaitFor([&] { return mixedPixels() == 88; })) << mixedPixels();
    EXPECT_NEAR(shell.progress, 0.5, 0.001) << "in the taskbar";
    library.card.deviceOpen = false;
    EXPECT_TRUE(waitFor("1:02 / 2:05 – No sound device: the mix cannot be heard, but it is recorded."));

    library.stalled = 10;
    EXPECT_TRUE(waitFor("1:02 / 2:05 – The MP3 encoder takes no sound; the mix waits in memory."));
    for (const auto& [code, text] : {std::pair("pl", "You must stop mixing first."), {"en", "Zakończ miksowanie."}}) {
        chooseLanguage(code);
        press("bClose");
        EXPECT_EQ(dialogs.boxes.back(), std::string("Melvane: ") + text);
        EXPECT_TRUE(main().isVisible() && mixer().run().isMixing);
    }
    EXPECT_FALSE(main().close()) << "as from the window manager";

    library.readers.put(dir / "mix.mp3", sine(1000, std::pow(10, -23 / 20.0), 5 * kSampleRate));
    std::string whileFinishing;
    library.encoderFinishes = 200;
    QTimer look;
    look.callOnTimeout([&] {
        if (!whileFinishing.empty() || status() != "Finishing the MP3 file…") return;
        press("b_STOP");
        whileFinishing = enabled();
    });
    look.start(20);
    library.position = library.length;
    const std::string finished =
        "Mix finished: " + dir.path() + "/mix.mp3 – loudness -23 LUFS, range 0 LU, true peak -23 dBTP";
    EXPECT_TRUE(waitFor(finished)) << status();
    EXPECT_EQ(whileFinishing, "b_midi b_eff bHelp bClose ");
    EXPECT_EQ(enabled(), kMixed);
    EXPECT_EQ(title(), "Melvane");
    EXPECT_EQ(mixedPixels(), OverviewBar::kColumns);
    EXPECT_EQ(shell.progress, -1);
    dir.write("mix.mp3", "the mix");
    press("mi_button");
    EXPECT_EQ(dialogs.boxes.back(), "Melvane: Do you want to overwrite existing file?");
    EXPECT_EQ(status(), finished);
    EXPECT_EQ(enabled(), kMixed);
    library.calls.clear();
    QTest::qWait(200);
    EXPECT_TRUE(library.calls.empty()) << "no timer goes on";
}

TEST_F(WindowFixture, WhatIsShownIsOfTheFilesThatAreChosen) {
    std::string shown;
    dialogs.onBox = dialogs.onDialog = [&] {
        QTest::qWait(200);
        shown = status();
    };
    chooseFiles();
    library.unreadable = {"/voice.wav"};
    library.openingTime = std::chrono::milliseconds(300);
    library.decodings.put("/voice.wav", Decoding{.running = true, .progress = 0.407});
    QTimer::singleShot(200, [&] { shown = status(); });
    press("mi_button");
    EXPECT_EQ(std::exchange(shown, ""), "Opening… 40 %");
    library.decodings.clear();
    const std::string failed = status();
    EXPECT_NE(failed, "Ready");
    browse("BR1", "");
    EXPECT_EQ(status(), failed) << "nothing was chosen";
    EXPECT_EQ(shown, failed) << "nothing is opened while a dialog is open";
    library.unreadable.clear();
    browse("BR1", "/voice.wav");
    EXPECT_TRUE(waitFor("Ready")) << "also for the same file";

    library.openingTime = {};
    press("mi_button");
    library.position = library.length / 2;
    press("b_STOP");
    EXPECT_EQ(mixedPixels(), OverviewBar::kColumns / 2);
    main().takeFiles({dir.write("other.wav", "")});
    EXPECT_TRUE(waitFor("Ready"));
    EXPECT_EQ(mixedPixels(), 0);
    EXPECT_EQ(enabled(), kMixed) << "the mix can still be listened to";
    main().findChild<frmPlayer*>()->close();
    mixer().fields().vocal = "";
    mixer().fields().destination = dir / "another.mp3";
    press("mi_button");
    EXPECT_EQ(shown, "Source or destiny files not defined.");
}

TEST_F(WindowFixture, TheStopButtonEndsARunAndAHeldKeyDoesNot) {
    chooseFiles();
    find<QWidget>(main(), "mi_button").setFocus();
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QString(), true);
    QApplication::sendEvent(&main(), &repeated);
    EXPECT_FALSE(mixer().run().isMixing);
    press("mi_button");
    EXPECT_TRUE(mixer().run().isMixing);
    QApplication::sendEvent(&main(), &repeated);
    EXPECT_TRUE(mixer().run().isMixing);
    press("b_STOP");
    EXPECT_FALSE(mixer().run().isMixing);
    EXPECT_TRUE(QTest::qWaitFor([this] { return find<QWidget>(main(), "Ed_Button1").isEnabled(); }));
    EXPECT_EQ(std::ranges::count(library.calls, "hurryEncoder 4"), 1) << "it does not wait for an encoder that hangs";
    EXPECT_TRUE(waitFor("Stopped – silence")) << status();
    EXPECT_EQ(enabled(), kMixed);
    EXPECT_TRUE(main().findChild<frmPlayer*>()->isVisible()) << "the mix can be listened to";
    QTest::keyClick(main().findChild<frmPlayer*>(), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !main().isVisible(); })) << "from the player too";
}

TEST_F(WindowFixture, MetersAndTheLimiterMoveInARunAlone) {
    const auto& limiter = find<QLabel>(main(), "limiter");
    chooseFiles();
    library.reduction = 0.5F;
    library.peaks = {{0, {0.01F, 0}}, {2, {0.01F, 0}}, {3, {0.01F, 0}}};
    main().SetMainLanguage();
    EXPECT_EQ(library.peaks.size(), 3U) << "nothing runs";
    EXPECT_EQ(limiter.text(), QString());
    press("mi_button");
    library.peaks = {{0, {0.5F, 0.9F}}, {2, {0.125F, 0}}, {3, {0.25F, 0.25F}}};
    EXPECT_TRUE(QTest::qWaitFor([&] { return library.peaks.empty(); }));
    for (const auto& [name, decibels] : {std::pair("mixLevel", -1), {"songLevel", -18}, {"voiceLevel", -12}}) {
        const auto& meter = find<LevelMeter>(main(), name);
        EXPECT_NEAR(meter.level(), decibels, 3) << name;
        EXPECT_TRUE(meter.toolTip().contains(QStringLiteral("\nRed lamp: "))) << name;
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return limiter.text() == QStringLiteral("-6.0 dB"); }));
    library.reduction = 0;
    EXPECT_TRUE(QTest::qWaitFor([&] { return limiter.text().isEmpty(); })) << "slowly back";
}

TEST_F(WindowFixture, TheOverviewFollowsTheReadingOfTheSongThatWasChosenLast) {
    const auto isTall = [this](int column) { return bar().pixelColor(column, 4) != QColor(skin::kInset); };
    Sound song(std::size_t{2} * 512 * OverviewBar::kColumns);
    std::fill_n(song.begin(), 2 * 512 * 40, 1.0F);
    library.readers = {{"/two.m4a", song}};
    library.decodings.put("/two.m4a", Decoding{.running = true, .progress = 0.5});
    *library.readersWait = true;
    browse("BR0", "/one.mp3");
    browse("BR0", "/two.m4a");
    EXPECT_TRUE(waitFor("Opening… 50 %"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return isTall(OverviewBar::kColumns / 2); })) << "how far it was decoded";
    EXPECT_FALSE(isTall(20));
    library.decodings.clear();
    *library.readersWait = false;
    EXPECT_TRUE(QTest::qWaitFor([&] { return isTall(20); }));
    EXPECT_TRUE(waitFor("Ready"));
    EXPECT_FALSE(isTall(60));
    EXPECT_FALSE(isTall(OverviewBar::kColumns / 2));
    library.unreadable = {"/three.mp3"};
    browse("BR0", "/three.mp3");
    EXPECT_TRUE(waitFor("The background cannot be opened: /three.mp3"));
    EXPECT_FALSE(isTall(20)) << "what is no sound has no shape";
    library.unreadable = {"/v.wav"};
    browse("BR0", "/three.mp3");
    browse("BR1", "/v.wav");
    EXPECT_TRUE(waitFor("The vocal recording cannot be opened: /v.wav"));
    EXPECT_TRUE(find<QWidget>(main(), "status").property("failed").toBool());
    library.decodings.put("/v.wav", Decoding{.failure = DecodingFailure::noRoom});
    browse("BR1", "/v.wav");
    EXPECT_TRUE(waitFor("There is no room for the decoded sound: free some on the disk that holds " +
                        toText(cacheFolder()) +
                        ". The vocal "
                        "recording cannot be opened: /v.wav"));
    library.unreadable.clear();
    browse("BR1", "/v.wav");
    EXPECT_EQ(status(), "Ready");
    EXPECT_EQ(dialogs.boxes, std::vector<std::string>());
}

TEST_F(WindowFixture, FailuresAreToldInTheLanguageOfTheWindow) {
    chooseFiles();
    library.unreadable = {"/voice.wav"};
    press("mi_button");
    EXPECT_EQ(enabled(), kIdle);
    for (const char* code : {"pl", "en"}) {
        chooseLanguage(code);
        modLang language;
        language.InitLanguage(FakeFileNames(), code);
        EXPECT_EQ(status(), runMessage(language, mixer().run()));
        EXPECT_TRUE(find<QLabel>(main(), "status").text().startsWith(toQt(language.ownText(OwnText::noSuchFile))));
        EXPECT_EQ(shell.language, code);
    }
    library.inputs.resize(0x8001, library.inputs.front());
    press("mi_button");
    EXPECT_EQ(dialogs.boxes, std::vector<std::string>{"Melvane: A number is too large."}) << "an error ends in a box";
    EXPECT_EQ(dialogs.lastIcon, BoxIcon::critical);
    EXPECT_EQ(enabled(), kIdle);
    shell.opens = false;
    chooseLanguage("pl");
    main().findChild<QAction*>(QStringLiteral("mnuKar7"))->trigger();
    EXPECT_EQ(dialogs.boxes.back(), "Melvane: Nie można otworzyć strony: file:///program/help.pl.html");
}

TEST_F(WindowFixture, ARunThatRecordsSilenceSaysSo) {
    library.inputs.clear();
    startRun();
    const auto warned = [this] { return find<QWidget>(main(), "status").property("warned").toBool(); };
    EXPECT_NE(status().find("Warning: silence is recorded"), std::string::npos);
    EXPECT_TRUE(warned());
    library.position = library.length;
    EXPECT_TRUE(waitFor("The mix holds nothing but silence, because no input was on: " + dir.path() + "/mix.mp3"));
    EXPECT_TRUE(warned());
    browse("BR1", "/other.wav");
    EXPECT_FALSE(warned());
}

TEST_F(WindowFixture, DevicesThatGoInARunAreToldAndItGoesOn) {
    music->ports = {"Synthesiser", "Keys"};
    mixer().midi().takePorts(music->ports);
    mixer().settings().midiPort = 1;
    mixer().settings().forceMixDevice = 1;
    mixer().settings().mixDevice = 0;
    names.temporaryMidi = dir / "tmp.mid";
    main().takeFiles({MELVANE_SAMPLES "/evening-ferry.kar"});
    mixer().fields().vocal = "/voice.wav";
    mixer().fields().destination = dir / "mix.mp3";
    press("mi_button");
    const auto tells = [this](const std::string& text) {
        return QTest::qWaitFor([&] { return status().ends_with(text); }) &&
               find<QWidget>(main(), "status").property("warned").toBool();
    };
    music->ports.pop_back();
    EXPECT_TRUE(tells("The MIDI port Keys has gone: the song is no longer heard.")) << status();
    library.inputs.front().name = "Line";
    EXPECT_TRUE(tells("The input Microphone has gone: the mix goes on without it.")) << status();
    EXPECT_TRUE(mixer().run().isMixing);
    press("b_STOP");
    EXPECT_TRUE(tells("The mix is finished, but the input Microphone had gone before its end.")) << status();
}

TEST_F(WindowFixture, WhatHasChangedIsWrittenWhileTheProgramRunsAndAtItsEnd) {
    const std::string stored = dir / "registry.json";
    const SettingsStore store(registry);
    const auto volume = [&] { return store.ReadSetting(kProductKey, "volume"); };
    auto& slider = find<QWidget>(main(), "volm0");
    QTest::keyClick(&slider, Qt::Key_Home);
    const int lowest = mixer().settings().volume[0];
    EXPECT_TRUE(QTest::qWaitFor([&] { return volume() == std::to_string(lowest) + ",100"; }));
    std::filesystem::remove(stored);
    std::filesystem::create_directory(stored);
    QTest::keyClick(&slider, Qt::Key_End);
    EXPECT_TRUE(
        waitFor("The settings cannot be saved. Check that the folder of the settings (~/.config/Tessaro) can "
                "be written."));
    std::filesystem::remove(stored);
    QTest::keyClick(&slider, Qt::Key_Home);
    EXPECT_TRUE(waitFor("Ready"));

    startRun();
    ASSERT_TRUE(mixer().run().isMixing) << status();
    QTest::keyClick(&slider, Qt::Key_End);
    program->endSession();
    EXPECT_FALSE(mixer().run().isMixing);
    EXPECT_EQ(mixer().run().lastMixPath, dir / "mix.mp3");
    EXPECT_EQ(volume(), std::to_string(mixer().settings().volume[0]) + ",100");
}

// A song goes on with the port that it was begun with.
TEST_F(WindowFixture, AnotherPortIsOpenedOnceTheRunIsOver) {
    music->ports = {"Synthesiser", "Keys"};
    names.temporaryMidi = dir / "tmp.mid";
    main().takeFiles({MELVANE_SAMPLES "/evening-ferry.kar"});
    mixer().fields().vocal = "/voice.wav";
    mixer().fields().destination = dir / "mix.mp3";
    press("mi_button");
    ASSERT_TRUE(mixer().run().isMixing) << status();
    press("bHelp");
    music->calls.clear();
    auto& list = find<QComboBox>(main(), "MidiDev");
    ASSERT_TRUE(QTest::qWaitFor([&] { return list.count() == 2; }));
    const auto opened = [this] {
        return std::ranges::count_if(music->calls, [](const std::string& call) { return call.starts_with("setPort"); });
    };
    QTest::keyClick(&list, Qt::Key_End);
    EXPECT_EQ(opened(), 0);
    press("b_STOP");
    EXPECT_EQ(opened(), 1);
    main().SetMainLanguage();
    EXPECT_EQ(opened(), 1) << "once";
    QTest::keyClick(&list, Qt::Key_Home);
    QTest::keyClick(&list, Qt::Key_End);
    EXPECT_EQ(opened(), 3) << "without a run it is at once";
}

TEST_F(WindowFixture, SlidersStandForValuesAndAreHeardInARun) {
    Settings& settings = mixer().settings();
    settings.volume = {80, 50};
    mixer().run().syncOffset = 0.12F;
    mixer().run().key = -2.5;
    main().DoRest();
    const auto position = [this](const char* slider) { return static_cast<int>(find(main(), slider).position()); };
    EXPECT_EQ((std::array{position("volm0"), position("volm1"), position("snc"), position("tone")}),
              (std::array{76, 94, 88, 324}));
    startRun();
    const auto volume = [&](std::size_t i) { return [&, i] { return double{1} * settings.volume[i]; }; };
    const auto sync = [this] { return std::round(mixer().run().syncOffset * 1e4) / 1e4; };
    const auto key = [this] { return mixer().run().key; };
    const std::tuple<const char*, int, double, std::function<double()>, const char*> steps[] = {
        {"volm0", 94, 50, volume(0), "BASS_ChannelSetAttributes 2 44100 50 0"},
        {"volm1", 0, 100, volume(1), "BASS_ChannelSetAttributes 3 44100 100 0"},
        {"snc", 96, -0.04, sync, "placeChannel 3 -1764 0"},
        {"snc", 94, -0.04, sync, "placeChannel 3 -1764 0"},
        {"snc", 500, -0.6, sync, "placeChannel 3 -26460 0"},
        {"tone", 341, 1 / 6.4, key, "BASS_FX_TempoSet 2 -100.000000 0.000000 0.156250"},
    };
    for (const auto& [slider, to, value, stored, heard] : steps) {
        library.calls.clear();
        drag(find(main(), slider), to);
        EXPECT_EQ(stored(), value) << slider << " " << to;
        EXPECT_GT(std::ranges::count(library.calls, heard), 0) << slider << " " << to;
    }
    EXPECT_EQ(find<QLabel>(main(), "par").text(), QStringLiteral("+0.2"));
    EXPECT_EQ(find<QLabel>(main(), "syncReadout").text(), QStringLiteral("0.60 s\nlater"));

    Slider& tone = find(main(), "tone");
    const auto byKey = [&](Qt::Key which, Qt::KeyboardModifiers with = {}) {
        QTest::keyClick(&tone, which, with);
        return key();
    };
    EXPECT_EQ(byKey(Qt::Key_Left), 0) << "to the whole semitone beside it";
    for (const double semitone : {1, 2, 3, 4, 5, 5}) EXPECT_EQ(byKey(Qt::Key_Right), semitone);
    EXPECT_EQ(library.calls.back(), "BASS_FX_TempoSet 2 -100.000000 0.000000 5.000000");
    EXPECT_EQ(byKey(Qt::Key_PageDown), 3);
    EXPECT_EQ(byKey(Qt::Key_Left, Qt::ShiftModifier), 2.9);
    EXPECT_EQ(byKey(Qt::Key_Down), 2);
    turnWheel(tone, -360);
    EXPECT_EQ(key(), -1);
    turnWheel(tone, 120, Qt::ShiftModifier);
    EXPECT_EQ(key(), -0.9);
    EXPECT_EQ(find<QLabel>(main(), "par").text(), QStringLiteral("-0.9"));
    EXPECT_NEAR(tone.position(), 340 - 0.9 * 6.4, 1e-9);
    QAccessible::queryAccessibleInterface(&tone)->valueInterface()->setCurrentValue(1.9);
    EXPECT_EQ(key(), 1.9);

    std::set<double> wholes;
    QTest::mousePress(main().windowHandle(), Qt::LeftButton, {}, knobOf(tone));
    for (int x = tone.geometry().left() - 9; x < tone.geometry().right() + 9; ++x) {
        QTest::mouseMove(main().windowHandle(), QPoint(x, knobOf(tone).y()));
        if (key() == std::round(key())) wholes.insert(key());
        EXPECT_NEAR(key(), (tone.position() - 340) / 6.4, 1e-6);
    }
    QTest::mouseRelease(main().windowHandle(), Qt::LeftButton, {}, knobOf(tone));
    EXPECT_EQ(wholes, (std::set<double>{-5, -4, -3, -2, -1, 0, 1, 2, 3, 4, 5}));
    for (const char* slider : {"volm0", "volm1", "snc", "tone"}) doubleClick(find(main(), slider));
    EXPECT_EQ(settings.volume, (std::array<std::int16_t, 2>{100, 100}));
    EXPECT_EQ(sync(), 0);
    EXPECT_EQ(position("snc"), 94);
    EXPECT_EQ(find<QLabel>(main(), "par").text(), QStringLiteral("0"));
}

TEST_F(WindowFixture, ReadoutsShowWhatIsStoredAndTheKeyWhatSounds) {
    const auto readout = [this](const char* name) { return find<QLabel>(main(), name).text().toStdString(); };
    for (std::int16_t percent = 0; percent <= 100; ++percent) {
        mixer().settings().volume = {percent, static_cast<std::int16_t>(100 - percent)};
        main().DoRest();
        EXPECT_EQ(readout("volumeReadout0"), std::to_string(percent) + " %");
        EXPECT_EQ(readout("volumeReadout1"), std::to_string(100 - percent) + " %");
    }
    Slider& sync = find(main(), "snc");
    QTest::keyClick(&sync, Qt::Key_Up);
    EXPECT_EQ(readout("syncReadout"), "0.02 s\nearlier");
    QTest::keyClick(&sync, Qt::Key_Down);
    EXPECT_EQ(readout("syncReadout"), "0.02 s\nearlier") << "the centre leaves it";

    Slider& tone = find(main(), "tone");
    QTest::keyClick(&tone, Qt::Key_Right);
    for (int tenths = 0; tenths < 6; ++tenths) QTest::keyClick(&tone, Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(tone.toolTip(), QStringLiteral("Karaoke background key"));
    std::string song = dir.write("song.mid", "");
    mixer().midi().OpenMidi(song);
    main().SetMainLanguage();
    EXPECT_EQ(readout("par"), "+1.6");
    EXPECT_TRUE(tone.toolTip().endsWith(QStringLiteral(": +2 sounds."))) << tone.toolTip().toStdString();
}

TEST_F(WindowFixture, TheEffectsWindowIsKeptAndComesAlongAtTheNextStart) {
    const auto effects = [this] { return main().findChild<frmEff*>(); };
    EXPECT_EQ(effects(), nullptr) << "made when it is first opened";
    press("b_eff");
    frmEff* const first = effects();
    ASSERT_TRUE(first && first->isVisible());
    drag(find(*first, "eq_song0"), 70);
    EXPECT_EQ(mixer().settings().toneValue[0], 0);
    QTest::keyClick(first, Qt::Key_Escape);
    EXPECT_FALSE(first->isVisible());
    EXPECT_EQ(mixer().settings().effectsWindowOpen, 0);
    chooseLanguage("pl");
    press("b_eff");
    EXPECT_EQ(effects(), first);
    press("bClose");
    EXPECT_FALSE(first->isVisible());

    restart();
    ASSERT_TRUE(effects() && effects()->isVisible());
    EXPECT_TRUE(effects()->testAttribute(Qt::WA_ShowWithoutActivating)) << "the focus stays in the main window";
    EXPECT_EQ(effects()->windowTitle(), QStringLiteral("Efekty – Melvane"));
    EXPECT_EQ(find(*effects(), "eq_song0").position(), 70);
    EXPECT_EQ(shell.language, "pl");
}

TEST_F(WindowFixture, IsMinimisedAndOnlyItsCloseButtonWarns) {
    const auto lit = [this](const char* name) {
        QImage image(30, 30, QImage::Format_RGB32);
        image.fill(QColor(skin::kBody));
        QPainter painter(&image);
        drawPicture(painter, find<Ed_Button>(main(), name).Hot());
        return image.pixelColor(12, 17);
    };
    EXPECT_GT(lit("bClose").saturation(), 100);
    for (const char* calm : {"bHelp", "bMinimise"}) EXPECT_LT(lit(calm).saturation(), 60) << calm;
    press("bMinimise");
    EXPECT_TRUE(main().isMinimized());
}

TEST_F(WindowFixture, OtherWindowsArePartsOfItAndHideNoneAsLongAsThereIsRoom) {
    main().move(0, 0);
    for (const char* name : {"b_eff", "bHelp"}) press(name);
    for (auto* window : main().findChildren<FramelessWindow*>()) {
        EXPECT_EQ(window->windowType(), Qt::Dialog) << "is minimised with its owner, has no entry in the taskbar";
        const int both = main().height() + window->height();
        EXPECT_FALSE(window->geometry().intersects(main().geometry()) && both + 10 < main().screen()->size().height());
    }
    const QRect room(0, 0, 1000, 600);
    const QSize size(460, 210);
    QList<QRect> others{{100, 200, 460, 196}};
    for (int window = 0; window < 2; ++window) {
        const QRect place(freePlace(size, others, room, Qt::TopEdge), size);
        EXPECT_TRUE(room.contains(place));
        EXPECT_EQ(coveredBy(place, others), window == 0 ? 6 * 460 : 0) << "as far as possible";
        others[0].moveTop(220);
        others << place;
    }
}

TEST_F(WindowFixture, AnotherStartBringsItForwardAndItsFilesAreTakenWhenThereIsTime) {
    const std::string voice = dir.write("other voice.wav", "");
    chooseFiles();
    press("mi_button");
    main().showMinimized();
    program->startedAgain({voice});
    EXPECT_FALSE(main().isMinimized());
    EXPECT_EQ(mixer().fields().vocal, "/voice.wav") << "in a run";
    press("b_STOP");
    EXPECT_TRUE(QTest::qWaitFor([&] { return mixer().fields().vocal == voice; }));
    EXPECT_EQ(dialogs.boxes, std::vector<std::string>());
}

TEST_F(WindowFixture, ADropGoesToTheFieldThatLightsUp) {
    const std::string song = dir.write("song.mp3", "");
    const std::string voice = dir.write("voice.WAV", "");
    const std::string old = dir.write("old.mp3", "");
    const auto lit = [this] {
        std::string fields;
        for (const char* name : {"path0", "path1", "path2"})
            if (find<QWidget>(main(), name).property("dropping").toBool()) fields += name;
        return fields;
    };
    // The fields that are lit before.
    const auto drop = [&](const QList<QUrl>& urls, const char* onto) {
        QMimeData data;
        data.setUrls(urls);
        const QPoint place = find<QWidget>(main(), onto).geometry().center();
        QDragEnterEvent enter(main().rect().center(), Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&main(), &enter);
        QDragMoveEvent move(place, Qt::CopyAction, &data, Qt::LeftButton, {});
        for (int i = 0; i < 50 && (i == 0 || lit().empty()); ++i) {  // the disk may take its time
            QApplication::sendEvent(&main(), &move);
            QTest::qWait(1);
        }
        EXPECT_TRUE(move.isAccepted());
        const std::string before = lit();
        QDropEvent event(place, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&main(), &event);
        QCoreApplication::processEvents();
        EXPECT_EQ(lit(), "");
        return before;
    };
    const auto file = [](const std::string& path) { return QUrl::fromLocalFile(QString::fromStdString(path)); };
    EXPECT_EQ(drop({file(voice), file(song)}, "path2"), "path1path2");
    EXPECT_EQ(dialogs.boxes.size(), 1U) << "there is no song yet";
    const std::string take = dir.write("take.M4A", "");
    EXPECT_EQ(drop({file(dir.write("evening.melvane", ""))}, "path1"), "path0path1path2") << "a whole job";
    EXPECT_EQ(dialogs.boxes.size(), 2U) << "that can't be read";
    dialogs.boxes.pop_back();
    EXPECT_EQ(drop({file(take)}, "path2"), "path0") << "the only empty one";
    EXPECT_EQ(drop({file(song)}, "path1"), "path1") << "where it is meant to go";
    EXPECT_EQ(drop({file(voice), file(song)}, "path0"), "path0path1") << "each to its own";
    EXPECT_EQ(mixer().fields().background, song);
    EXPECT_EQ(mixer().fields().vocal, voice);
    dialogs.nextAnswer = BoxAnswer::yes;
    EXPECT_EQ(drop({file(old)}, "path2"), "path2");
    EXPECT_EQ(mixer().fields().destination, old);
    EXPECT_EQ(dialogs.boxes.size(), 2U) << "it is asked about";
    EXPECT_EQ(mixer().fields().background, song);
    for (const std::optional<std::size_t> answer : {std::optional<std::size_t>(), std::optional<std::size_t>(1)}) {
        dialogs.nextChoice = answer;
        EXPECT_EQ(drop({file(take)}, "path2"), "path0path1");
        EXPECT_EQ(dialogs.boxes.back(), "Melvane: What is take.M4A? [Karaoke background] [Vocal recording]");
        EXPECT_EQ(mixer().fields().vocal, answer ? take : voice);
    }
    EXPECT_EQ(mixer().fields().background, song);
    dialogs.boxes.resize(2);

    EXPECT_EQ(
        drop({file("/gone.mp3"), file(dir.write("text.txt", "")), QUrl(QStringLiteral("https://a.b/c.mp3"))}, "path0"),
        "");
    ASSERT_EQ(dialogs.boxes.size(), 3U) << "one for all of them";
    for (const char* part :
         {"/gone.mp3\n", "text.txt\n", "https://a.b/c.mp3\n", "OGG", "WAV", "saved on this computer"})
        EXPECT_NE(dialogs.boxes.back().find(part), std::string::npos) << part;
}

// It may take its time, as a network's or a stick's does.
TEST_F(WindowFixture, TheDiskIsNeverAskedOnTheWindowsThread) {
    std::filesystem::create_directory(dir / "slow");
    const std::string song = dir.write("slow/song.mp3", "");
    const std::string voice = dir.write("slow/voice.wav", "");
    const std::string old = dir.write("slow/old.mp3", "old mix");
    const std::string midi = dir.write("slow/song.mid", "no song");
    dialogs.nextAnswer = BoxAnswer::yes;
    const DiskQuestions questions(dir / "slow");
    main().takeFiles({voice, dir / "slow/gone.mp3", song, dir / "slow"});
    for (const auto& [button, chosen] : {std::pair("BR0", midi), {"BR0", song}, {"BR1", voice}, {"BR2", old}})
        browse(button, chosen);
    EXPECT_EQ(mixer().fields(), (PathFields{song, voice, old}));
    press("mi_button");
    library.position = library.length;
    EXPECT_TRUE(waitFor("Mix finished: " + old + " – silence")) << status();
    press("b_listen");
    find<frmPlayer>(main(), "frmPlayer").close();
    main().mixFast();
    EXPECT_EQ(questions.here(), "");
    EXPECT_GT(questions.elsewhere(), 10);
}

TEST_F(WindowFixture, TellsOfAllMixesThatWereCutOff) {
    namespace fs = std::filesystem;
    for (const int age : {0, 1, 2}) {
        const std::string mix = dir / std::to_string(age) + ".mp3";
        if (fork() == 0) {
            const std::string left = destinations.claim(mix, true).destination.release()->privateFile();
            std::ofstream(left) << "sound";
            fs::last_write_time(left, fs::file_time_type::clock::now() - std::chrono::hours(age));
            _exit(0);
        }
        wait(nullptr);
    }
    main().bringBackMixes();
    EXPECT_EQ(whole("status"), "Mixes cut off: 3. The last is in " + dir.path() + "/0 (part).mp3\n" + dir.path() +
                                   "/1 (part).mp3\n" + dir.path() + "/2 (part).mp3");
    EXPECT_EQ(mixer().run().listenPath, dir / "0 (part).mp3");
}

// A box runs the events of the windows behind it.
TEST_F(WindowFixture, ABoxDoesNotHoldUpTheEndOfARun) {
    chooseFiles();
    press("mi_button");
    dialogs.onBox = [this] {
        library.position = library.length;
        EXPECT_TRUE(waitFor("Mix finished: " + dir.path() + "/mix.mp3 – silence")) << status();
        EXPECT_EQ(readFile(dir / "mix.mp3"), library.product);
    };
    press("bClose");
    EXPECT_EQ(dialogs.boxes.size(), 1U);
    EXPECT_TRUE(main().isVisible());
}

TEST_F(WindowFixture, MovesByItsTop) {
    main().move(100, 100);
    for (const auto& [y, mouseButton, moves] : {std::tuple(0, Qt::LeftButton, true),
                                                {20, Qt::LeftButton, true},
                                                {21, Qt::LeftButton, false},
                                                {10, Qt::RightButton, false}}) {
        const QPoint before = main().pos();
        QTest::mousePress(&main(), mouseButton, {}, QPoint(150, y));
        QTest::mouseMove(&main(), QPoint(160, y + 5));
        QTest::mouseRelease(&main(), mouseButton, {}, QPoint(150, y));
        QTest::mouseMove(&main(), QPoint(10, 10));
        EXPECT_EQ(main().pos() - before, moves ? QPoint(10, 5) : QPoint()) << y;
    }
}

TEST_F(WindowFixture, ComesBackWhereItWasButOnTheScreen) {
    const QRect screen = main().screen()->availableGeometry();
    const WindowPosition farthest{static_cast<float>(std::max(0, screen.right() + 1 - 460)),
                                  static_cast<float>(screen.bottom() + 1 - 196)};
    const std::pair<WindowPosition, WindowPosition> cases[] = {
        {{33, 44.7F}, {std::min(33.0F, farthest.left), 44}}, {{-5000, -5000}, {0, 0}}, {{1e30F, 1e30F}, farthest}};
    for (const auto& [stored, restored] : cases) {
        mixer().settings().position = stored;
        main().DoRest();
        main().show();
        press("bClose");
        EXPECT_FALSE(main().isVisible());
        Settings saved;
        SettingsStore(registry).load(saved);
        EXPECT_EQ(saved.position, restored);
    }
}

TEST_F(WindowFixture, TheStartWindowClosesWithEscapeAndHasGoneBeforeNamedFilesAreOpened) {
    launch({dir / "missing.wav"});
    const QWidget& window = program->startWindow();
    QTest::keyClick(&program->startWindow(), Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
    program->startWindow().show();
    bool startSeen = true;
    dialogs.onBox = [&] { startSeen = window.isVisible(); };
    click(window, "CON");
    EXPECT_EQ(dialogs.boxes.size(), 1U);
    EXPECT_FALSE(startSeen);
}

TEST_F(WindowFixture, ServersThatDoNotAnswerHoldUpNoWindow) {
    music->ports = {"Synthesiser", "Keys"};
    *music->answers = *library.answers = false;
    press("bHelp");
    auto& list = find<QComboBox>(main(), "MidiDev");
    EXPECT_EQ(list.count(), 1) << "as they were listed before";
    *music->answers = *library.answers = true;
    EXPECT_TRUE(QTest::qWaitFor([&] { return list.count() == 2; }));

    *music->answers = false;
    names.temporaryMidi = dir / "tmp.mid";
    bool seen = false;
    QTimer::singleShot(0, &main(), [&] {
        seen = waitFor("Opening…");
        press("bClose");
    });
    main().takeFiles({MELVANE_SAMPLES "/evening-ferry.kar"});
    EXPECT_TRUE(seen);
    EXPECT_FALSE(main().isVisible() || mixer().midi().loaded());
    EXPECT_EQ(dialogs.boxes, std::vector<std::string>()) << "what was given up has not failed";
    EXPECT_EQ(music->performances, 1) << "it is left behind";
    *music->answers = true;
    EXPECT_TRUE(QTest::qWaitFor([&] { return music->performances == 0; }));

    libraryFile.first = std::make_unique<FakeAudioLibrary>();
    *libraryFile.first->answers = false;
    launch();
    QTimer::singleShot(50, &program->startWindow(), [this] { click(program->startWindow(), "bClose"); });
    click(program->startWindow(), "CON");
    EXPECT_THROW(main(), std::bad_optional_access) << "no window comes any more";
}

TEST_F(WindowFixture, WithoutALibraryTheStartWindowIsTheLast) {
    libraryFile.files.clear();
    launch();
    QTimer::singleShot(0, [this] { click(program->startWindow(), "CON"); });
    EXPECT_EQ(QApplication::exec(), Program::kCannotStart);
    EXPECT_EQ(dialogs.boxes, std::vector<std::string>{"Melvane: Audio library does not exists."});
}

}  // namespace
}  // namespace melvane
