// The whole program under a user's hands: a real display, a sound server, the audio library as a file, the encoder.
#include <QDragEnterEvent>
#include <QListWidget>
#include <QMimeData>
#include <QPointer>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>
#include <fstream>
#include <numeric>
#include <optional>
#include <set>

#include "app/MixerStart.h"
#include "app/frmMain.h"
#include "app/start_checks.h"
#include "controls/switch.h"
#include "desktop/library_file.h"
#include "desktop/local_file_names.h"
#include "desktop/registry_file.h"
#include "music/music.h"
#include "settings/language_tables.h"
#include "tests/fake_platform.h"
#include "tests/sound_server.h"
#include "tests/temp_dir.h"
#include "tests/wav.h"
#include "tests/window_events.h"

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

// Programs that this one started and that have not ended, by name.
std::multiset<std::string> children() {
    std::multiset<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream status(entry.path() / "status");
        std::string name;
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with("Name:")) name = line.substr(6);
            if (line == "PPid:\t" + std::to_string(getpid())) names.insert(name);
        }
    }
    return names;
}

// But for the toolkit's own, which come when they are needed and stay.
std::multiset<std::string> threads() {
    std::multiset<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task"))
        if (const std::string name = readFile(entry.path() / "comm"); !name.starts_with('Q')) names.insert(name);
    return names;
}

// The largest time between two ticks of a clock that ticks all the time, from its start on.
class Heartbeat {
public:
    Heartbeat() {
        since_.start();
        timer_.callOnTimeout([this] { longest_ = std::max(longest_, since_.restart()); });
        timer_.start(5);
    }
    qint64 longestMs() { return std::max(longest_, since_.elapsed()); }

private:
    QTimer timer_;
    QElapsedTimer since_;
    qint64 longest_ = 0;
};

void click(QWidget& control) {
    clickAt(*control.window(), control.mapTo(control.window(), control.rect().center()));
}
void click(const QWidget& window, const char* name) {
    click(find<QWidget>(window, name));
}

// There is no window manager: the test gives the focus as one does.
bool giveFocus(QWidget& window) {
    window.activateWindow();
    return QTest::qWaitForWindowActive(&window);
}

// By mouse and back by keyboard, then a little off where it was.
void turn(Slider& slider) {
    const int before = slider.position();
    const auto [first, last, neutral] = slider.track();
    drag(slider, last);
    slider.setFocus();
    QTest::keyClick(slider.window()->windowHandle(), Qt::Key_Home);
    QTest::keyClick(slider.window()->windowHandle(), Qt::Key_End);
    drag(slider, before + 10 <= last ? before + 10 : before - 10);
    EXPECT_NE(slider.position(), before) << slider.objectName().toStdString();
}

struct ProgramFixture : testing::Test {
    void SetUp() override {
        if (QGuiApplication::platformName() != QStringLiteral("xcb")) GTEST_SKIP() << "Xvfb is not installed";
        ASSERT_TRUE(server.ready());
        started = children();
        threadsAtStart = threads();
        openProgram();
    }
    void TearDown() override {
        if (main) closeProgram();
    }

    void openProgram() {
        language.InitLanguage(names.systemDirectory(), "en");
        MixerStart start(language);
        QObject::connect(&start, &MixerStart::continued, [&] {
            StartResult result = startAudioLibrary(libraryFile, names, {.programDirectory = names.programDirectory()});
            ASSERT_TRUE(result.library);
            library = std::move(result.library);
            music = music::createMusic(*library, {});
            const Environment environment{*library, *music.system, *music.mixer, names,
                                          dialogs,  shell,         language,     frmMain::processWindowEvents};
            mixer.emplace(environment);
            mixer->Form_Load(&store);
            main.emplace(*mixer, environment, store);
            main->DoRest();
            main->show();
            start.close();
        });
        start.show();
        ASSERT_TRUE(giveFocus(start));
        click(start, "CON");
        ASSERT_TRUE(main);
        EXPECT_FALSE(start.isVisible());
        ASSERT_TRUE(giveFocus(*main));
    }
    void closeProgram() {
        QTimer::singleShot(0, [&] { click(*main, "bClose"); });
        QTimer::singleShot(5000, &*main, [] { QCoreApplication::exit(1); });
        EXPECT_EQ(QApplication::exec(), 0) << "a window is left open";
        main.reset();
        Settings kept = mixer->settings();
        for (EffectSwitch& effect : kept.EffectState) effect.parameter = 0;
        kept.EffectState[4] = {};
        kept.mixDeviceStored = true;  // by then
        mixer.reset();
        music = {};
        library.reset();
        RegistryFile written(dir / "registry.json");
        Settings stored;
        SettingsStore(written).load(stored);
        EXPECT_TRUE(stored == kept) << readFile(dir / "registry.json");
        EXPECT_TRUE(stored.position);
        EXPECT_EQ(children(), started);
        EXPECT_EQ(threads(), threadsAtStart);
        EXPECT_EQ(dialogs.boxes, std::vector<std::string>());
        saved = stored;
    }

    template <typename Window>
    Window& opened() {
        auto* window = main->findChild<Window*>();
        if (!window || !QTest::qWaitForWindowActive(window)) throw std::runtime_error("the window did not open");
        return *window;
    }
    std::string makeTone(const std::string& name, double hertz, int seconds) {
        return dir.write(name, wavFile(sine(hertz, 0.3, static_cast<std::size_t>(seconds * kSampleRate))));
    }
    std::string toMp3(const std::string& wav) {
        const QString file = QString::fromStdString(wav);
        const QString mp3 = file.chopped(3) + QStringLiteral("mp3");
        EXPECT_EQ(QProcess::execute(QStringLiteral("lame"), {QStringLiteral("--quiet"), file, mp3}), 0);
        return mp3.toStdString();
    }
    void drop(const std::vector<std::string>& files) {
        QMimeData data;
        QList<QUrl> urls;
        for (const std::string& file : files) urls << QUrl::fromLocalFile(QString::fromStdString(file));
        data.setUrls(urls);
        const QPoint place = main->rect().center();
        QDragEnterEvent enter(place, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::ShiftModifier);
        QApplication::sendEvent(&*main, &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDropEvent event(place, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::ShiftModifier);
        QApplication::sendEvent(&*main, &event);
        EXPECT_EQ(event.dropAction(), Qt::CopyAction) << "a file that is moved would be removed";
        QCoreApplication::processEvents();
    }
    void startRun() {
        click(*main, "mi_button");
        ASSERT_TRUE(mixer->run().isMixing) << status();
    }
    bool mixedUpTo(double seconds) {
        const auto wanted = static_cast<std::int64_t>(seconds * kSampleRate);
        return QTest::qWaitFor([&] { return mixer->mixingRun().framesDone() >= wanted; }, 10000);
    }
    std::string status() { return find<QLabel>(*main, "status").toolTip().toStdString(); }
    // Plays the file in the player, which is open.
    void listen() {
        const QPointer<frmPlayer> player = &opened<frmPlayer>();
        auto& bar = find<PlayBar>(*player, "progress");
        click(*player, "Ed_Button1");
        EXPECT_TRUE(QTest::qWaitFor([&] { return bar.value() > 5; })) << "it plays";
        click(*player, "Ed_Button2");
        const int paused = bar.value();
        QTest::qWait(400);
        EXPECT_EQ(bar.value(), paused);
        clickAt(*player, bar.geometry().topLeft() + QPoint(PlayBar::kMargin + PlayBar::kUnits / 2, bar.height() / 2));
        EXPECT_NEAR(bar.value(), PlayBar::kUnits / 2, 2);
        click(*player, "Ed_Button1");
        EXPECT_TRUE(QTest::qWaitFor([&] { return bar.value() > PlayBar::kUnits / 2 + 5; })) << "it plays on from there";
        QTest::keyClick(player->windowHandle(), Qt::Key_Escape);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !player; }));
    }
    Sound decoded(const std::string& mp3) {
        const std::string wav = dir / "decoded.wav";
        EXPECT_EQ(QProcess::execute(QStringLiteral("lame"), {QStringLiteral("--quiet"), QStringLiteral("--decode"),
                                                             QString::fromStdString(mp3), QString::fromStdString(wav)}),
                  0);
        Sound sound = soundOfWav(readFile(wav));
        EXPECT_NEAR(static_cast<double>(sound.size() / 2), static_cast<double>(mixer->mixingRun().framesDone()),
                    2 * kMp3Frame);
        return sound;
    }

    SoundServerProcess server;
    TempDir dir;
    RegistryFile registry{dir / "registry.json"};
    SettingsStore store{registry};
    LocalFileNames names;
    FakeDialogs dialogs;
    FakeShell shell;
    modLang language;
    LibraryFile libraryFile;
    std::unique_ptr<AudioLibrary> library;
    music::Music music;
    std::optional<Mixer> mixer;
    std::optional<frmMain> main;
    std::multiset<std::string> started;
    std::multiset<std::string> threadsAtStart;
    Settings saved;
};

// Of half a second.
double toneAt(const Sound& sound, double hertz, double second) {
    return levelAt(sound, hertz, static_cast<std::size_t>(second * kSampleRate), kSampleRate / 2);
}

double loudness(const Sound& sound, double second) {
    const auto* from = sound.data() + static_cast<std::ptrdiff_t>(second * kSampleRate) * 2;
    return std::sqrt(std::inner_product(from, from + kSampleRate, from, 0.0) / kSampleRate);
}

// What a window shows and tells that is another text in its present language.
std::string notPolish(const QWidget& window) {
    std::set<std::string> english;
    std::set<std::string> polish;
    for (const LanguageRow& row : languageRows()) english.insert(row.english), polish.insert(row.polish);
    for (int i = 0; i < static_cast<int>(OwnText::count); ++i)
        english.insert(ownTextRow(static_cast<OwnText>(i)).english),
            polish.insert(ownTextRow(static_cast<OwnText>(i)).polish);
    std::string found;
    QList<const QWidget*> all = {&window};
    for (const QWidget* each : window.findChildren<QWidget*>())
        if (each->isVisible() && each->window() == &window) all << each;
    for (const QWidget* each : all)
        for (const char* property :
             {"text", "Caption", "toolTip", "accessibleName", "windowTitle", "placeholderText"}) {
            const std::string text =
                each->property(property).toString().remove(QStringLiteral(" – Melvane")).toStdString();
            if (!text.empty() && english.contains(text) && !polish.contains(text)) found += text + "; ";
        }
    return found;
}

TEST_F(ProgramFixture, ASongAndAVoiceBecomeAnMp3) {
    const std::string song = toMp3(makeTone("Pieśń o żółwiu.wav", kSongTone, 6));
    drop({makeTone("mój głos.wav", kVoiceTone, 5), song});
    EXPECT_EQ(mixer->fields().background, song);
    EXPECT_EQ(mixer->fields().destination, dir / "Pieśń o żółwiu2.mp3");
    startRun();
    ASSERT_TRUE(mixedUpTo(1));
    click(*main, "b_eff");
    auto& effects = opened<frmEff>();
    for (auto* slider : effects.findChildren<Slider*>()) turn(*slider);
    for (auto* flip : effects.findChildren<Switch*>()) click(*flip);
    click(effects, "labPreset");
    QTest::keyClick(effects.windowHandle(), Qt::Key_Down);
    QTest::keyClick(effects.windowHandle(), Qt::Key_Return);
    for (const char* name : {"volm0", "snc"}) turn(find(*main, name));
    for (const char* name : {"volm1", "tone"}) drag(find(*main, name), find(*main, name).track().last);
    EXPECT_EQ(mixer->run().key, 5);
    EXPECT_LT(mixer->mixingRun().framesDone(), 4 * kSampleRate) << "the hands were too slow for what follows";
    EXPECT_TRUE(QTest::qWaitFor([&] { return !mixer->run().isMixing; }, 12000));
    EXPECT_EQ(status(), "Mix finished: " + mixer->fields().destination);

    const Sound mix = decoded(mixer->fields().destination);
    EXPECT_NEAR(static_cast<double>(mix.size() / 2), 6 * kSampleRate, 2 * kMp3Frame);
    ASSERT_GT(mix.size() / 2, 5.5 * kSampleRate);
    const double raised = kSongTone * std::exp2(5 / 12.0);
    EXPECT_GT(toneAt(mix, kSongTone, 0.3), 0.1);
    EXPECT_GT(toneAt(mix, kVoiceTone, 0.3), 0.1);
    EXPECT_GT(toneAt(mix, raised, 5), 0.05) << "the key was heard";
    EXPECT_LT(toneAt(mix, kSongTone, 5), toneAt(mix, raised, 5) / 10);
    EXPECT_LT(toneAt(mix, kVoiceTone, 5), 0.002) << "the voice was turned down";

    click(*main, "b_listen");
    listen();
    closeProgram();
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
    EXPECT_EQ(mixer->fields().destination, "") << "there is no voice yet";
    drop({makeTone("głos.wav", kVoiceTone, 2)});
    EXPECT_EQ(mixer->fields().destination, dir / "wieczorny prom.mp3");
    startRun();
    click(*main, "b_midi");
    auto& channels = opened<frmChann>();
    ASSERT_TRUE(mixedUpTo(1));
    click(channels, "onoff3");
    const ChannelSettings& melody = mixer->midi().state.ChannelInfo[3];
    EXPECT_EQ(melody.switchedOn, 0);
    EXPECT_EQ(melody.volume, 0);
    auto& instrument = find<InstrumentLabel>(channels, "ins0");
    QTest::mouseDClick(channels.windowHandle(), Qt::LeftButton, {}, instrument.geometry().center());
    auto& picker = *channels.findChild<frmIns*>();
    ASSERT_TRUE(giveFocus(picker));
    auto& list = find<QListWidget>(picker, "List3");
    list.scrollToTop();
    clickAt(picker, list.viewport()->mapTo(&picker, list.visualItemRect(list.item(2)).center()));
    EXPECT_EQ(mixer->midi().state.ChannelInfo[0].instrument, 2);
    EXPECT_EQ(instrument.text(), list.item(2)->text());

    click(*main, "b_eff");
    auto& effects = opened<frmEff>();
    click(*main, "bHelp");
    auto& preferences = opened<mnuHelp>();
    click(preferences, "TABA1");
    click(preferences, "language_pl");
    const std::array<QWidget*, 5> windows = {&*main, &effects, &channels, &picker, &preferences};
    for (const QWidget* window : windows) EXPECT_EQ(notPolish(*window), "") << window->objectName().toStdString();
    EXPECT_EQ(channels.windowTitle(), QStringLiteral("Kanały MIDI – Melvane"));
    QTest::keyClick(preferences.windowHandle(), Qt::Key_Escape);
    QTest::keyClick(picker.windowHandle(), Qt::Key_Escape);
    EXPECT_FALSE(picker.isVisible());
    ASSERT_TRUE(mixedUpTo(4.5));
    click(*main, "b_STOP");
    EXPECT_EQ(status(), "Zatrzymano");
    listen();

    const Sound mix = decoded(mixer->fields().destination);
    ASSERT_GT(mix.size() / 2, 4U * kSampleRate);
    EXPECT_GT(toneAt(mix, kVoiceTone, 0.5), 0.1);
    EXPECT_GT(std::pow(loudness(mix, 0.3), 2), std::pow(toneAt(mix, kVoiceTone, 0.5), 2) / 2 * 1.05)
        << "the song beside the voice";
    closeProgram();
    EXPECT_EQ(saved.language, "pl");
    EXPECT_EQ(saved.channelsWindowOpen, -1);
    for (const char* window : {"frmChann", "mnuHelp", "frmPlayer"})
        EXPECT_TRUE(WindowPlaces(store).find(window)) << window;
}

// Run by a benchmark, which shows the property.
TEST_F(ProgramFixture, DISABLED_ALongSongIsReadBesideTheWindow) {
    const std::string song = toMp3(makeTone("long.wav", kSongTone, 600));
    auto& bar = find<OverviewBar>(*main, "progress");
    const QImage empty = bar.grab().toImage();
    Heartbeat heartbeat;
    drop({song});
    QTest::qWait(15000);
    const qint64 longest = heartbeat.longestMs();
    EXPECT_NE(bar.grab().toImage(), empty);
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
