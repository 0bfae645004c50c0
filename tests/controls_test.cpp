// Sliders, buttons, outlines and meters, by mouse, keyboard and assistive program.
#include <QAccessible>
#include <QSignalSpy>
#include <limits>

#include "controls/Ed_Button.h"
#include "controls/frameless_window.h"
#include "controls/level_meter.h"
#include "controls/navButton.h"
#include "controls/window_region.h"
#include "tests/window_events.h"

namespace melvane {
namespace {

using namespace melvane::test;

const QColor kRest(1, 200, 3);
const QColor kLit(200, 2, 3);
const QColor kOff(4, 5, 200);
constexpr int kTick = 40;
constexpr int kNavTick = 100;

QPicture filled(const QColor& colour) {
    QPicture picture;
    QPainter(&picture).fillRect(0, 0, 100, 100, colour);
    return picture;
}

// As it looks with one picture element per pixel, whatever the scale.
QImage lookOf(QWidget& widget) {
    QImage image = widget.grab().toImage();
    image.setDevicePixelRatio(1);
    return image.scaled(widget.size());
}

QColor faceOf(QWidget& button) {
    return lookOf(button).pixelColor(5, button.height() / 2);
}

TEST(Region, TheOutlinesAreThoseOfTheResources) {
    const QRegion main = RegionFromResource(kMainRegion);
    EXPECT_EQ(main.rectCount(), 12);
    // The taller ones: the same upper and lower part, further apart.
    for (const auto& [low, tall, width, top, more] :
         {std::tuple(kMainRegion, kWideRegion, 460, 196, 14), {kPlayerRegion, kStartRegion, 274, 146, 28}}) {
        const QRegion shape = RegionFromResource(low);
        EXPECT_EQ(shape.boundingRect(), QRect(0, 0, width, top));
        const QRegion upper = shape & QRect(0, 0, width, 50);
        const QRegion lower = (shape - upper).translated(0, more);
        EXPECT_EQ(RegionFromResource(tall), upper + lower + QRect(0, 50, width, more));
    }
}

TEST(Region, DamagedOrMissingResourcesAreNone) {
    EXPECT_TRUE(RegionFromResource(100).isEmpty());
    QFile file(QStringLiteral(":/RGN/103"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray whole = file.readAll();
    EXPECT_EQ(whole.size(), 224);
    for (qsizetype size = 0; size < whole.size(); ++size) EXPECT_TRUE(regionFromData(whole.left(size)).isEmpty());
    EXPECT_TRUE(regionFromData(whole + QByteArray(16, '\0')).isEmpty());
    for (qsizetype field = 0; field < 48; field += 4)  // of the header and of the first rectangle
        EXPECT_TRUE(regionFromData(QByteArray(whole).replace(field, 4, "\xFF\xFF\xFF\x7F")).isEmpty()) << field;
}

TEST(Region, AWindowHasItsOutlineOrIsARectangle) {
    FramelessWindow owner(kMainRegion, 21);
    FramelessWindow window(kStartRegion, 21, &owner);
    EXPECT_EQ(window.mask(), RegionFromResource(kStartRegion));
    EXPECT_EQ(FramelessWindow(1, 21).size(), QSize(460, 196));
    owner.show();
    window.show();
    QTest::keyClick(&owner, Qt::Key_Escape);
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_TRUE(owner.isVisible());
    EXPECT_FALSE(window.isVisible());
}

struct ButtonFixture : testing::Test {
    QWidget window;
    Ed_Button button{&window};
    Ed_Button second{&window};
    QSignalSpy clicks{&button, &Ed_Button::Click};

    ButtonFixture() {
        window.setGeometry(50, 50, 300, 100);
        button.setGeometry(10, 10, 80, 24);
        second.setGeometry(110, 10, 80, 24);
        button.setNormal(filled(kRest));
        button.setHot(filled(kLit));
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        second.setFocus();
        moveTo({200, 80});
    }
    void moveTo(const QPoint& point) {
        QCursor::setPos(window.mapToGlobal(point));
        QCoreApplication::processEvents();
        // The platform without a screen scales the place wrongly.
        QWidget* under = window.childAt(point);
        if (!under || !under->isEnabled()) return;
        QMouseEvent move(QEvent::MouseMove, under->mapFrom(&window, QPointF(point)), window.mapToGlobal(QPointF(point)),
                         Qt::NoButton, Qt::NoButton, {});
        QApplication::sendEvent(under, &move);
    }
};

TEST_F(ButtonFixture, LightsUpUnderTheMouse) {
    EXPECT_EQ(faceOf(button), kRest);
    QSignalSpy moves(&button, &Ed_Button::MouseMove);
    moveTo({20, 20});
    EXPECT_EQ(faceOf(button), kLit);
    ASSERT_FALSE(moves.isEmpty());
    EXPECT_EQ(moves.last(), QVariantList({0, 0, 10.0F, 10.0F}));
    QTest::qWait(3 * kTick);
    EXPECT_TRUE(button.isHot());
    moveTo({130, 20});
    QTest::qWait(2 * kTick);
    EXPECT_EQ(faceOf(button), kRest);
    EXPECT_TRUE(second.isHot());

    moveTo({20, 20});
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, QPoint(20, 20));
    EXPECT_FALSE(button.isHot());
    QTest::mouseMove(window.windowHandle(), QPoint(22, 22));
    EXPECT_FALSE(button.isHot()) << "a button is held";
    EXPECT_EQ(clicks.count(), 0);
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, QPoint(22, 22));
    EXPECT_EQ(clicks.count(), 1);
    moveTo({21, 21});
    EXPECT_TRUE(button.isHot());

    button.setEnabled(false);
    EXPECT_EQ(faceOf(button), kRest) << "there is no picture of its own";
    moveTo({25, 25});
    clickAt(window, {25, 25});
    EXPECT_EQ(faceOf(button), kRest);
    EXPECT_EQ(clicks.count(), 1);
    button.setDis(filled(kOff));
    EXPECT_EQ(faceOf(button), kOff);
}

TEST_F(ButtonFixture, TheCaptionEndsInTheMiddle) {
    button.setCaption(QStringLiteral("Hum"));
    EXPECT_NEAR(button.captionPlace().right(), 39, 2);
    EXPECT_EQ(button.captionPlace().top(), qRound(12 - button.captionPlace().height() / 2.0));
    setButtonText(&second, QStringLiteral("Open"), QStringLiteral("Open a file"));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&second)->text(QAccessible::Name), QStringLiteral("Open a file"));
}

TEST_F(ButtonFixture, WorksFromTheKeyboard) {
    button.setFocus();
    QTest::keyClick(&button, Qt::Key_Right);
    EXPECT_TRUE(second.hasFocus());
    QTest::keyClick(&second, Qt::Key_Left);
    EXPECT_TRUE(button.hasFocus());
    for (const int key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) QTest::keyClick(&button, Qt::Key(key));
    EXPECT_EQ(clicks.count(), 3);
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, {}, QString(), true);
    QApplication::sendEvent(&button, &held);
    EXPECT_EQ(clicks.count(), 3);
}

TEST_F(ButtonFixture, NavigationButtonsCarryTheirPictures) {
    auto* nav = addNavButton(&window, "nav", {20, 60}, 2, [] {});
    nav->show();
    QSignalSpy pressed(nav, &navButton::Click);
    for (const auto& [type, rest, hot] : {std::tuple(2, 5, 6), {1, 3, 4}, {0, 1, 2}, {7, 1, 1}, {-1, 1, 1}}) {
        nav->setButtonType(static_cast<short>(type));
        EXPECT_EQ(nav->shownImage(), rest);
        moveTo({30, 70});
        EXPECT_EQ(nav->shownImage(), hot) << type;
        moveTo({200, 80});
        QTest::qWait(2 * kNavTick);
        EXPECT_EQ(nav->shownImage(), rest) << type;
    }
    clickAt(window, {30, 70});
    QTest::keyClick(nav, Qt::Key_Return);
    EXPECT_EQ(pressed.count(), 2);
}

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

TEST(Meter, RisesAtOnceFallsSlowlyAndHolds) {
    PeakFall fall;
    fall.take(0.5F);
    EXPECT_NEAR(fall.level(), -6.02, 0.01);
    fall.take(0.1F);
    fall.pass(1);
    EXPECT_NEAR(fall.level(), -26.02, 0.01);
    EXPECT_NEAR(fall.held(), -6.02, 0.01);
    fall.pass(0.6);
    EXPECT_EQ(fall.held(), PeakFall::kFloor);
    for (const float silent : {0.0F, -1.0F, 0.001F, std::numeric_limits<float>::quiet_NaN()}) {
        PeakFall still;
        still.take(silent);
        EXPECT_TRUE(still.atRest());
    }
    fall.take(std::numeric_limits<float>::infinity());
    EXPECT_EQ(fall.level(), 0);
    fall.pass(2.9);
    EXPECT_TRUE(fall.clipped());
    fall.pass(0.2);
    EXPECT_TRUE(fall.atRest());
}

TEST(Meter, ShowsBothSidesAndRests) {
    QWidget window;
    LevelMeter meter(&window, {10, 10, 101, 18}, Qt::Horizontal, Accent::voice);
    window.show();
    EXPECT_FALSE(meter.isMoving());
    meter.setPeaks(0.25F, 1.5F);  // a quarter: three quarters of the 96 pixels before the lamp
    const QImage look = lookOf(meter);
    EXPECT_EQ(look.pixelColor(70, 3), QColor(skin::kVoice));
    EXPECT_EQ(look.pixelColor(75, 3), QColor(skin::kInset));
    EXPECT_EQ(look.pixelColor(90, 15), QColor(skin::kVoice));
    EXPECT_EQ(look.pixelColor(99, 9), QColor(skin::kRecording));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&meter)->text(QAccessible::Value), QStringLiteral("0 dB"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return meter.level() < -4; }));
    meter.clear();
    EXPECT_FALSE(meter.isMoving());
    meter.setPeaks(0.0045F, 0);  // just above the floor
    EXPECT_TRUE(QTest::qWaitFor([&] { return !meter.isMoving(); }));
}

}  // namespace
}  // namespace melvane
