// The windows and menus of a MIDI song, driven by mouse and keyboard.
#include <QMenu>
#include <QSignalSpy>
#include <set>

#include "midi/frmChann.h"
#include "midi/frmMenu.h"
#include "tests/silent_parts.h"
#include "tests/window_events.h"

namespace melvane {
namespace {

using namespace melvane::test;

// Each channel with its own number as its instrument.
std::string songWith(std::initializer_list<int> channels) {
    std::string messages;
    for (const int c : channels)
        for (const int byte : {0x90 + c, 0xC0 + c, c, 0xB0 + c, 7, 90}) messages += static_cast<char>(byte);
    return songOf(messages);
}

struct ChannelsFixture : SilentMidi {
    QWidget owner;
    frmChann* window = nullptr;

    ChannelsFixture() {
        openSong(songWith({0, 2, 3, 5, 8, 15}));
        window = new frmChann(midi, settings, language, dialogs, &owner);
        midi.updateChannels = [this] { window->updateChannels(); };
        window->open();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window));
    }
    void openSong(const std::string& bytes) { open(dir.write("song.mid", bytes)); }
    Slider& slider(const char* name) { return find(*window, name); }
    ChannelToggle& onoff(const char* name) { return find<ChannelToggle>(*window, name); }
    InstrumentLabel& ins(const char* name) { return find<InstrumentLabel>(*window, name); }
    frmIns* picker() { return window->findChild<frmIns*>(); }
    QListWidget& list() { return find<QListWidget>(*picker(), "List3"); }
    void click(const char* name) { test::click(*window, name); }
    QPoint rowAt(int row) {
        list().scrollToItem(list().item(row));
        return list().viewport()->mapTo(picker(), list().visualItemRect(list().item(row)).center());
    }
};

TEST_F(ChannelsFixture, KnobsSendWhatTheyStandFor) {
    drag(slider("vol3"), -100);
    click("onoff3");
    EXPECT_EQ(state.ChannelInfo[3].switchedOn, 0);
    window->updateChannels();
    EXPECT_EQ(slider("vol3").position(), 60) << "waits where it was";
    click("onoff3");
    EXPECT_EQ(sent(), (Words{"sendMidi 10 1 3 176 7 128", "sendMidi 10 1 3 176 7 0", "sendMidi 10 1 3 176 7 129"}));
    drag(slider("bl15"), 0);
    drag(slider("bl15"), 452);
    for (const char* still : {"bl15", "vol15", "bl0"}) drag(slider(still), static_cast<int>(slider(still).position()));
    doubleClick(slider("bl15"));
    slider("vol15").actions().at(0)->trigger();
    EXPECT_EQ(sent(), (Words{"sendMidi 0 1 15 176 10 0", "sendMidi 0 1 15 176 10 120", "sendMidi 0 1 15 176 10 64",
                             "sendMidi 10 1 15 176 7 100"}));
    EXPECT_EQ(slider("vol15").valueText() + slider("bl15").valueText(), QStringLiteral("10064"));

    click("onoff0");
    drag(slider("vol0"), 90);
    EXPECT_FALSE(onoff("onoff0").isChecked()) << "a touch does not switch it on";
    doubleClick(slider("vol0"));
    drag(slider("vol0"), 90);
    EXPECT_EQ(sent(), Words{"sendMidi 10 1 0 176 7 0"});
    click("onoff0");
    EXPECT_EQ(sent(), Words{"sendMidi 10 1 0 176 7 64"});
}

TEST_F(ChannelsFixture, ShowsTheTableAsItIs) {
    const auto shown = [this] {
        const auto toggles = window->findChildren<ChannelToggle*>();
        return std::count_if(toggles.begin(), toggles.end(), [](const auto* toggle) { return toggle->isVisible(); });
    };
    EXPECT_EQ(shown(), 6);
    midi.SetSingleChannel(5, false, 1, 127, 128);
    midi.updateChannels();
    EXPECT_EQ(ins("ins5").text(), QStringLiteral("Percussion"));
    EXPECT_EQ(slider("bl5").position(), 125 + 48);
    EXPECT_EQ(slider("vol5").position(), 78) << "where the song has it";
    const auto own = [this](const char* name) {
        return find<QWidget>(*window, name).toolTip().section(u'\n', 1).toStdString();
    };
    for (const bool restored : {false, true}) {
        EXPECT_EQ(own("vol2"), "The song's own setting: 127");
        EXPECT_EQ(own("ins2"), "The song's own setting: Acoustic Grand");
        EXPECT_EQ(own("bl2"), "The song itself sets nothing here.");
        if (restored) break;
        drag(slider("vol2"), 90);
        midi.setChannelInstrument(2, 30);
        midi.updateChannels();
        EXPECT_EQ(own("vol2") + own("ins2"), "");
        midi.MidiRestore();
    }
    midi.SetSingleChannel(5, false, 1, 127, 128);
    midi.MidiRestore();
    EXPECT_TRUE(onoff("onoff5").isChecked());
    EXPECT_EQ(ins("ins5").text(), QStringLiteral("Electric Piano 2"));

    midi.close();
    EXPECT_EQ(shown(), 0);
    window->hide();
    EXPECT_EQ(settings.channelsWindowOpen, -1);
    window->startFlags = {true, false};
    window->open();
    EXPECT_FALSE(window->isVisible()) << "waits for a song";
    openSong(songWith({9}));
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(shown(), 1);
    window->close();
    midi.updateChannels();
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(settings.channelsWindowOpen, 0);
}

TEST_F(ChannelsFixture, NumbersTellWhatSoundsAndMakeItSoundAlone) {
    const QSignalSpy changes(window, &frmChann::heardChanged);
    const auto solo = [&](const char* name) {
        QTest::mouseClick(window->windowHandle(), Qt::LeftButton, Qt::ControlModifier, onoff(name).geometry().center());
    };
    solo("onoff2");
    onoff("onoff5").setFocus();
    QTest::keyClick(&onoff("onoff5"), Qt::Key_Space, Qt::ControlModifier);
    solo("onoff2");
    EXPECT_EQ(sent(), (Words{"solo 4", "solo 36", "solo 32"}));
    EXPECT_EQ(changes.count(), 3);
    EXPECT_TRUE(onoff("onoff2").isChecked()) << "its volume stays";
    EXPECT_EQ(onoff("onoff5").accessibleDescription(), QStringLiteral("Solo"));
    EXPECT_EQ(onoff("onoff2").toolTip(), QStringLiteral("Switch on/off channel 3\nLead\nCtrl+click: solo"));
    music.sounding = 0b101;
    window->showSounding();
    EXPECT_TRUE(onoff("onoff0").sounds() && onoff("onoff2").sounds() && !onoff("onoff5").sounds());
}

TEST_F(ChannelsFixture, ThePickerGivesAnInstrument) {
    click("ins2");
    EXPECT_FALSE(picker());
    QTest::mouseDClick(window->windowHandle(), Qt::LeftButton, {}, ins("ins2").geometry().center());
    ASSERT_TRUE(picker() && QTest::qWaitForWindowActive(picker()));
    EXPECT_EQ(list().currentItem()->text(), QStringLiteral("Electric Grand"));
    clickAt(*picker(), rowAt(21));
    EXPECT_EQ(ins("ins2").text(), QStringLiteral("Accoridan"));
    EXPECT_EQ(picker()->windowTitle(), QStringLiteral("Channel 3: Accoridan – Melvane"));
    picker()->SelectInstrument(QStringLiteral("accoridan"));
    EXPECT_EQ(list().currentRow(), 21);
    QTest::mouseDClick(picker()->windowHandle(), Qt::LeftButton, {}, rowAt(128));
    EXPECT_FALSE(picker()->isVisible());
    EXPECT_EQ(sent().back(), "sendPatch 0 1 2 128 0 0");

    const std::pair<Qt::Key, Qt::Key> keys[] = {{Qt::Key_Return, Qt::Key_Enter}, {Qt::Key_F2, Qt::Key_Escape}};
    for (const auto& [opener, closer] : keys) {
        window->activateWindow();
        ins("ins15").setFocus();
        QTest::keyClick(window->windowHandle(), opener);
        ASSERT_TRUE(QTest::qWaitForWindowActive(picker()));
        EXPECT_TRUE(sent().empty()) << "looking changes nothing";
        QTest::keyClicks(&list(), QStringLiteral("Ocar"));
        EXPECT_EQ(sent().back(), "sendPatch 0 1 15 79 0 0");
        QTest::keyClick(picker()->windowHandle(), Qt::Key_Down);
        EXPECT_EQ(sent(), Words{"sendPatch 0 1 15 80 0 0"});
        EXPECT_EQ(ins("ins15").text(), QStringLiteral("Lead 1 (square)"));
        QTest::keyClick(picker()->windowHandle(), closer);
        EXPECT_FALSE(picker()->isVisible());
        EXPECT_EQ(sent(), closer == Qt::Key_Escape ? Words{} : Words{"sendPatch 0 1 15 80 0 0"});
        QTest::qWait(QApplication::keyboardInputInterval() + 50);
    }
}

TEST(Menus, TellWhatWasChosenButNoFilesDuringARun) {
    modLang language;
    language.InitLanguage(FakeFileNames(), "en");
    MidiState state;
    QWidget owner;
    frmMenu menu(state, language, &owner);
    owner.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&owner));
    language.SetLanguage("pl");
    menu.SetMenuLanguage();
    EXPECT_EQ(menu.mnuMidi()->actions().at(2)->text().remove(u'&'), QStringLiteral("Zamknij"));
    for (const QMenu* each : {menu.mnuKar(), menu.mnuMidi()}) {
        std::set<QChar> letters;
        for (const QAction* action : each->actions())
            EXPECT_TRUE(action->isSeparator() ||
                        letters.insert(action->text().section(u'&', 1).at(0).toLower()).second);
    }

    std::string chosen;
    QObject::connect(&menu, &frmMenu::browse, [&](int index) { chosen += std::to_string(index); });
    for (const auto& [signal, letter] : {std::pair(&frmMenu::help, 'h'),
                                         {&frmMenu::closeWanted, 'c'},
                                         {&frmMenu::about, 'a'},
                                         {&frmMenu::mix, 'm'},
                                         {&frmMenu::stop, 's'},
                                         {&frmMenu::listen, 'l'},
                                         {&frmMenu::restoreMidi, 'r'}})
        QObject::connect(&menu, signal, [&, letter = letter] { chosen += letter; });
    const auto chooseAll = [&] {
        for (QMenu* each : {menu.mnuKar(), menu.mnuMidi()}) {
            each->popup({});
            for (QAction* action : each->actions()) action->trigger();
            each->close();
        }
        for (const Qt::Key key : {Qt::Key_M, Qt::Key_Period}) QTest::keyClick(&owner, key, Qt::ControlModifier);
        QTest::keyClick(&owner, Qt::Key_2, Qt::ControlModifier);
        return std::exchange(chosen, {});
    };
    EXPECT_EQ(chooseAll(), "012mhcam1") << "no song, no mix";
    state.midiLoaded = -1;
    menu.setRunning(true);
    menu.setCanMix(false);
    menu.setCanStop(true);
    menu.setCanListen(true);
    EXPECT_EQ(chooseAll(), "slhcars");
    state.midiLoaded = 0;
    EXPECT_EQ(chooseAll(), "slhcas");
}

}  // namespace
}  // namespace melvane
