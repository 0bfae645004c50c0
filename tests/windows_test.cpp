// The start window and the main window, driven by mouse and keyboard, over a library that makes no sound.
#include <QAbstractButton>
#include <QImage>
#include <QProgressBar>
#include <QSignalSpy>
#include <functional>

#include "app/MixerStart.h"
#include "app/frmMain.h"
#include "app/main_knobs.h"
#include "app/run_messages.h"
#include "desktop/registry_file.h"
#include "tests/fake_audio_library.h"
#include "tests/fake_music.h"
#include "tests/fake_platform.h"
#include "tests/file_accesses.h"
#include "tests/temp_dir.h"
#include "tests/window_events.h"

namespace melvane {
namespace {

using namespace melvane::test;

const std::vector<const char*> kButtons = {"BR0",    "BR1",   "BR2",      "mi_button", "b_STOP",
                                           "b_midi", "b_eff", "b_listen", "bHelp",     "bClose"};

struct WindowFixture : testing::Test {
    TempDir dir;
    FakeAudioLibrary library;
    FakeFileNames names;
    FakeMusic music;
    FakeSystemMixer systemMixer;
    FakeDialogs dialogs;
    FakeShell shell;
    modLang language;
    RegistryFile registry{dir / "registry.json"};
    SettingsStore store{registry};
    std::function<void()> duringEvents = frmMain::processWindowEvents;
    Environment environment{library, music, systemMixer, names, dialogs, shell, language, [this] { duringEvents(); }};
    Mixer mixer{environment};
    frmMain window{mixer, environment, store};

    WindowFixture() {
        language.InitLanguage("", "en");
        show();
    }

    void show() {
        window.DoRest();
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    QAbstractButton& button(const char* name) { return *window.findChild<QAbstractButton*>(QLatin1String(name)); }
    void click(const char* name) { QTest::mouseClick(&button(name), Qt::LeftButton); }
    std::string whole(const char* label) {
        return window.findChild<QLabel*>(QLatin1String(label))->toolTip().toStdString();
    }
    std::string title() { return window.windowTitle().toStdString(); }
    // Names of the buttons that are switched on.
    std::string enabled() {
        std::string list;
        for (const char* name : kButtons)
            if (button(name).isEnabled()) list += name + std::string(" ");
        return list;
    }
    std::string focused() { return QApplication::focusWidget()->objectName().toStdString(); }
    int filledPixels() {
        auto& progress = *window.findChild<QProgressBar*>();
        EXPECT_EQ(progress.width(), 176);
        const QImage bar = progress.grab().toImage().scaledToWidth(176);
        const auto isFilled = [&](int x) { return bar.pixelColor(x, bar.height() / 2) == QColor(0xF2A541); };
        int pixels = 0;
        while (pixels < bar.width() && isFilled(pixels)) ++pixels;
        for (int x = pixels; x < bar.width(); ++x) EXPECT_FALSE(isFilled(x));
        return pixels;
    }
    void chooseFiles() {
        mixer.fields() = {"/song.mp3", "/voice.wav", dir / "mix.mp3"};
        window.SetMainLanguage();
    }
    bool waitFor(const std::string& status) {
        return QTest::qWaitFor([&] { return whole("status") == status; });
    }
};

const std::string kIdle = "BR0 BR1 BR2 mi_button b_midi b_eff bHelp bClose ";
const std::string kMixed = "BR0 BR1 BR2 mi_button b_midi b_eff b_listen bHelp bClose ";

TEST_F(WindowFixture, BrowsingFillsTheFields) {
    mixer.settings().recDirectory = dir.path();
    const std::string vocal = dir.write("a song <b>with a very long name, longer than any field.wav", "");
    EXPECT_EQ(window.findChild<QLabel*>(QStringLiteral("path0"))->text(), QStringLiteral("Drop a song here"));
    dialogs.nextFile = "/music/a song <b>with a very long name, longer than any field.mp3";
    click("BR0");
    EXPECT_EQ(QString::fromStdString(whole("path0")), QString::fromStdString(dialogs.nextFile).toHtmlEscaped());
    EXPECT_EQ(QString::fromStdString(whole("path1")), QString::fromStdString(vocal).toHtmlEscaped());
    EXPECT_TRUE(window.findChild<QLabel*>(QStringLiteral("path1"))->text().contains(u'…'));
    dialogs.nextFile = dir / "mix";
    click("BR2");
    EXPECT_EQ(dialogs.lastProposal, "/music/a song <b>with a very long name, longer than any field.mp3");
    EXPECT_EQ(whole("path2"), dir / "mix.mp3");
    EXPECT_EQ(window.findChild<QLabel*>(QStringLiteral("path2"))->accessibleName().toStdString(),
              "Mixing destination: " + dir.path() + "/mix.mp3");
    expectTidy(window);
}

TEST_F(WindowFixture, ChosenFilesComeBackFromTheMenuAndCostOneAccess) {
    const std::string song = dir.write("a & b.mp3", "");
    const std::string voice = dir.write("voice.wav", "");
    const std::string file = dir / "registry.json";
    EXPECT_EQ(accessesTo(file, [&] { window.takeFiles({voice, song}); }), Accesses(0, 1)) << "none is there yet";
    dialogs.nextFile = dir / "other.mp3";
    EXPECT_EQ(accessesTo(file, [&] { click("BR0"); }), Accesses(1, 1));
    QMenu* recent = window.findChild<frmMenu*>()->recentMenu();
    EXPECT_EQ(accessesTo(file, [&] { Q_EMIT recent->aboutToShow(); }), Accesses(1, 0));
    std::vector<std::string> names;
    for (const QAction* action : recent->actions()) names.push_back(action->text().toStdString());
    EXPECT_EQ(names, (std::vector<std::string>{dir / "other.mp3", dir / "voice.wav", dir / "a && b.mp3"}));
    recent->actions().back()->trigger();
    EXPECT_EQ(mixer.fields().background, song);
    click("b_eff");
    EXPECT_EQ(accessesTo(file, [&] { click("bClose"); }), Accesses(1, 1)) << "settings and places";
}

TEST_F(WindowFixture, ARunLocksTheWindowShowsItsProgressAndEndsWithTheSong) {
    EXPECT_EQ(whole("status"), "Ready");
    EXPECT_EQ(enabled(), kIdle);
    chooseFiles();
    button("mi_button").setFocus();
    QTest::keyClick(&window, Qt::Key_Return);
    EXPECT_EQ(enabled(), "b_STOP b_midi b_eff bHelp bClose ");
    EXPECT_EQ(focused(), "b_STOP");
    EXPECT_EQ(whole("status"), "Mixing…");

    library.position = library.length / 2 + 1;
    EXPECT_TRUE(QTest::qWaitFor([&] { return title() == "50 % – Melvane"; })) << title();
    EXPECT_EQ(filledPixels(), 88);
    library.card.deviceOpen = false;
    EXPECT_TRUE(waitFor("No sound device: the mix cannot be heard, but it is recorded."));

    for (const auto& [code, text] : {std::pair("en", "Zakończ miksowanie."), {"pl", "You must stop mixing first."}}) {
        language.SetLanguage(code);
        click("bClose");
        EXPECT_EQ(dialogs.boxes.back(), std::string("Melvane: ") + text);
        EXPECT_TRUE(window.isVisible() && mixer.run().isMixing);
    }
    EXPECT_FALSE(window.close()) << "as from the window manager";
    language.SetLanguage("en");
    button("b_STOP").setFocus();

    std::string whileFinishing;
    library.encoderFinishes = 1;
    duringEvents = [&] {
        if (!whileFinishing.empty() || !mixer.run().isMixing) return;
        EXPECT_TRUE(waitFor("Finishing the MP3 file…"));
        click("b_STOP");
        whileFinishing = enabled();
    };
    library.position = library.length;
    EXPECT_TRUE(waitFor("Mix finished: " + dir.path() + "/mix.mp3")) << whole("status");
    EXPECT_EQ(whileFinishing, "b_midi b_eff bHelp bClose ");
    EXPECT_EQ(enabled(), kMixed);
    EXPECT_EQ(focused(), "mi_button");
    EXPECT_EQ(title(), "Melvane");
    EXPECT_EQ(filledPixels(), 176);
    EXPECT_FALSE(window.findChild<QTimer*>()->isActive());
}

TEST_F(WindowFixture, TheStopButtonEndsARunAndAHeldKeyDoesNot) {
    chooseFiles();
    button("mi_button").setFocus();
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QString(), true);
    QApplication::sendEvent(&window, &repeated);
    EXPECT_FALSE(mixer.run().isMixing);
    click("mi_button");
    EXPECT_TRUE(mixer.run().isMixing);
    QApplication::sendEvent(&window, &repeated);
    EXPECT_TRUE(mixer.run().isMixing);
    click("b_STOP");
    EXPECT_FALSE(mixer.run().isMixing);
    EXPECT_EQ(whole("status"), "Stopped");
    EXPECT_EQ(enabled(), kMixed);
    EXPECT_TRUE(window.findChild<frmPlayer*>()->isVisible()) << "the mix can be listened to";
}

TEST_F(WindowFixture, FailuresAreToldInTheLanguageOfTheWindow) {
    const struct {
        RunFailure failure;
        std::function<void()> cause;
    } cases[] = {
        {RunFailure::pathsMissing, [this] { mixer.fields().vocal.clear(); }},
        {RunFailure::midiUnplayable, [this] { mixer.fields().background = "/song.kar"; }},
        {RunFailure::destinationIsSource, [this] { mixer.fields().destination = "/song.mp3"; }},
        {RunFailure::destinationNotWritable, [this] { mixer.fields().destination = dir.path(); }},
        {RunFailure::backgroundUnreadable, [this] { library.unreadable = {"/song.mp3"}; }},
        {RunFailure::vocalUnreadable, [this] { library.unreadable = {"/voice.wav"}; }},
        {RunFailure::captureNotStarted, [this] { library.captureStarts = false; }},
        {RunFailure::encoderNotStarted,
         [this] {
             library.encoderStarts = false;
             library.captureStarts = true;
         }},
        {RunFailure::encoderFailed,
         [this] {
             library.encoderStarts = true;
             library.encoderAlive = false;
             library.encoder = EncoderState::failed;
         }},
    };
    for (const auto& [failure, cause] : cases) {
        chooseFiles();
        library.unreadable.clear();
        cause();
        click("mi_button");
        // A mix that an encoder left behind may be listened to all the same.
        EXPECT_TRUE(QTest::qWaitFor([&] { return enabled() == kIdle || enabled() == kMixed; })) << enabled();
        EXPECT_EQ(mixer.run().failure, failure);
        std::string before;
        for (const char* code : {"pl", "en"}) {
            language.SetLanguage(code);
            window.SetMainLanguage();
            EXPECT_EQ(whole("status"), runMessage(language, mixer.run()));
            EXPECT_NE(whole("status"), before);
            before = whole("status");
        }
    }
    const std::vector<std::string> boxes = {"Melvane: Source or destiny files not defined.",
                                            "Melvane: Error playing Midi file"};
    EXPECT_EQ(dialogs.boxes, boxes) << "the others have no box";
}

TEST_F(WindowFixture, SlidersStandForValues) {
    const auto volume = [this](std::size_t i) { return [this, i] { return double{1} * mixer.settings().volume[i]; }; };
    const auto sync = [this] { return std::round(mixer.run().syncOffset * 1e4) / 1e4; };
    const auto key = [this] { return mixer.run().key; };
    const struct {
        const char* slider;
        int to;
        double value;
        std::function<double()> stored;
        const char* shown;  // of the key
    } steps[] = {
        {"volm0", 65, 98, volume(0), "0"},   {"volm1", 500, 0, volume(1), "0"}, {"snc", 96, -0.04, sync, "0"},
        {"snc", 94, -0.04, sync, "0"},       {"snc", 500, -0.6, sync, "0"},     {"tone", 500, 5, key, "+5.0"},
        {"tone", 341, 1 / 6.4, key, "+0.2"}, {"tone", 340, 0, key, "0"},        {"tone", 0, -5, key, "-5.0"},
    };
    for (const auto& [slider, to, value, stored, shown] : steps) {
        drag(find(window, slider), to);
        EXPECT_EQ(stored(), value) << slider << " " << to;
        EXPECT_EQ(find<QLabel>(window, "par").text().toStdString(), shown);
    }
    EXPECT_EQ(find(window, "snc").valueText(), QStringLiteral("-0.60 s"));
    for (const char* slider : {"volm0", "volm1", "snc", "tone"}) doubleClick(find(window, slider));
    EXPECT_EQ(mixer.settings().volume, (std::array<std::int16_t, 2>{100, 100}));
    EXPECT_EQ(sync(), 0);
    EXPECT_EQ(find(window, "snc").position(), 94);
    EXPECT_EQ(key(), 0);
    EXPECT_EQ(find<QLabel>(window, "par").text(), QStringLiteral("0"));
}

TEST_F(WindowFixture, SlidersStandAsStoredAndAreHeardInARun) {
    mixer.settings().volume = {80, 50};
    mixer.run().syncOffset = 0.12F;
    mixer.run().key = -2.5;
    show();
    std::string positions;
    for (const char* slider : {"volm0", "volm1", "snc", "tone"})
        positions += std::to_string(find(window, slider).position()) + " ";
    EXPECT_EQ(positions, "76 94 88 324 ");
    EXPECT_EQ(find<QLabel>(window, "par").text(), QStringLiteral("-2.5"));
    chooseFiles();
    click("mi_button");
    const struct {
        const char* slider;
        const char* call;
    } cases[] = {{"volm0", "BASS_ChannelSetAttributes"},
                 {"volm1", "BASS_ChannelSetAttributes"},
                 {"snc", "setChannelOffset"},
                 {"tone", "BASS_FX_TempoSet"}};
    for (const auto& [slider, call] : cases) {
        library.calls.clear();
        drag(find(window, slider), find(window, slider).position() + 5);
        const auto called = [&, name = std::string(call)] {
            return std::any_of(library.calls.begin(), library.calls.end(),
                               [&](const std::string& line) { return line.starts_with(name); });
        };
        EXPECT_TRUE(QTest::qWaitFor(called)) << slider;
    }
    click("b_STOP");
}

TEST_F(WindowFixture, TheEffectsWindowIsKeptAndComesAlongAtTheNextStart) {
    const auto effects = [this] { return window.findChild<frmEff*>(); };
    EXPECT_EQ(effects(), nullptr) << "made when it is first opened";
    click("b_eff");
    frmEff* const first = effects();
    ASSERT_TRUE(first && first->isVisible());
    drag(find(*first, "eq_song0"), 70);
    EXPECT_EQ(mixer.settings().toneValue[0], 0);
    QTest::keyClick(first, Qt::Key_Escape);
    EXPECT_FALSE(first->isVisible());
    language.SetLanguage("pl");
    window.SetMainLanguage();
    click("b_eff");
    EXPECT_EQ(effects(), first);
    EXPECT_EQ(first->windowTitle(), QStringLiteral("Efekty – Melvane"));
    click("bClose");
    EXPECT_FALSE(first->isVisible());

    Mixer next{environment};
    next.Form_Load(&store);
    frmMain nextWindow{next, environment, store};
    nextWindow.DoRest();
    nextWindow.show();
    const auto* reopened = nextWindow.findChild<frmEff*>();
    ASSERT_TRUE(reopened && reopened->isVisible());
    EXPECT_EQ(find(*reopened, "eq_song0").position(), 70);
}

TEST_F(WindowFixture, ErrorsEndInABoxNotInTheEventLoop) {
    library.inputs.resize(0x8001, library.inputs.front());
    chooseFiles();
    click("mi_button");
    EXPECT_EQ(dialogs.boxes, std::vector<std::string>{"Melvane: overflow"});
    EXPECT_EQ(dialogs.lastIcon, BoxIcon::critical);
    EXPECT_EQ(enabled(), kIdle);
}

TEST_F(WindowFixture, MovesByItsTop) {
    window.move(100, 100);
    const auto drag = [this](int y, Qt::MouseButton mouseButton) {
        const QPoint before = window.pos();
        QTest::mousePress(&window, mouseButton, {}, QPoint(150, y));
        QTest::mouseMove(&window, QPoint(160, y + 5));
        QTest::mouseRelease(&window, mouseButton, {}, QPoint(150, y));
        const QPoint moved = window.pos() - before;
        QTest::mouseMove(&window, QPoint(10, 10));
        EXPECT_EQ(window.pos() - before, moved) << "released";
        return moved;
    };
    EXPECT_EQ(drag(0, Qt::LeftButton), QPoint(10, 5));
    EXPECT_EQ(drag(20, Qt::LeftButton), QPoint(10, 5));
    EXPECT_EQ(drag(21, Qt::LeftButton), QPoint());
    EXPECT_EQ(drag(10, Qt::RightButton), QPoint());
}

TEST_F(WindowFixture, ComesBackWhereItWasButOnTheScreen) {
    const QRect screen = window.screen()->availableGeometry();
    const WindowPosition farthest{static_cast<float>(std::max(0, screen.right() + 1 - 460)),
                                  static_cast<float>(screen.bottom() + 1 - 196)};
    const std::pair<WindowPosition, WindowPosition> cases[] = {{{33, 44.7F}, {std::min(33.0F, farthest.left), 44}},
                                                               {{-5000, -5000}, {0, 0}},
                                                               {{1e30F, 1e30F}, farthest},
                                                               {{farthest.left + 50, farthest.top + 50}, farthest}};
    for (const auto& [stored, restored] : cases) {
        mixer.settings().position = stored;
        show();
        click("bClose");
        EXPECT_FALSE(window.isVisible());
        Settings saved;
        store.load(saved);
        EXPECT_EQ(saved.position, restored);
    }
}

TEST_F(WindowFixture, EverythingIsReachedByKeyboardAndNamedInBothLanguages) {
    mixer.run().isMixing = true;  // so that the stop button is on, and then the others
    std::string order;
    for (const bool running : {true, false}) {
        mixer.run().isMixing = running;
        window.SetMainLanguage();
        button("bClose").setFocus();
        do {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            order += focused() + " ";
        } while (focused() != "bClose" && order.size() < 200);
    }
    EXPECT_EQ(order,
              "volm0 volm1 snc tone b_STOP b_midi b_eff b_menu bHelp bClose "
              "BR0 BR1 BR2 volm0 volm1 snc tone mi_button b_midi b_eff b_menu bHelp bClose ");

    std::map<std::string, std::string> texts[2];
    for (const int polish : {0, 1}) {
        language.SetLanguage(polish ? "pl" : "en");
        window.SetMainLanguage();
        for (const char* name : {"BR0", "BR1", "BR2", "mi_button", "b_STOP", "b_eff", "bHelp", "bClose", "progress",
                                 "path0", "path1", "path2", "status", "volm0", "volm1", "snc", "tone"})
            texts[polish][name] = window.findChild<QWidget*>(QLatin1String(name))->accessibleName().toStdString();
        for (const char* name : {"BR0", "BR1", "BR2", "bClose", "volm0", "volm1", "snc", "tone"})
            EXPECT_EQ(find<QWidget>(window, name).toolTip().toStdString(), texts[polish][name]);
        drag(find(window, "tone"), polish ? kKeyTrack.first : kKeyTrack.last);
        expectTidy(window);
    }
    for (const auto& [name, text] : texts[0]) {
        EXPECT_FALSE(text.empty()) << name;
        EXPECT_EQ(text == texts[1][name], name == "b_STOP") << name;
    }
    EXPECT_EQ(texts[1]["BR1"], "Wskaż plik z vocalem");
    EXPECT_EQ(texts[0]["BR2"], "Browse for  mixing destination file");
    EXPECT_EQ(texts[0]["volm0"] + ", " + texts[0]["volm1"] + ", " + texts[1]["snc"] + ", " + texts[0]["tone"],
              "Song volume, Vocal volume, Synchronizacja, Karaoke background key");
}

TEST(MixerStart, GoesOnOnceWithEnterAndClosesWithEscape) {
    modLang language;
    language.InitLanguage("", "pl");
    MixerStart start(language);
    start.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&start));
    EXPECT_EQ(start.size(), QSize(274, 174));
    auto* button = start.findChild<Ed_Button*>(QStringLiteral("CON"));
    EXPECT_EQ(button->Caption(), QStringLiteral("D A L E J"));
    QSignalSpy continued(&start, &MixerStart::continued);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(continued.count(), 1);
    for (const auto* label : start.findChildren<QLabel*>())
        EXPECT_LE(label->sizeHint().width(), label->width()) << label->text().toStdString();
    QTest::keyClick(&start, Qt::Key_Escape);
    EXPECT_FALSE(start.isVisible());
}

}  // namespace
}  // namespace melvane

int main(int argc, char** argv) {
    return melvane::test::runWindowTests(argc, argv);
}
