// The windows and menus of a MIDI song, driven by mouse and keyboard.
#include <QMenu>
#include <QSignalSpy>
#include <set>

#include "midi/frmChann.h"
#include "midi/frmMenu.h"
#include "tests/fake_music.h"
#include "tests/fake_platform.h"
#include "tests/temp_dir.h"
#include "tests/window_events.h"

namespace melvane {
namespace {

using namespace melvane::test;
using Words = std::vector<std::string>;

// Each channel with its own number as its instrument.
std::string songWith(std::initializer_list<int> channels) {
    std::string messages;
    for (const int c : channels)
        for (const int byte : {0x90 + c, 0xC0 + c, c, 0xB0 + c, 7, 90}) messages += static_cast<char>(byte);
    return songOf(messages);
}

struct ChannelsFixture : testing::Test {
    TempDir dir;
    FakeMusic music;
    FakeSystemMixer systemMixer;
    FakeDialogs dialogs;
    FakeFileNames names;
    RunState run;
    Settings settings;
    MidiBackground midi{music, systemMixer, run, settings, names, dialogs, [] {}};
    const MidiState& state = midi.state();
    modLang language;
    QWidget owner;
    frmChann* window = nullptr;

    ChannelsFixture() {
        language.InitLanguage("", "en");
        openSong(songWith({0, 2, 3, 5, 8, 15}));
        window = new frmChann(midi, settings, language, dialogs, &owner);
        midi.updateChannels = [this] { window->updateChannels(); };
        window->open();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window));
    }
    void openSong(const std::string& bytes) {
        std::string song = dir.write("song.mid", bytes);
        midi.OpenMidi(song);
        music.calls.clear();
    }
    Slider& slider(const char* name) { return find(*window, name); }
    ChannelToggle& onoff(const char* name) { return find<ChannelToggle>(*window, name); }
    InstrumentLabel& ins(const char* name) { return find<InstrumentLabel>(*window, name); }
    frmIns* picker() { return window->findChild<frmIns*>(); }
    QListWidget& list() { return find<QListWidget>(*picker(), "List3"); }
    void click(const char* name) { clickAt(*window, find<QWidget>(*window, name).geometry().center()); }
    QPoint rowAt(int row) {
        list().scrollToItem(list().item(row));
        return list().viewport()->mapTo(picker(), list().visualItemRect(list().item(row)).center());
    }
    // What was sent since the last call.
    Words sent() { return std::exchange(music.calls, {}); }
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
    const auto look = [this] { return slider("vol0").grab().toImage(); };
    const QImage muted = look();
    drag(slider("vol0"), 90);
    EXPECT_FALSE(onoff("onoff0").isChecked()) << "a touch does not switch it on";
    doubleClick(slider("vol0"));
    drag(slider("vol0"), 90);
    EXPECT_EQ(sent(), Words{"sendMidi 10 1 0 176 7 0"});
    click("onoff0");
    EXPECT_EQ(sent(), Words{"sendMidi 10 1 0 176 7 64"});
    drag(slider("vol0"), 78);
    EXPECT_NE(look(), muted) << "which is dimmed";
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

TEST_F(ChannelsFixture, IsTidyAndNamedInBothLanguages) {
    EXPECT_EQ(window->size(), QSize(460, frmChann::kHeight));
    const std::string song = songWith({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    const char* texts[] = {
        "Channel 4 volume, Channel 16 balance, Switch on/off channel 1, Instrument of channel 9: Celesta",
        "Głośność kanału 4, Balans kanału 16, Wł/wył kanał 1, Instrument kanału 9: Celesta"};
    for (const std::size_t polish : {0U, 1U}) {
        language.SetLanguage(polish ? "pl" : "en");
        window->GetChannelsLanguage();
        for (const bool loaded : {false, true}) {
            loaded ? openSong(song) : midi.close();
            expectTidy(*window);
        }
        QStringList found;
        for (const char* id : {"vol3", "bl15", "onoff0", "ins8"}) {
            found << find<QWidget>(*window, id).accessibleName();
            EXPECT_EQ(found.back(), find<QWidget>(*window, id).toolTip().section(u'\n', 0, 0));
        }
        EXPECT_EQ(found.join(QStringLiteral(", ")).toStdString(), texts[polish]);
    }
}

TEST(Menus, TellWhatWasChosenButNoFilesDuringARun) {
    modLang language;
    language.InitLanguage("", "en");
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
    const auto note = [&](auto signal, char letter) {
        QObject::connect(&menu, signal, [&chosen, letter] { chosen += letter; });
    };
    QObject::connect(&menu, &frmMenu::browse, [&](int index) { chosen += std::to_string(index); });
    note(&frmMenu::help, 'h');
    note(&frmMenu::closeWanted, 'c');
    note(&frmMenu::mix, 'm');
    note(&frmMenu::stop, 's');
    note(&frmMenu::listen, 'l');
    note(&frmMenu::restoreMidi, 'r');
    const auto chooseAll = [&] {
        for (QMenu* each : {menu.mnuKar(), menu.mnuMidi()}) {
            each->popup({});
            for (QAction* action : each->actions()) action->trigger();
            each->close();
        }
        for (const Qt::Key key : {Qt::Key_M, Qt::Key_Period}) QTest::keyClick(&owner, key, Qt::ControlModifier);
        QTest::keyClick(&owner, Qt::Key_O, Qt::ControlModifier | Qt::ShiftModifier);
        return std::exchange(chosen, {});
    };
    EXPECT_EQ(chooseAll(), "012mhcm1") << "no song, no mix";
    state.midiLoaded = -1;
    menu.setRunning(true);
    menu.setCanStop(true);
    menu.setCanListen(true);
    EXPECT_EQ(chooseAll(), "slhcrs");
    state.midiLoaded = 0;
    EXPECT_EQ(chooseAll(), "slhcs");
}

}  // namespace
}  // namespace melvane
