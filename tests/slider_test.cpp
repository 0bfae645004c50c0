// A slider by mouse, wheel, keyboard and assistive program.
#include <QAccessible>
#include <QSignalSpy>

#include "tests/window_events.h"

namespace melvane {
namespace {

using namespace melvane::test;

struct SliderFixture : testing::Test {
    QWidget window;
    Slider up{&window,
              {Qt::Vertical, {50, 110, 80}, 40, {20, 10}, 110},
              Accent::song,
              {[](int top) { return 110.0 - top; }, [](double value) { return QStringLiteral("<%1>").arg(value); }}};
    Slider across{&window,
                  {Qt::Horizontal, {100, 160, 130}, 30, {10, 20}, 130},
                  Accent::voice,
                  {[](int left) { return left / 10.0; }, [](double value) { return QString::number(value); }}};
    QSignalSpy moved{&up, &Slider::moved};
    QSignalSpy resets{&up, &Slider::resetWanted};

    SliderFixture() {
        window.resize(300, 200);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    std::string bubble() {
        for (const auto* label : window.findChildren<QLabel*>(QStringLiteral("bubble")))
            if (label->isVisible()) return label->text().toStdString();
        return "";
    }
};

TEST_F(SliderFixture, FollowsTheMouseFromWhereItWasTaken) {
    EXPECT_EQ(up.geometry().adjusted(2, 2, -2, -2), QRect(30, 50, 20, 70));
    EXPECT_EQ(across.geometry().adjusted(2, 2, -2, -2), QRect(100, 20, 70, 20));
    for (const auto& [to, reached] : {std::pair(81, 81), {50, 50}, {49, 50}, {200, 110}, {111, 110}, {-90, 50}}) {
        const double before = up.position();
        moved.clear();
        drag(up, to);
        EXPECT_EQ(up.position(), reached);
        EXPECT_EQ(moved.isEmpty(), before == reached) << to;
        if (!moved.isEmpty()) {
            EXPECT_EQ(moved.last().first().toInt(), reached);
        }
        drag(across, to + 50);
        EXPECT_EQ(across.position(), reached + 50);
    }
    up.setPosition(90);
    moved.clear();
    drag(up, 60, Qt::RightButton);
    up.setEnabled(false);
    drag(up, 60);
    EXPECT_EQ(up.position(), 90);
    up.setEnabled(true);
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, QPoint(40, 95));
    EXPECT_EQ(bubble(), "<20>");
    QTest::mouseMove(window.windowHandle(), QPoint(250, 92));
    EXPECT_EQ(bubble(), "<23>");
    up.setEnabled(false);
    QTest::mouseMove(window.windowHandle(), QPoint(40, 60));
    up.setEnabled(true);
    QTest::mouseMove(window.windowHandle(), QPoint(40, 61));
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, QPoint(40, 61));
    EXPECT_EQ(up.position(), 87) << "locked while dragged";
    EXPECT_EQ(bubble(), "");
    EXPECT_EQ(moved.count(), 1);
}

TEST_F(SliderFixture, KeysAndWheelGoUpAndToTheRight) {
    const struct {
        int key;
        int top;
        int left;
    } cases[] = {{Qt::Key_Up, 79, 131},     {Qt::Key_Right, 78, 132},    {Qt::Key_Down, 79, 131},
                 {Qt::Key_Left, 80, 130},   {Qt::Key_PageUp, 70, 140},   {Qt::Key_PageDown, 80, 130},
                 {Qt::Key_End, 50, 160},    {Qt::Key_PageUp, 50, 160},   {Qt::Key_Home, 110, 100},
                 {Qt::Key_Down, 110, 100},  {Qt::Key_Delete, 80, 130},   {Qt::Key_A, 80, 130},
                 {Qt::Key_PageUp, 70, 140}, {Qt::Key_Backspace, 80, 130}};
    for (const auto& [key, top, left] : cases) {
        QTest::keyClick(&up, static_cast<Qt::Key>(key));
        QTest::keyClick(&across, static_cast<Qt::Key>(key));
        EXPECT_EQ(up.position(), top) << key;
        EXPECT_EQ(across.position(), left) << key;
    }
    EXPECT_EQ(resets.count(), 2);
    across.hide();
    for (const auto& [angle, top] : {std::pair(120, 79), {-240, 81}, {60, 81}, {60, 80}, {-12000, 110}}) {
        turnWheel(up, angle);
        EXPECT_EQ(up.position(), top) << angle;
    }
    EXPECT_EQ(bubble(), "<0>");
}

TEST_F(SliderFixture, ADoubleClickAsksForTheNeutralValueEvenWhereItStandsAlready) {
    up.setPosition(64);
    doubleClick(up);
    EXPECT_EQ(up.position(), 80);
    doubleClick(up);
    EXPECT_EQ(resets.count(), 2);
    EXPECT_TRUE(moved.isEmpty());
}

TEST_F(SliderFixture, AssistivePrograms) {
    QAccessibleInterface* access = QAccessible::queryAccessibleInterface(&up);
    ASSERT_TRUE(access && access->valueInterface());
    EXPECT_EQ(access->text(QAccessible::Value), QStringLiteral("<30>"));
    QAccessibleValueInterface& value = *access->valueInterface();
    EXPECT_EQ(value.minimumStepSize(), 1.0);
    for (const auto& [wanted, top] : {std::pair(12.4, 98), {-5.0, 110}, {1e9, 50}}) {
        value.setCurrentValue(wanted);
        EXPECT_EQ(up.position(), top);
    }
    EXPECT_EQ(moved.count(), 3);
}

}  // namespace
}  // namespace melvane
