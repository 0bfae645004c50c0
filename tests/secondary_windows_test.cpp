// The preferences window and the player, driven by mouse and keyboard, and what opens their pages.
#include <QComboBox>
#include <QDesktopServices>
#include <QPointer>
#include <QRadioButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTextBrowser>

#include "desktop/desktop_shell.h"
#include "desktop/page_address.h"
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
        EXPECT_EQ(shell.addresses.back(), "file:///program/help." + code + ".html");
    }
    shell.opens = false;
    find<QWidget>(*window, "adres").setFocus();
    QTest::keyClick(&find<QWidget>(*window, "adres"), Qt::Key_Return);
    EXPECT_EQ(shell.addresses.back(), find<QAbstractButton>(*window, "adres").text().toStdString());
    EXPECT_EQ(dialogs.boxes,
              std::vector<std::string>{"Melvane: The page cannot be opened: file:///program/home.en.html"});
}

TEST_F(PreferencesFixture, TellsWhatTheProgramIs) {
    open();
    window->showAbout();
    auto& about = find<QTextBrowser>(*window, "about");
    EXPECT_TRUE(about.isVisible() && about.hasFocus());
    EXPECT_FALSE(find<QWidget>(*window, "FM").isVisible());
    for (const char* code : {"pl", "en"}) {
        language.SetLanguage(code);
        window->GetPreferencesLanguage();
        EXPECT_EQ(about.accessibleName().toStdString(), language.ownText(OwnText::aboutProgram));
        const QString text = about.toPlainText();
        EXPECT_TRUE(text.startsWith(about.accessibleName()));
        for (const char* part : {"Melvane " MELVANE_VERSION " ", "General Public License", "Rubber Band", "FFmpeg"})
            EXPECT_TRUE(text.contains(QLatin1String(part))) << part;
        EXPECT_EQ(about.verticalScrollBar()->value(), 0);
        QTest::keyClick(&about, Qt::Key_PageDown);
        EXPECT_GT(about.verticalScrollBar()->value(), 0);
    }
    QTest::keyClick(&about, Qt::Key_Tab);
    QTest::keyClick(&about, Qt::Key_Return);
    EXPECT_EQ(shell.addresses, std::vector<std::string>{"https://www.gnu.org/licenses/gpl-3.0.html"});
    click("TABA0");
    EXPECT_FALSE(about.isVisible());
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
    library.readers.put("/m/song.mp3", sine(1000, std::pow(10, -23 / 20.0), 5 * kSampleRate));
    open();
    EXPECT_TRUE(QTest::qWaitFor([&] { return text("loudness") == "-23 LUFS, 0 LU, -23 dBTP"; })) << text("loudness");
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

TEST(DesktopShell, OpensPagesWhereTheyAre) {
    const TempDir dir;
    QTextBrowser handler;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &handler, "setSource");
    for (const char* folder : {"tree & co/build/pages", "usr/lib/melvane", "usr/lib/machine/melvane",
                               "usr/share/doc/melvane", "usr/share/doc/melvane/folder.html", "alone"})
        std::filesystem::create_directories(dir / folder);
    const std::string built = dir.write("tree & co/build/pages/ż 100%.html", "help");
    const std::string installed = dir.write("usr/share/doc/melvane/ż 100%.html", "help");
    DesktopShell shell;
    for (const auto& [folder, page] : {std::pair("tree & co/build", built),
                                       {"usr/lib/melvane", installed},
                                       {"usr/lib/machine/melvane", installed}}) {
        const std::string address = pageAddress(dir / folder, "ż 100%.html");
        EXPECT_EQ(address.find_first_of("& "), std::string::npos) << address;
        EXPECT_TRUE(shell.open(address)) << address;
        EXPECT_EQ(handler.source().toLocalFile().toStdString(), page);
    }
    for (const std::string& nothing :
         {pageAddress(dir / "usr/lib/melvane", "none.html"), pageAddress(dir / "usr/lib/melvane", "folder.html"),
          pageAddress(dir / "alone", "ż 100%.html"), installed, std::string(), std::string("http://")})
        EXPECT_FALSE(shell.open(nothing)) << nothing;
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
}

TEST(DesktopShell, TakesTheToolkitsTextsAlongWithTheLanguage) {
    DesktopShell shell;
    for (const auto& [code, expected] :
         {std::pair("pl", "Anuluj"), {"en", "Cancel"}, {"pl", "Anuluj"}, {"xx", "Cancel"}}) {
        shell.useLanguage(code);
        EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", "Cancel").toStdString(), expected) << code;
    }
}

}  // namespace
}  // namespace melvane
