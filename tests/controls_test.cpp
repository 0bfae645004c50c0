// Buttons, outlines, meters and the overview, by mouse, keyboard and assistive program.
#include <QAccessible>
#include <QSignalSpy>
#include <limits>

#include "controls/Ed_Button.h"
#include "controls/frameless_window.h"
#include "controls/level_meter.h"
#include "controls/navButton.h"
#include "controls/overview_bar.h"
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

TEST(Overview, ShowsTheSongAndHowMuchOfItIsMixed) {
    QWidget window;
    OverviewBar bar(&window, {10, 10, 176, 22});
    bar.setProgress(88);
    EXPECT_EQ(lookOf(bar).pixelColor(87, 11), QColor(skin::kSong));
    EXPECT_EQ(lookOf(bar).pixelColor(88, 11), QColor(skin::kInset));
    bar.setOverview({0.0F, 1.0F, std::numeric_limits<float>::quiet_NaN(), 9.0F});
    bar.setScanned(0.5);
    const QImage look = lookOf(bar);
    EXPECT_EQ(look.pixelColor(20, 11), QColor(skin::kSong));
    EXPECT_NE(look.pixelColor(20, 4), QColor(skin::kSong));
    EXPECT_EQ(look.pixelColor(60, 4), QColor(skin::kSong));
    EXPECT_EQ(look.pixelColor(88, 1), QColor(skin::kMuted));
    EXPECT_EQ(look.pixelColor(150, 4), QColor(skin::kFaint));
    bar.setProgress(1000);
    EXPECT_EQ(bar.value(), 176);
}

}  // namespace
}  // namespace melvane
