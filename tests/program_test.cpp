// The whole program under a user's hands: a real display, a sound server, the audio library as a file, the encoder.
#include <QDragEnterEvent>
#include <QListWidget>
#include <QMimeData>
#include <QPointer>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>
#include <numeric>
#include <set>
#include <sstream>

#include "app/mixer_job.h"
#include "base/paths.h"
#include "controls/switch.h"
#include "controls/window_layout.h"
#include "desktop/library_file.h"
#include "desktop/local_file_names.h"
#include "job/job_text.h"
#include "music/music.h"
#include "settings/language_tables.h"
#include "tests/midi_song.h"
#include "tests/program_fixture.h"
#include "tests/sound_server.h"
#include "tests/wav.h"

// The address sanitizer asks for its options: with whole stacks it can tell what the desktop's bus keeps at the end.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0";
}

namespace melvane {
namespace {

using namespace melvane::test;

constexpr double kSongTone = 500;
constexpr double kVoiceTone = 1300;
constexpr int kMp3Frame = 1152;

// A display of the test's own, whatever number is free; DISPLAY names it.
class DisplayServer {
public:
    DisplayServer() {
        std::array<int, 2> ends{};
        if (pipe(ends.data()) != 0) return;
        server_.emplace(std::vector<std::string>{"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0",
                                                 "1280x800x24", "-nolisten", "tcp"});
        close(ends[1]);
        std::string number(1, ':');
        for (char digit = 0; read(ends[0], &digit, 1) == 1 && digit != '\n';) number += digit;
        close(ends[0]);
        qputenv("DISPLAY", number.c_str());
    }

private:
    std::optional<Child> server_;
};

// Threads of this program, but for the toolkit's own, which come when they are needed and stay, and programs that it
// started and that have not ended, by name.
std::multiset<std::string> running() {
    std::multiset<std::string> names;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        const std::string name = readFile(thread.path() / "comm");
        if (!name.starts_with('Q') && !name.starts_with("Thread (pooled)")) names.insert(name);
        std::istringstream children(readFile(thread.path() / "children"));
        for (std::string child; children >> child;) names.insert(readFile("/proc/" + child + "/comm"));
    }
    return names;
}

void turn(Slider& slider) {
    const int before = static_cast<int>(slider.position());
    drag(slider, before + 10 <= slider.track().last ? before + 10 : before - 10);
    EXPECT_NE(slider.position(), before) << slider.objectName().toStdString();
}

struct ProgramFixture : testing::Test, ProgramUnderTest {
    void SetUp() override {
        if (QGuiApplication::platformName() != QStringLiteral("xcb")) GTEST_SKIP() << "Xvfb is not installed";
        ASSERT_TRUE(server.ready());
        runningBefore = running();
        launch(libraryFile, names, [](AudioLibrary& library) {
            music::Music made = music::createMusic(library, {});
            return Instruments{std::move(made.system), std::move(made.mixer)};
        });
        enter();
    }
    void TearDown() override {
        if (program) closeProgram();
    }
    // What was kept of the settings.
    Settings closeProgram() {
        QTimer::singleShot(0, [&] { press("bClose"); });
        QTimer::singleShot(5000, &main(), [] { QCoreApplication::exit(1); });
        EXPECT_EQ(QApplication::exec(), 0) << "a window is left open";
        Settings kept = mixer().settings();
        for (EffectSwitch& effect : kept.EffectState) effect.parameter = 0;
        kept.EffectState[4] = {};
        kept.mixDeviceStored = true;  // by then
        program.reset();
        RegistryFile written(dir / "registry.json");
        Settings stored;
        SettingsStore(written).load(stored);
        EXPECT_TRUE(stored == kept) << readFile(dir / "registry.json");
        EXPECT_TRUE(stored.position);
        // The system lists a thread for a moment after it was joined.
        EXPECT_TRUE(QTest::qWaitFor([&] { return running() == runningBefore; })) << testing::PrintToString(running());
        EXPECT_EQ(dialogs.boxes, std::vector<std::string>());
        return stored;
    }

    template <typename Window>
    Window& opened() {
        auto* window = main().findChild<Window*>();
        if (!window || !QTest::qWaitForWindowActive(window)) throw std::runtime_error("the window did not open");
        return *window;
    }
    std::string makeTone(const std::string& name, double hertz, int seconds) {
        return dir.write(name, wavFile(sine(hertz, 0.3, static_cast<std::size_t>(seconds * kSampleRate))));
    }
    static void runLame(QStringList words) {
        EXPECT_EQ(QProcess::execute(QStringLiteral("lame"), QStringList{QStringLiteral("--quiet")} + words), 0);
    }
    static std::string toMp3(const std::string& wav) {
        const std::string mp3 = wav.substr(0, wav.size() - 3) + "mp3";
        runLame({toQt(wav), toQt(mp3)});
        return mp3;
    }
    void drop(const std::vector<std::string>& files) {
        QMimeData data;
        QList<QUrl> urls;
        for (const std::string& file : files) urls << QUrl::fromLocalFile(QString::fromStdString(file));
        data.setUrls(urls);
        const QPoint place(main().width() / 2, main().height() - 10);  // on no field
        QDragEnterEvent enter(place, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::ShiftModifier);
        QApplication::sendEvent(&main(), &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDropEvent event(place, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::ShiftModifier);
        QApplication::sendEvent(&main(), &event);
        EXPECT_EQ(event.dropAction(), Qt::CopyAction) << "a file that is moved would be removed";
        QCoreApplication::processEvents();
    }
    void startRun() {
        press("mi_button");
        ASSERT_TRUE(mixer().run().isMixing) << status();
    }
    bool mixedUpTo(double seconds) {
        const auto wanted = static_cast<std::int64_t>(seconds * kSampleRate);
        return QTest::qWaitFor([&] { return mixer().mixingRun().framesDone() >= wanted; }, 10000);
    }
    // Plays the file in the player, which is open.
    void listen() {
        const QPointer<frmPlayer> player = &opened<frmPlayer>();
        EXPECT_TRUE(QTest::qWaitFor([&] { return find<QWidget>(*player, "Ed_Button1").isEnabled(); }));
        click(*player, "Ed_Button1");
        EXPECT_TRUE(QTest::qWaitFor([&] { return find<PlayBar>(*player, "progress").value() > 5; })) << "it plays";
        QTest::keyClick(player->windowHandle(), Qt::Key_Escape);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !player; }));
    }
    Sound decoded(const std::string& mp3) {
        const std::string wav = dir / "decoded.wav";
        runLame({QStringLiteral("--decode"), toQt(mp3), toQt(wav)});
        Sound sound = soundOfWav(readFile(wav));
        EXPECT_NEAR(static_cast<double>(sound.size() / 2), static_cast<double>(mixer().mixingRun().framesDone()),
                    2 * kMp3Frame);
        return sound;
    }

    bool someIsMixed() {
        const QString title = main().windowTitle();
        return title.contains(QLatin1Char('%')) && !title.startsWith(QLatin1String("0 "));
    }

    SoundServerProcess server;
    LibraryFile libraryFile;
    const LocalFileNames names;
    std::multiset<std::string> runningBefore;
};

// Of half a second.
double toneAt(const Sound& sound, double hertz, double second) {
    return levelAt(sound, hertz, static_cast<std::size_t>(second * kSampleRate), kSampleRate / 2);
}

// What a window shows and tells that is another text in its present language.
std::string notPolish(const QWidget& window) {
    std::set<std::string> english, polish;
    const auto add = [&](const auto& row) { english.insert(row.english), polish.insert(row.polish); };
    for (const LanguageRow& row : languageRows()) add(row);
    for (int i = 0; i < static_cast<int>(OwnText::count); ++i) add(ownTextRow(static_cast<OwnText>(i)));
    std::string found;
    QList<const QWidget*> all = window.findChildren<const QWidget*>();
    all << &window;
    for (const QWidget* each : all) {
        if (!each->isVisible() || each->window() != &window) continue;
        for (const char* property :
             {"text", "Caption", "toolTip", "accessibleName", "windowTitle", "placeholderText"}) {
            const std::string text =
                each->property(property).toString().remove(QStringLiteral(" – Melvane")).toStdString();
            if (!text.empty() && english.contains(text) && !polish.contains(text)) found += text + "; ";
        }
    }
    return found;
}

TEST_F(ProgramFixture, ASongAndAVoiceBecomeAnMp3) {
    const std::string song = toMp3(makeTone("Pieśń o żółwiu.wav", kSongTone, 6));
    drop({makeTone("mój głos.wav", kVoiceTone, 5), song});
    EXPECT_EQ(mixer().fields().background, song);
    EXPECT_EQ(mixer().fields().destination, dir / "Pieśń o żółwiu2.mp3");
    startRun();
    ASSERT_TRUE(mixedUpTo(1));
    press("b_eff");
    auto& effects = opened<frmEff>();
    for (auto* slider : effects.findChildren<Slider*>()) turn(*slider);
    for (auto* flip : effects.findChildren<Switch*>()) click(*flip);
    click(effects, "labPreset");
    QTest::keyClick(effects.windowHandle(), Qt::Key_Down);
    QTest::keyClick(effects.windowHandle(), Qt::Key_Return);
    for (const char* name : {"volm0", "snc"}) turn(find(main(), name));
    for (const char* name : {"volm1", "tone"}) drag(find(main(), name), find(main(), name).track().last);
    EXPECT_EQ(mixer().run().key, 5);
    EXPECT_LT(mixer().mixingRun().framesDone(), 4 * kSampleRate) << "the hands were too slow for what follows";
    EXPECT_TRUE(QTest::qWaitFor([&] { return !mixer().run().isMixing; }, 12000));
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return status().starts_with("Mix finished: " + mixer().fields().destination + " – loudness -");
    })) << status();

    const Sound mix = decoded(mixer().fields().destination);
    EXPECT_NEAR(static_cast<double>(mix.size() / 2), 6 * kSampleRate, 2 * kMp3Frame);
    ASSERT_GT(mix.size() / 2, 5.5 * kSampleRate);
    const double raised = kSongTone * std::exp2(5 / 12.0);
    EXPECT_GT(toneAt(mix, kSongTone, 0.3), 0.1);
    EXPECT_GT(toneAt(mix, kVoiceTone, 0.3), 0.1);
    EXPECT_GT(toneAt(mix, raised, 5), 0.05) << "the key was heard";
    EXPECT_LT(toneAt(mix, kSongTone, 5), toneAt(mix, raised, 5) / 10);
    EXPECT_LT(toneAt(mix, kVoiceTone, 5), 0.002) << "the voice was turned down";

    press("b_listen");
    listen();
    const Settings saved = closeProgram();
    EXPECT_EQ(saved.volume[1], 0);
    EXPECT_LT(saved.volume[0], 100);
    EXPECT_EQ(saved.currentPreset, 1);
    EXPECT_EQ(saved.effectsWindowOpen, -1);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NE(saved.toneValue[i], 50);
        EXPECT_EQ(saved.EffectState[i].enabled, -1);
        EXPECT_GT(saved.EffectState[i].level, 0);
    }
    for (const int balance : saved.balanceValue) EXPECT_NE(balance, 0);
}

TEST_F(ProgramFixture, AKaraokeSongIsPlayedInterruptedAndHeard) {
    const std::string song = dir / "wieczorny prom.kar";
    std::filesystem::copy_file(MELVANE_SAMPLES "/evening-ferry.kar", song);
    drop({song});
    EXPECT_EQ(mixer().fields().destination, "") << "there is no voice yet";
    drop({makeTone("głos.wav", kVoiceTone, 2)});
    EXPECT_EQ(mixer().fields().destination, dir / "wieczorny prom.mp3");
    startRun();
    press("b_midi");
    auto& channels = opened<frmChann>();
    ASSERT_TRUE(mixedUpTo(1));
    click(channels, "onoff3");
    const ChannelSettings& melody = mixer().midi().state().ChannelInfo[3];
    EXPECT_EQ(melody.switchedOn, 0);
    EXPECT_EQ(melody.volume, 0);
    auto& instrument = find<InstrumentLabel>(channels, "ins0");
    QTest::mouseDClick(channels.windowHandle(), Qt::LeftButton, {}, instrument.geometry().center());
    auto& picker = *channels.findChild<frmIns*>();
    ASSERT_TRUE(giveFocus(picker));
    auto& list = find<QListWidget>(picker, "List3");
    list.scrollToTop();
    clickAt(picker, list.viewport()->mapTo(&picker, list.visualItemRect(list.item(2)).center()));
    EXPECT_EQ(mixer().midi().state().ChannelInfo[0].instrument, 2);
    EXPECT_EQ(instrument.text(), list.item(2)->text());

    press("b_eff");
    auto& effects = opened<frmEff>();
    press("bHelp");
    auto& preferences = opened<mnuHelp>();
    click(preferences, "TABA1");
    click(preferences, "language_pl");
    const std::array<QWidget*, 5> windows = {&main(), &effects, &channels, &picker, &preferences};
    for (const QWidget* window : windows) EXPECT_EQ(notPolish(*window), "") << window->objectName().toStdString();
    EXPECT_EQ(channels.windowTitle(), QStringLiteral("Kanały MIDI – Melvane"));
    QTest::keyClick(preferences.windowHandle(), Qt::Key_Escape);
    QTest::keyClick(picker.windowHandle(), Qt::Key_Escape);
    EXPECT_FALSE(picker.isVisible());
    ASSERT_TRUE(mixedUpTo(4.5));
    press("b_STOP");
    EXPECT_TRUE(status().starts_with("Zatrzymano")) << status();
    listen();

    const Sound mix = decoded(mixer().fields().destination);
    ASSERT_GT(mix.size() / 2, 4U * kSampleRate);
    EXPECT_GT(toneAt(mix, kVoiceTone, 0.5), 0.1);
    const auto* from = mix.data() + kSampleRate;
    const double power = std::inner_product(from, from + kSampleRate, from, 0.0) / kSampleRate;
    EXPECT_GT(power, std::pow(toneAt(mix, kVoiceTone, 0.5), 2) / 2 * 1.05) << "the song beside the voice";
    const Settings saved = closeProgram();
    EXPECT_EQ(saved.language, "pl");
    EXPECT_EQ(saved.channelsWindowOpen, -1);
    for (const char* window : {"frmChann", "mnuHelp"})
        EXPECT_TRUE(WindowPlaces(SettingsStore(registry)).find(window)) << window;
}

// With every knob moved, a fast mix is what the mix button makes when no knob is touched meanwhile.
TEST_F(ProgramFixture, AMixThatNobodyHearsIsTheSameToTheByte) {
    const std::string voice = makeTone("głos.wav", kVoiceTone, 2);
    const std::string ogg = dir / "pieśń.ogg";
    QProcess::execute(QStringLiteral("ffmpeg"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"),
                                                 toQt(makeTone("pieśń.wav", kSongTone, 3)), toQt(ogg)});
    const std::string songs[] = {toMp3(dir / "pieśń.wav"), ogg, dir.write("song.kar", midiSong())};
    for (const std::string& song : songs) {
        drop({song, voice});
        mixer().rehearsal().placeVoice({-12'345, 40});
        press("b_eff");
        auto& effects = opened<frmEff>();
        for (auto* slider : effects.findChildren<Slider*>()) turn(*slider);
        for (auto* flip : effects.findChildren<Switch*>()) click(*flip);
        for (const char* name : {"volm0", "volm1", "snc", "tone"}) turn(find(main(), name));
        if (mixer().midi().loaded()) mixer().midi().setChannelInstrument(0, 40);
        startRun();
        EXPECT_TRUE(QTest::qWaitFor([&] { return !mixer().run().isMixing; }, 12000));
        const std::string heard = mixer().run().lastMixPath;
        ASSERT_EQ(heard, mixer().fields().destination) << status();
        mixer().fields().destination = dir / "unheard.mp3";
        const Job job = takeJob(mixer());
        main().mixFast();
        turn(find(main(), "volm0"));
        mixer().midi().setChannelInstrument(0, 1);
        EXPECT_TRUE(QTest::qWaitFor([&] { return mixer().run().lastMixPath == dir / "unheard.mp3"; })) << status();
        EXPECT_TRUE(QTest::qWaitFor([&] {
            return status().starts_with("Mix finished: " + dir.path() + "/unheard.mp3 – loudness -");
        })) << status();
        EXPECT_EQ(readFile(dir / "unheard.mp3"), readFile(heard)) << jobText(job, "");
        std::filesystem::remove(dir / "unheard.mp3");
        const QString tool = QCoreApplication::applicationDirPath() + QStringLiteral("/melvane-mix");
        const std::string document = dir.write("a.melvane", jobText(job, dir.path()));
        EXPECT_EQ(QProcess::execute(tool, {QStringLiteral("--quiet"), QStringLiteral("--job"), toQt(document)}), 0);
        EXPECT_EQ(readFile(dir / "unheard.mp3"), readFile(heard)) << "nor does it matter which program mixes";
        std::filesystem::remove(dir / "unheard.mp3");
    }
}

TEST_F(ProgramFixture, LevelsAreMatchedInOneStep) {
    drop({toMp3(makeTone("pieśń.wav", kSongTone, 3)), makeTone("głos.wav", kVoiceTone, 2)});
    mixer().sliders().setVolume(1, 10);
    EXPECT_TRUE(QTest::qWaitFor([&] { return status() == "Ready"; }, 20000)) << status();
    const Job before = takeJob(mixer());
    QTest::keyClick(&main(), Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return status().starts_with("Voice 2"); }, 20000)) << status();
    EXPECT_GT(mixer().run().voiceTrim, 10);
    QTest::keyClick(&main(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(jobText(takeJob(mixer()), ""), jobText(before, ""));
    EXPECT_FALSE(isFile(before.files.destination)) << "nothing is mixed";
}

TEST_F(ProgramFixture, AMixThatNobodyHearsLeavesNothingWhenItIsCancelled) {
    const std::string part = readFile(MELVANE_SAMPLES "/evening-ferry.mp3");
    std::string song;
    for (int half = 0; half < 20; ++half) song += part;
    drop({dir.write("ten minutes.mp3", song), makeTone("głos.wav", kVoiceTone, 2)});
    const auto files = [&] { return std::distance(std::filesystem::directory_iterator(dir.path()), {}); };
    main().endSession();
    const auto before = files();
    const std::string path = getenv("PATH");
    const TempDir failing;
    std::filesystem::permissions(
        failing.write("lame", "#!/bin/sh\nhead -c 8000000 >/dev/null\nsleep 4\ncat >/dev/null\nexit 1\n"),
        std::filesystem::perms::owner_all);
    for (const bool replaces : {false, true}) {
        if (replaces) setenv("PATH", (failing.path() + ":" + path).c_str(), 1);  // what it tells at its end is no news
        const std::string destination = mixer().fields().destination;
        if (replaces) dir.write(toPath(destination).filename(), "a mix");
        dialogs.nextAnswer = BoxAnswer::yes;
        QTest::keyClick(&main(), Qt::Key_M, Qt::ControlModifier | Qt::ShiftModifier);
        EXPECT_TRUE(QTest::qWaitFor([&] { return someIsMixed(); }, 20000)) << status();
        EXPECT_NE(status().find("Mixing fast"), std::string::npos) << status();
        QTest::keyClick(&main(), Qt::Key_R, Qt::ControlModifier);
        auto& timeline = opened<frmTimeline>();
        EXPECT_NE(
            timeline.findChild<ElidedLabel*>(QStringLiteral("note"))->toolTip().indexOf(QStringLiteral("Mixing fast")),
            -1);
        click(timeline, "mixFast");
        timeline.close();
        main().activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&main()));
        EXPECT_TRUE(waitFor("Cancelled: nothing was written."));
        EXPECT_EQ(files(), before + (replaces ? 1 : 0));
        EXPECT_EQ(readFile(destination), replaces ? "a mix" : "");
    }
    const std::string voice = std::exchange(mixer().fields().vocal, dir.write("voice.m4a", "????ftypM4A "));
    const TempDir withoutFfmpeg;
    std::filesystem::create_symlink(toPath(QStandardPaths::findExecutable(QStringLiteral("lame")).toStdString()),
                                    withoutFfmpeg / "lame");
    setenv("PATH", withoutFfmpeg.path().c_str(), 1);
    dialogs.nextAnswer = BoxAnswer::yes;
    main().mixFast();
    EXPECT_TRUE(QTest::qWaitFor([&] { return status().find("install ffmpeg") != std::string::npos; })) << status();
    setenv("PATH", path.c_str(), 1);
    mixer().fields().vocal = voice;
    std::filesystem::remove(dir / "voice.m4a");
    dialogs.boxes.clear();
    main().mixFast();
    EXPECT_TRUE(QTest::qWaitFor([&] { return someIsMixed(); }, 20000)) << status();
    press("bClose");
    EXPECT_TRUE(main().isVisible());
    EXPECT_EQ(std::exchange(dialogs.boxes, {}).size(), 1U);
    main().endSession();
    EXPECT_EQ(files(), before + 1);
}

// A benchmark shows the figure.
TEST_F(ProgramFixture, ALongSongIsReadBesideTheWindow) {
    const std::string part = readFile(MELVANE_SAMPLES "/evening-ferry.mp3");
    std::string song;
    for (int half = 0; half < 20; ++half) song += part;
    auto& bar = find<OverviewBar>(main(), "progress");
    // There is the shape of something that is not quite silent near the end.
    const auto isRead = [&] {
        const QImage image = bar.grab().toImage().scaledToWidth(OverviewBar::kColumns);
        return image.pixelColor(170, image.height() / 2 - 2) != QColor(skin::kInset);
    };
    EXPECT_FALSE(isRead());
    drop({dir.write("ten minutes.mp3", song)});
    qint64 longest = 0;
    int rounds = 0;
    QElapsedTimer round;
    for (round.start(); !isRead() && rounds < 10000; ++rounds) {
        QCoreApplication::processEvents();
        QThread::msleep(5);
        longest = std::max(longest, round.restart());
    }
    EXPECT_TRUE(isRead());
    EXPECT_GT(rounds, 20) << "the window stood still";
    std::printf("longest_gap_ms %lld\n", static_cast<long long>(longest));
}

}  // namespace
}  // namespace melvane

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();
    const bool installed = !QStandardPaths::findExecutable(QStringLiteral("Xvfb")).isEmpty();
    std::optional<melvane::DisplayServer> display;
    if (installed) display.emplace();
    qputenv("QT_QPA_PLATFORM", installed ? "xcb" : "offscreen");
    QApplication app(argc, argv);
    melvane::applyStyle(app);
    return RUN_ALL_TESTS();
}
