// Windows of every size: by keys and preferences, at once and at the next start, with the same values under the mouse.
#include <QComboBox>
#include <set>

#include "controls/Ed_Button.h"
#include "controls/frameless_window.h"
#include "controls/window_region.h"
#include "desktop/registry_file.h"
#include "settings/mnuHelp.h"
#include "settings/window_places.h"
#include "settings/window_zoom.h"
#include "tests/silent_parts.h"
#include "tests/window_events.h"

namespace melvane {
namespace {

using namespace melvane::test;

struct ZoomFixture : SilentParts {
    RegistryFile registry{dir / "registry.json"};
    SettingsStore store{registry};
    std::optional<WindowZoom> keeper;

    ZoomFixture() {
        setZoom(kLowestZoom);
        store.WriteSetting(kWindowsKey, "zoom", "100");
        keeper.emplace(store);
    }
    ~ZoomFixture() override {
        keeper.reset();
        setZoom(kLowestZoom);
    }
    std::string stored() { return store.ReadSetting(kWindowsKey, "zoom"); }
};

TEST_F(ZoomFixture, KeysChangeItAndTheNextStartKeepsIt) {
    FramelessWindow window(kStartRegion, 21);
    auto* list = new QComboBox(&window);
    list->addItems({QStringLiteral("0"), QStringLiteral("+"), QStringLiteral("-")});
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    list->setFocus();
    const struct {
        int key;
        Qt::KeyboardModifiers held;
        int percent;
    } steps[] = {{Qt::Key_Minus, Qt::ControlModifier, 100},
                 {Qt::Key_Plus, Qt::ControlModifier | Qt::ShiftModifier, 125},
                 {Qt::Key_Equal, Qt::ControlModifier, 150},
                 {Qt::Key_Plus, Qt::ControlModifier | Qt::KeypadModifier, 175},
                 {Qt::Key_Plus, Qt::ControlModifier | Qt::AltModifier, 175},
                 {Qt::Key_Plus, {}, 175},
                 {Qt::Key_Minus, Qt::ControlModifier | Qt::KeypadModifier, 150},
                 {Qt::Key_0, Qt::ControlModifier, 100}};
    for (const auto& [key, held, percent] : steps) {
        list->setCurrentIndex(0);
        const int before = zoom();
        QTest::keyClick(window.windowHandle(), Qt::Key(key), held);
        EXPECT_EQ(zoom(), percent) << key;
        EXPECT_EQ(stored(), std::to_string(percent));
        EXPECT_EQ(window.size(), zoomed(QSize(274, 174)));
        EXPECT_TRUE(list->currentIndex() == 0 || zoom() == before) << "taken by the list too";
    }
    for (int i = 0; i < 20; ++i) QTest::keyClick(&window, Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_EQ(stored(), "300");

    keeper.reset();
    setZoom(kLowestZoom);
    keeper.emplace(store);
    EXPECT_EQ(zoom(), 300);
    for (const auto& [text, percent] : {std::pair("160", 150), {"99999", 300}, {"7", 100}}) {
        store.WriteSetting(kWindowsKey, "zoom", text);
        keeper.emplace(store);
        EXPECT_EQ(zoom(), percent) << text;
    }
}

TEST_F(ZoomFixture, TheFirstStartTakesWhatSuitsTheScreen) {
    for (const auto& [width, height, percent] : {std::tuple(800, 600, 100),
                                                 {1366, 728, 100},
                                                 {1920, 1040, 150},
                                                 {2560, 1400, 200},
                                                 {3840, 2120, 300},
                                                 {3440, 1400, 200},
                                                 {1080, 1880, 100},
                                                 {10000, 10000, 300}})
        EXPECT_EQ(zoomFor({width, height}), percent) << width;
    for (const char* nothing : {"", "large", "-100"}) {
        setZoom(250);
        store.WriteSetting(kWindowsKey, "zoom", nothing);
        keeper.emplace(store);
        EXPECT_EQ(zoom(), zoomFor(QGuiApplication::primaryScreen()->availableGeometry().size()));
        EXPECT_EQ(stored(), nothing) << "nobody chose it";
    }
}

TEST_F(ZoomFixture, ThePreferencesChooseItAndFollowTheKeys) {
    Settings settings;
    const auto none = [] { return std::vector<std::string>(); };
    QWidget owner;
    auto* window = new mnuHelp(settings, language, shell, dialogs, none, none, &owner);
    window->show();
    find<QAbstractButton>(*window, "TABA1").click();
    auto& list = find<QComboBox>(*window, "zoom");
    EXPECT_EQ(list.accessibleName(), QStringLiteral("Size of the windows"));
    QTest::keyClick(&list, Qt::Key_End);
    EXPECT_EQ(stored(), "300");
    EXPECT_EQ(window->width(), 1380);
    EXPECT_EQ(find<QWidget>(*window, "language_pl").geometry(), QRect(834, 18, 360, 72));
    QTest::keyClick(&list, Qt::Key_Minus, Qt::ControlModifier);
    EXPECT_EQ(list.currentText(), QStringLiteral("275 %"));
    QTest::keyClick(&list, Qt::Key_0, Qt::ControlModifier);
    EXPECT_EQ(find<QWidget>(*window, "language_pl").geometry(), QRect(278, 6, 120, 24));
}

TEST_F(ZoomFixture, ADragStandsForTheSameValues) {
    FramelessWindow window(kWideRegion, 21);
    const SliderValue value{[](int at) { return double(at); }, [](double at) { return QString::number(at); }};
    Slider down(&window, {Qt::Vertical, {31, 117, 80}, 41, {28, 12}, 80}, Accent::song, value);
    Slider across(&window, {Qt::Horizontal, {103, 210, 130}, 153, {12, 18}, 130}, Accent::song, value);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    for (int percent = kLowestZoom; percent <= kHighestZoom; percent += kZoomStep) {
        setZoom(percent);
        for (const int to : {31, 32, 57, 90, 117}) {
            drag(down, to);
            EXPECT_EQ(down.position(), to) << percent;
            drag(across, to + 93);
            EXPECT_EQ(across.position(), std::max(to + 93, 103)) << percent;
        }
    }
}

TEST_F(ZoomFixture, OutlinesGrowSmoothly) {
    for (const auto id : {kMainRegion, kWideRegion, kPlayerRegion, kStartRegion}) {
        const QRegion units = RegionFromResource(id);
        FramelessWindow window(id, 21);
        for (const int percent : {125, 150, 200, 300}) {
            setZoom(percent);
            const QRegion mask = window.mask();
            EXPECT_EQ(mask.boundingRect(), zoomed(units.boundingRect()));
            const QRegion off = mask.xored(QTransform::fromScale(zoomFactor(), zoomFactor()).map(units));
            for (const QRect& part : off) EXPECT_LE(std::min(part.width(), part.height()), zoomed(1)) << percent;
            const QImage look = window.grab().toImage();
            EXPECT_EQ(look.pixelColor(0, 0).alpha(), 0);
            EXPECT_EQ(look.pixelColor(look.width() / 2, look.height() - 2).alpha(), 255);
        }
    }
}

TEST_F(ZoomFixture, WindowsKeepTheirArrangementAndStayOnTheScreen) {
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    FramelessWindow main(kPlayerRegion, 21);
    FramelessWindow owned(kPlayerRegion, 21, &main);
    const auto nearest = [&](int x, int y) {
        return QPoint(std::clamp(x, 0, std::max(0, screen.width() - main.width())),
                      std::clamp(y, 0, std::max(0, screen.height() - main.height())));
    };
    main.move(10, 20);
    owned.move(20, 20 + 154);
    main.show();
    setZoom(150);
    EXPECT_EQ(main.pos(), nearest(10, 20));
    EXPECT_EQ(owned.pos(), nearest(main.x() + 15, 20 + 231));
    main.move(screen.bottomRight());
    setZoom(300);
    EXPECT_EQ(main.pos(), nearest(screen.right(), screen.bottom()));
    setZoom(100);
    EXPECT_EQ(main.pos(), nearest(screen.right(), screen.bottom()));
    owned.show();
    main.move(0, 0);
    owned.move(0, main.height());
    for (const int percent : {300, 100}) setZoom(percent);
    EXPECT_EQ(owned.pos(), QPoint(0, main.height())) << "as it was, whatever the screen had no room for";
    owned.move(0, 20);
    setZoom(125);
    EXPECT_FALSE(owned.geometry().intersects(main.geometry()));
}

// Pictures are drawn anew for each size, never stretched: edges stay as sharp as they were.
TEST_F(ZoomFixture, PicturesAreDrawnAtTheResolutionOfTheScreen) {
    QWidget window;
    Ed_Button* button = addButton(&window, "b", {10, 10, 40, 28}, ButtonLook::song, Symbol::stop, [] {});
    const auto shades = [&] {
        const QImage look = button->grab().toImage().convertToFormat(QImage::Format_RGB32);
        std::set<QRgb> row;
        for (int x = 0; x < look.width(); ++x) row.insert(look.pixel(x, look.height() / 2));
        return row.size();
    };
    window.show();
    const auto plain = shades();
    setZoom(300);
    EXPECT_LE(shades(), plain + 2);
    EXPECT_EQ(zoomedStyle(QStringLiteral("a { font-size: 11px; border: 1px; border-radius: 7px; padding: 3px 10px }")),
              QStringLiteral("a { font-size: 33px; border: 3px; border-radius: 21px; padding: 9px 30px }"));
}

}  // namespace
}  // namespace melvane
