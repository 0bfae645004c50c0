// The preferences window and the player, driven by mouse and keyboard, and what opens their pages.
#include <QComboBox>
#include <QDesktopServices>
#include <QPointer>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTextBrowser>

#include "desktop/desktop_shell.h"
#include "player/frmPlayer.h"
#include "settings/mnuHelp.h"
#include "tests/silent_parts.h"
#include "tests/window_events.h"

namespace melvane {
namespace {

using namespace melvane::test;

template <typename Window>
struct WindowFixture : SilentParts {
    QWidget owner;
    QPointer<Window> window;

    void show(Window* made) {
        window = made;
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window));
    }
    void click(const std::string& name) { test::click(*window, name.c_str()); }
    bool closes() {
        return QTest::qWaitFor([this] { return window.isNull(); });
    }
};

struct PreferencesFixture : WindowFixture<mnuHelp> {
    Settings settings;
    std::vector<std::string> ports = {"Melvane synthesizer", "Keys", "Piano"};
    std::vector<std::string> inputs = {"Mic", "Line", "Stereo Mix"};

    void open() {
        show(new mnuHelp(
            settings, language, shell, dialogs, [this] { return ports; }, [this] { return inputs; }, &owner));
    }
    DeviceList& list(const char* name) { return find<DeviceList>(*window, name); }
    std::string shown(const char* name) { return list(name).currentText().toStdString(); }
};

TEST_F(PreferencesFixture, ChoicesCountAtOnce) {
    settings.mixDevice = 1;
    open();
    EXPECT_EQ(shown("MidiDev"), "Melvane synthesizer") << "port -5 is replaced by the first one";
    EXPECT_EQ(shown("MixDev"), "Line");
    EXPECT_FALSE(find<QCheckBox>(*window, "CustMix").isChecked());
    EXPECT_EQ(settings.midiPort, -5) << "looking changes nothing";

    QSignalSpy port(window, &mnuHelp::midiPortChanged);
    QTest::keyClick(&list("MidiDev"), Qt::Key_End);
    EXPECT_EQ(settings.midiPort, 2);
    QTest::keyClick(&list("MidiDev"), Qt::Key_Home);
    EXPECT_EQ(settings.midiPort, 0);
    EXPECT_EQ(port.count(), 2);
    QTest::keyClick(&list("MixDev"), Qt::Key_Down);
    EXPECT_EQ(settings.mixDevice, 2);
    EXPECT_TRUE(settings.mixDeviceStored);
    click("CustMix");
    EXPECT_EQ(settings.forceMixDevice, 1);
    click("CustMix");
    EXPECT_EQ(settings.forceMixDevice, 0);
    click("bOK");
    EXPECT_TRUE(closes());
}

TEST_F(PreferencesFixture, ListsFollowDevicesThatComeAndGo) {
    settings.midiPort = 2;
    settings.mixDevice = 7;
    open();
    EXPECT_EQ(shown("MidiDev"), "Piano");
    EXPECT_EQ(list("MixDev").currentIndex(), -1);
    QSignalSpy port(window, &mnuHelp::midiPortChanged);
    const auto reopen = [this](std::vector<std::string> now) {
        ports = std::move(now);
        list("MidiDev").showPopup();
        list("MidiDev").hidePopup();
    };
    reopen({"Synthesiser", "Piano"});
    EXPECT_EQ(shown("MidiDev"), "Piano");
    EXPECT_EQ(settings.midiPort, 1);
    reopen({"Synthesiser", "Piano", "Piano"});
    EXPECT_EQ(settings.midiPort, 1);
    const auto notice = [this] { return find<QLabel>(*window, "deviceNotice").text().toStdString(); };
    EXPECT_EQ(notice(), "The sound of this MIDI port is not in the mix unless an input records it.");
    reopen({"Synthesiser", "Keys"});
    EXPECT_EQ(shown("MidiDev"), "Synthesiser") << "and not what has its number now";
    EXPECT_EQ(notice(), "The MIDI port Piano has gone or cannot be opened: the built-in synthesizer plays.");
    reopen({"Synthesiser", "Keys", "Piano"});
    EXPECT_EQ(shown("MidiDev"), "Piano");
    EXPECT_EQ(settings.midiPort, 2);
    reopen({});
    EXPECT_FALSE(list("MidiDev").isEnabled());
    EXPECT_EQ(list("MidiDev").placeholderText().toStdString(), "(no devices)");
    EXPECT_EQ(port.count(), 0) << "the user chose nothing";

    ports = {"Synthesiser", "Flute"};
    inputs.assign(8, "Mic");
    QEvent activated(QEvent::WindowActivate);
    QApplication::sendEvent(window, &activated);
    EXPECT_EQ(list("MidiDev").count(), 2);
    EXPECT_TRUE(list("MidiDev").isEnabled());
    EXPECT_EQ(list("MixDev").currentIndex(), 7);
    inputs.back() = "Stereo Mix";
    QTest::keyClick(&list("MixDev"), Qt::Key_Home);
    QApplication::sendEvent(window, &activated);
    QTest::keyClick(&list("MixDev"), Qt::Key_End);
    inputs.erase(inputs.begin());
    QApplication::sendEvent(window, &activated);
    EXPECT_EQ(settings.mixDevice, 6);
    inputs.pop_back();
    QApplication::sendEvent(window, &activated);
    EXPECT_EQ(list("MixDev").currentIndex(), -1);
    EXPECT_TRUE(
        find<QLabel>(*window, "deviceNotice").text().contains(QStringLiteral("The device Stereo Mix has gone.")));
}

TEST_F(PreferencesFixture, TellsTheLanguageAndOpensPagesInIt) {
    open();
    EXPECT_TRUE(find<QWidget>(*window, "FM").isVisible());
    QObject::connect(window, &mnuHelp::languageChanged, window, [this](const QString& code) {
        language.SetLanguage(code.toStdString());
        window->GetPreferencesLanguage();
    });
    for (const std::string code : {"pl", "en"}) {
        click("TABA0");
        click("TABA1");
        EXPECT_FALSE(find<QWidget>(*window, "FM").isVisible());
        click("language_" + code);
        EXPECT_EQ(settings.language, code);
        EXPECT_EQ(language.languageCode(), code);
        EXPECT_EQ(shown("MidiDev"), code == "pl" ? "Syntezator programu Melvane" : "Melvane synthesizer");
        click("online");
        EXPECT_EQ(shell.addresses.back(), "docs/help." + code + ".md");
    }
    shell.opens = false;
    find<QWidget>(*window, "adres").setFocus();
    QTest::keyClick(&find<QWidget>(*window, "adres"), Qt::Key_Return);
    EXPECT_EQ(shell.addresses.back(), find<QAbstractButton>(*window, "adres").text().toStdString());
    EXPECT_EQ(dialogs.boxes, std::vector<std::string>{"Melvane: The page cannot be opened: README.md"});
}

struct PlayerFixture : WindowFixture<frmPlayer> {
    void open() {
        window = new frmPlayer(library, language, dialogs, "/m/song.mp3", &owner);
        EXPECT_TRUE(QTest::qWaitFor([this] { return text("time") != language.ownText(OwnText::opening); }));
        show(window);
    }
    PlayBar& bar() { return find<PlayBar>(*window, "progress"); }
    std::string text(const char* name) { return find<QLabel>(*window, name).text().toStdString(); }
    bool barComesTo(int units) {
        return QTest::qWaitFor([&] { return bar().value() == units; }, 2000);
    }
    // Calls since this was asked last.
    Words calls() { return std::exchange(library.calls, {}); }
};

TEST_F(PlayerFixture, PlaysOneFile) {
    library.length = 4 * 44100 * 60;
    open();
    EXPECT_EQ(text("Label1"), "/m/song.mp3");
    auto& play = find<QWidget>(*window, "Ed_Button1");
    const QImage resting = play.grab().toImage();
    click("Ed_Button1");
    EXPECT_NE(play.grab().toImage(), resting) << "that it plays is seen";
    EXPECT_EQ(play.accessibleName(), QStringLiteral("Playing"));
    library.position = library.length / 2;
    EXPECT_TRUE(barComesTo(103));
    EXPECT_EQ(text("time"), "0:30 / 1:00");
    click("Ed_Button2");
    EXPECT_EQ(play.grab().toImage(), resting);
    EXPECT_EQ(play.accessibleName(), QStringLiteral("Play"));
    calls();
    for (int i = 0; i < 3; ++i) QTest::keyClick(window->focusWidget(), Qt::Key_Space);
    library.position = library.length;
    EXPECT_TRUE(barComesTo(206));
    EXPECT_EQ(calls(),
              (Words{"BASS_ChannelPlay 1 0", "BASS_ChannelStop 1", "BASS_ChannelPlay 1 0", "BASS_ChannelStop 1"}))
        << "at its end it is stopped";

    QTest::mouseClick(&bar(), Qt::LeftButton, {}, QPoint(PlayBar::kMargin + 103, 9));
    library.position = 4 * 44100 * 3;
    QTest::keyClick(&bar(), Qt::Key_Left);
    QTest::keyClick(&bar(), Qt::Key_Right);
    EXPECT_EQ(calls(), (Words{"BASS_ChannelSetPosition 1 5292000", "BASS_ChannelSetPosition 1 0",
                              "BASS_ChannelSetPosition 1 1411200"}));
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_TRUE(closes());
    EXPECT_EQ(calls(), (Words{"BASS_ChannelStop 1", "BASS_MusicFree 1"}));
}

TEST_F(PlayerFixture, OpensItsFileBesideTheWindowAndLeavesItWhenItGoes) {
    library.openingTime = std::chrono::milliseconds(300);
    show(new frmPlayer(library, language, dialogs, "/m/song.mp3", &owner));
    EXPECT_EQ(text("time"), "Opening…");
    EXPECT_EQ(text("Label1"), "/m/song.mp3");
    QTest::keyClick(window, Qt::Key_Space);
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_TRUE(closes());
    const Words all = calls();
    EXPECT_EQ(all.front(), "BASS_StreamCreateFile /m/song.mp3 0");
    EXPECT_EQ(all[1], "giveUpOpening");
    EXPECT_EQ((Words{all.end() - 2, all.end()}), (Words{"BASS_ChannelStop 1", "BASS_MusicFree 1"}));
}

TEST_F(PlayerFixture, SaysWhatItCannotPlay) {
    library.unreadable = {"/m/song.mp3"};
    for (const char* code : {"en", "pl"}) {
        language.SetLanguage(code);
        open();
        EXPECT_EQ(find<QLabel>(*window, "Label1").toolTip().toStdString(),
                  language.ownText(OwnText::cannotPlayFile, "song.mp3"));
        calls();
        for (const char* name : {"Ed_Button1", "Ed_Button2", "Ed_Button3", "progress"}) click(name);
        QTest::keyClick(window, Qt::Key_Space);
        EXPECT_EQ(calls(), Words());
        delete window;
    }
}

TEST(DesktopShell, FindsDocumentsBesideTheProgramAndWhereTheyAreInstalled) {
    const TempDir dir;
    QTextBrowser handler;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &handler, "setSource");
    const auto opened = [&] { return handler.source().toLocalFile().toStdString(); };
    for (const char* folder : {"tree/docs", "tree/build", "usr/lib/melvane", "usr/share/doc/melvane"})
        std::filesystem::create_directories(dir / folder);
    const std::string ours = dir.write("tree/docs/help.en.md", "help");
    const std::string installed = dir.write("usr/share/doc/melvane/help.en.md", "help");
    EXPECT_TRUE(DesktopShell(dir / "tree/build").open("docs/help.en.md"));
    EXPECT_EQ(opened(), ours);
    EXPECT_TRUE(DesktopShell(dir / "usr/lib/melvane").open("docs/help.en.md"));
    EXPECT_EQ(opened(), installed);
    for (const char* nothing : {"docs/help.de.md", "docs", "", "http://"})
        EXPECT_FALSE(DesktopShell(dir / "tree/build").open(nothing)) << nothing;
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
}

TEST(DesktopShell, TakesTheToolkitsTextsAlongWithTheLanguage) {
    DesktopShell shell("/");
    for (const auto& [code, expected] :
         {std::pair("pl", "Anuluj"), {"en", "Cancel"}, {"pl", "Anuluj"}, {"xx", "Cancel"}}) {
        shell.useLanguage(code);
        EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", "Cancel").toStdString(), expected) << code;
    }
}

}  // namespace
}  // namespace melvane
