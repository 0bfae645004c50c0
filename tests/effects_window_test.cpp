// The effects window, driven by mouse and keyboard.
#include <QListWidget>
#include <QPushButton>

#include "effects/frmEff.h"
#include "tests/silent_parts.h"
#include "tests/window_events.h"

namespace melvane {
namespace {

using namespace melvane::test;

struct EffectsFixture : SilentParts {
    RunState run;
    Settings settings;
    mod_Mixer midiLines{systemMixer, settings, dialogs};
    EffectChain chain{library, run, settings, midiLines};
    QWidget owner;
    frmEff* window = new frmEff(chain, settings, language, dialogs, &owner);

    EffectsFixture() {
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window));
    }
    Slider& slider(const std::string& name) { return find(*window, name.c_str()); }
    QListWidget& list() { return find<QListWidget>(*window, "pList"); }
    std::string preset() { return find<QPushButton>(*window, "labPreset").text().toStdString(); }
    std::string text(const char* name) { return find<QLabel>(*window, name).text().toStdString(); }
    QPoint rowAt(int row) {
        const QPoint inList = list().visualItemRect(list().item(row)).center();
        return list().viewport()->mapTo(window, inList);
    }
    // The colour of a bar at its free end, beyond the knob.
    QColor bar(const char* name) {
        const QImage image = find<QWidget>(*window, name).grab().toImage();
        return image.pixelColor(image.width() / 2, image.height() - 1);
    }
};

TEST_F(EffectsFixture, KnobsAreStoredAndInARunHeardTooUntilADoubleClickTakesThemBack) {
    const auto tone = [this](std::size_t i) { return [this, i] { return int{settings.toneValue[i]}; }; };
    const auto balance = [this](std::size_t i) { return [this, i] { return settings.balanceValue[i]; }; };
    const auto level = [this](std::size_t i) { return [this, i] { return int{settings.EffectState[i].level}; }; };
    const struct {
        const char* name;
        int to, value, neutral;
        std::function<int()> stored;
    } knobs[] = {
        {"eq_song0", 0, 0, 50, tone(0)},  {"eq_song1", 73, 5, 50, tone(1)}, {"eq_song2", 500, 100, 50, tone(2)},
        {"eq_song3", 71, 2, 50, tone(3)}, {"bal0", 281, 12, 0, balance(0)}, {"bal1", 500, 103, 0, balance(1)},
        {"ef1", 151, 54, 0, level(0)},    {"ef2", 100, 3, 0, level(1)},     {"ef3", 172, 75, 0, level(2)},
        {"ef4", 500, 100, 0, level(3)},
    };
    const auto heard = [this](const std::function<void()>& action) {
        const auto effects = library.effects;
        library.calls.clear();
        action();
        return library.effects != effects || !library.calls.empty();
    };
    const auto moveAll = [&](bool inARun) {
        for (const auto& [name, to, value, neutral, stored] : knobs) {
            EXPECT_EQ(heard([&] { drag(slider(name), to); }), inARun) << name;
            EXPECT_EQ(stored(), value) << name;
        }
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_EQ(settings.EffectState[i].parameter, (std::array{10, 1, 75, 10}[i]));
        for (const auto& [name, to, value, neutral, stored] : knobs) {
            const bool off = std::string_view(name).starts_with("ef");
            EXPECT_EQ(heard([&] { doubleClick(slider(name)); }), inARun && !off) << name;
            EXPECT_EQ(stored(), neutral) << name;
        }
    };
    run.backgroundChannel = 100;
    run.vocalChannel = 101;
    chain.PrepareEffects();
    moveAll(false);
    run.isMixing = true;
    moveAll(true);
    drag(slider("bal1"), 418);
    EXPECT_EQ(library.calls.back(), "BASS_ChannelSetAttributes 101 44100 100 100");

    EXPECT_FALSE(heard([&] { QTest::keyClick(&slider("ef1"), Qt::Key_End); })) << "it stays off";
    EXPECT_EQ(settings.EffectState[0].level, 100) << "up is more";
    settings.EffectState[0].enabled = -1;
    EXPECT_TRUE(heard([&] { turnWheel(slider("ef1"), -1200); })) << "what is on follows";
    settings.EffectState[0].enabled = 0;
    EXPECT_EQ(find<QWidget>(*window, "efo5").toolTip(), QStringLiteral("This switch is not in use."));
    drag(slider("ef1"), 500);  // at its lowest it is as silent as off
    for (std::size_t i = 0; i < 5; ++i) {
        const std::string name = "efo" + std::to_string(i + 1);
        click(*window, name.c_str());  // on, as it is since its knob was moved
        EXPECT_EQ(settings.EffectState[i].enabled, -1) << name;
        for (const auto& [key, flag] : {std::pair(Qt::Key_Space, 0), {Qt::Key_Return, -1}, {Qt::Key_Space, 0}}) {
            EXPECT_EQ(heard([&] { QTest::keyClick(window->windowHandle(), key); }), i < 4) << name;
            EXPECT_EQ(settings.EffectState[i].enabled, flag) << name;
        }
    }

    midiLines.OpenMixer();
    run.isMidiBackground = true;
    EXPECT_FALSE(heard([&] {
        for (const char* name : {"eq_song0", "eq_song1", "bal0"}) drag(slider(name), 0);
    })) << "the song is the synthesiser's";
    EXPECT_TRUE(heard([&] { drag(slider("eq_song2"), 0); }));
    const std::vector<std::uint32_t> left{32767, 0};
    EXPECT_EQ(systemMixer.values[MIXERCONTROL_CONTROLTYPE_BASS][0], 65535U);
    EXPECT_EQ(systemMixer.values[MIXERCONTROL_CONTROLTYPE_TREBLE][0], 65535U);
    EXPECT_EQ(systemMixer.values[MIXERCONTROL_CONTROLTYPE_VOLUME], left);
}

TEST_F(EffectsFixture, BalancesShowTheirDistanceAsANumberAndInRed) {
    for (const auto& [knob, to, readout, red] : {std::tuple("bal0", 278, "0.3", 8),
                                                 {"bal0", 246, "-9.7", 248},
                                                 {"bal0", 277, "0.0", 0},
                                                 {"bal1", 419, "10.3", 255}}) {
        drag(slider(knob), to);
        const std::string number(1, knob[3]);
        EXPECT_EQ(text(("par" + number).c_str()), readout);
        EXPECT_EQ(bar(("bbg" + number).c_str()), QColor(red, 0, 0)) << knob << " " << to;
    }
}

TEST_F(EffectsFixture, SetEffectsPlacesEverythingAndKeepsItOnTheTracks) {
    const auto positions = [this] {
        std::vector<int> all;
        for (const char* name :
             {"eq_song0", "eq_song1", "eq_song2", "eq_song3", "bal0", "bal1", "ef1", "ef2", "ef3", "ef4"})
            all.push_back(static_cast<int>(slider(name).position()));
        return all;
    };
    EXPECT_EQ(positions(), (std::vector{100, 100, 100, 100, 277, 386, 97, 97, 97, 97}));
    settings.toneValue = {0, 100, 49, 1};
    settings.balanceValue = {-50, 103};
    for (std::size_t i = 0; i < 5; ++i) settings.EffectState[i] = {-1, 0, static_cast<std::int16_t>(i * 30)};
    settings.currentPreset = 12;
    window->SetEffects();
    EXPECT_EQ(positions(), (std::vector{70, 130, 99, 71, 261, 419, 97, 127, 157, 187}));
    EXPECT_EQ(text("par0") + " " + text("par1") + " " + preset(), "-5.0 10.3 SOFT ROCK");
    for (const auto* flip : window->findChildren<Switch*>()) EXPECT_TRUE(flip->isChecked());

    settings.toneValue = {-32768, 32767, 101, -1};
    settings.balanceValue = {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()};
    for (EffectSwitch& effect : settings.EffectState) effect.level = -32768;
    settings.EffectState[3].level = 32767;
    settings.currentPreset = -1;
    window->SetEffects();
    EXPECT_EQ(positions(), (std::vector{70, 130, 130, 70, 245, 419, 97, 97, 97, 197}));
    EXPECT_EQ(preset(), "");
}

TEST_F(EffectsFixture, PresetsByMouse) {
    EXPECT_EQ(preset(), "NORMAL");
    EXPECT_FALSE(list().isVisible());
    EXPECT_EQ(list().count(), 14);
    for (const auto& [row, name] : {std::pair(0, "NORMAL"), {6, "PARTY"}, {7, "POP"}, {13, "TECHNO!"}}) {
        click(*window, "labPreset");
        EXPECT_EQ(QWidget::mouseGrabber(), list().viewport());
        EXPECT_TRUE(list().rect().contains(list().visualItemRect(list().item(row)))) << "no scrolling";
        clickAt(*window, rowAt(row));
        EXPECT_FALSE(list().isVisible());
        EXPECT_EQ(settings.currentPreset, row);
        EXPECT_EQ(preset(), name);
    }
    const QRect area = list().geometry();
    for (const QPoint outside : {area.topLeft() - QPoint(1, 0), area.topLeft() - QPoint(0, 1),
                                 area.bottomRight() + QPoint(1, 0), area.bottomRight() + QPoint(0, 1)}) {
        click(*window, "labPreset");
        clickAt(*window, outside);
        EXPECT_FALSE(list().isVisible());
        EXPECT_EQ(QWidget::mouseGrabber(), nullptr);
        EXPECT_EQ(preset(), "TECHNO!");
        EXPECT_EQ(settings.currentPreset, 13);
    }
}

TEST_F(EffectsFixture, PresetsByKeyboard) {
    const auto key = [this](Qt::Key which) { QTest::keyClick(window->windowHandle(), which); };
    const auto press = [&](std::initializer_list<Qt::Key> keys) {
        for (const Qt::Key which : keys) key(which);
        return preset();
    };
    EXPECT_EQ(press({Qt::Key_Space, Qt::Key_Down, Qt::Key_Down, Qt::Key_Return}), "CLUB");
    EXPECT_EQ(press({Qt::Key_Return, Qt::Key_Right, Qt::Key_Space}), "ROCK");
    EXPECT_EQ(press({Qt::Key_Enter, Qt::Key_Up, Qt::Key_Escape}), "ROCK");
    EXPECT_FALSE(list().isVisible());
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(QApplication::focusWidget()->objectName(), QStringLiteral("labPreset"));
    EXPECT_EQ(press({Qt::Key_Space, Qt::Key_Up, Qt::Key_Tab}), "ROCK") << "the focus left the list";
    EXPECT_FALSE(list().isVisible());
    EXPECT_EQ(QWidget::mouseGrabber(), nullptr);
    EXPECT_EQ(settings.currentPreset, 9);
}

}  // namespace
}  // namespace melvane
