// Every window as assistive programs and the keyboard see it, and whether its texts can be read: in both languages, as
// it looks usually, larger and larger, and on a desktop with large fonts and high contrast.
#include <QAccessible>
#include <QAction>
#include <QButtonGroup>
#include <QMenu>
#include <QTextBrowser>
#include <set>

#include "tests/program_fixture.h"

namespace melvane {
namespace {

using namespace melvane::test;

const std::set<QAccessible::Role> kRoles = {
    QAccessible::Button,    QAccessible::CheckBox,   QAccessible::RadioButton,  QAccessible::Slider,
    QAccessible::ComboBox,  QAccessible::List,       QAccessible::ProgressBar,  QAccessible::PageTab,
    QAccessible::Indicator, QAccessible::ButtonMenu, QAccessible::EditableText, QAccessible::SpinBox};
constexpr int kTitleStrip = 28;  // units
// A slider's bubble, a balance's bar, the player's picture: they lie on others.
const QStringList kOverlays = {QStringLiteral("bub"), QStringLiteral("bbg"), QStringLiteral("Ima")};

// The controls that a user works with, in the order of the accessible tree, and what only shows a value.
void collect(QAccessibleInterface* node, QList<QWidget*>& controls) {
    for (int i = 0; i < node->childCount(); ++i) {
        QAccessibleInterface* child = node->child(i);
        auto* widget = child ? qobject_cast<QWidget*>(child->object()) : nullptr;
        if (!widget || widget->isWindow() || !widget->isVisible()) continue;
        if (widget->focusPolicy() != Qt::NoFocus || kRoles.contains(child->role()))
            controls << widget;
        else
            collect(child, controls);
    }
}

bool isText(const QWidget* control) {
    return qobject_cast<const QTextBrowser*>(control) != nullptr;
}

std::string idOf(const QWidget& control) {
    return control.window()->objectName().toStdString() + "." + control.objectName().toStdString() + " \"" +
           control.accessibleName().toStdString() + "\"";
}

// Buttons of which one is on are one stop for Tab; the arrow keys go on from there. Then their page, else the control.
const QWidget* stopOf(const QWidget* control) {
    const auto* button = qobject_cast<const QAbstractButton*>(control);
    const bool exclusive = button && button->isCheckable() && (button->autoExclusive() || button->group());
    return exclusive ? control->parentWidget() : control;
}

void expectNamed(const QList<QWidget*>& controls) {
    std::set<std::pair<int, QString>> names;
    for (QWidget* control : controls) {
        QAccessibleInterface* access = QAccessible::queryAccessibleInterface(control);
        EXPECT_TRUE(isText(control) || kRoles.contains(access->role()))
            << idOf(*control) << " has role " << access->role();
        const QString name = access->text(QAccessible::Name);
        EXPECT_FALSE(name.trimmed().isEmpty()) << idOf(*control);
        EXPECT_TRUE(names.emplace(access->role(), name).second) << idOf(*control) << " is not the only one";
        if (access->role() == QAccessible::CheckBox || access->role() == QAccessible::RadioButton) {
            EXPECT_TRUE(access->state().checkable) << idOf(*control);
        }
        if (access->role() != QAccessible::Slider && access->role() != QAccessible::ProgressBar) continue;
        const QAccessibleValueInterface* value = access->valueInterface();
        ASSERT_TRUE(value) << idOf(*control);
        const double lowest = value->minimumValue().toDouble();
        const double highest = value->maximumValue().toDouble();
        EXPECT_LT(lowest, highest) << idOf(*control);
        EXPECT_EQ(std::clamp(value->currentValue().toDouble(), lowest, highest), value->currentValue())
            << idOf(*control);
    }
}

bool onlyShows(QWidget& control) {
    const QAccessible::Role role = QAccessible::queryAccessibleInterface(&control)->role();
    return role == QAccessible::ProgressBar || role == QAccessible::Indicator;
}

// Tab comes to every control once, and never goes back in a row or up in a column, but for the keys of the title and
// from the last control to the first.
void expectReachedByTab(const QWidget& window, const QList<QWidget*>& controls) {
    QSet<const QWidget*> stops;
    for (QWidget* control : controls) {
        if (!control->isEnabled() || (control->focusPolicy() == Qt::NoFocus && onlyShows(*control))) continue;
        stops << stopOf(control);
    }
    QList<const QWidget*> order;
    for (qsizetype i = 0; i < stops.size(); ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        ASSERT_TRUE(QApplication::focusWidget());
        if (!order.empty() && order.back() == QApplication::focusWidget() && isText(order.back()))  // on its link
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        order << QApplication::focusWidget();
    }
    QList<const QWidget*> reached;
    for (const QWidget* stop : order) reached << stopOf(stop);
    for (const QWidget* stop : stops) EXPECT_EQ(reached.count(stop), 1) << idOf(*stop);
    const auto spotOf = [&](const QWidget* stop) {
        QRect spot = placeOf(*stop);
        while ((stop = stop->parentWidget()) != &window) spot.translate(placeOf(*stop).topLeft());
        return spot;
    };
    std::string steps;
    for (qsizetype i = 0; i < order.size(); ++i) {
        const QWidget* next = order[(i + 1) % order.size()];
        const QRect one = spotOf(order[i]);
        const QRect other = spotOf(next);
        if (one.top() < kTitleStrip || other.top() < kTitleStrip) continue;
        const bool back = one.top() < other.bottom() && other.top() < one.bottom() && other.right() < one.left();
        const bool up = one.left() < other.right() && other.left() < one.right() && other.bottom() < one.top();
        if (back || up) steps += idOf(*order[i]) + " is followed by " + idOf(*next) + "\n";
    }
    EXPECT_LE(std::count(steps.begin(), steps.end(), '\n'), 1) << steps;  // from the last to the first
}

// No two controls lie on each other, or on the edge of their page.
void expectApart(const QWidget& page) {
    QList<const QWidget*> controls;
    for (const auto* child : page.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        if (child->isVisible() && !child->isWindow() && !kOverlays.contains(child->objectName().left(3)))
            controls << child;
    for (const QWidget* control : controls) {
        EXPECT_TRUE(page.rect().adjusted(1, 1, -1, -1).contains(control->geometry())) << idOf(*control);
        for (const QWidget* other : controls)
            EXPECT_TRUE(other == control || !other->geometry().intersects(control->geometry()))
                << idOf(*control) << " on " << idOf(*other);
    }
}

void expectReadable(const QWidget& window) {
    for (const auto* label : window.findChildren<QLabel*>()) {
        if (!label->isVisible() || label->window() != &window || label->text().isEmpty()) continue;
        const std::string id = idOf(*label) + " " + label->text().toStdString();
        if (dynamic_cast<const ElidedLabel*>(label)) {
            EXPECT_FALSE(label->toolTip().isEmpty()) << id;
        } else if (!label->wordWrap()) {
            EXPECT_LE(label->fontMetrics().horizontalAdvance(label->text()), label->contentsRect().width()) << id;
        }
        const QRect room(QPoint(), QSize(label->contentsRect().width(), 0));
        const int flags = label->wordWrap() ? Qt::TextWordWrap : 0;
        EXPECT_LE(label->fontMetrics().boundingRect(room, flags, label->text()).height(), label->height()) << id;
    }
    for (const auto* button : window.findChildren<QAbstractButton*>()) {
        if (!button->isVisible() || button->window() != &window) continue;
        if (const auto* own = qobject_cast<const Ed_Button*>(button)) {
            EXPECT_TRUE(own->rect().contains(own->captionPlace())) << idOf(*button) << own->Caption().toStdString();
        } else if (dynamic_cast<const InstrumentLabel*>(button)) {
            EXPECT_TRUE(button->toolTip().section(u'\n', 0, 0).endsWith(button->text())) << idOf(*button);
        } else if (!button->text().isEmpty()) {
            EXPECT_LE(button->sizeHint().width(), button->width()) << idOf(*button) << button->text().toStdString();
            EXPECT_LE(button->fontMetrics().height(), button->height()) << idOf(*button);
        }
    }
    for (const auto* list : window.findChildren<QComboBox*>())
        EXPECT_TRUE(!list->isVisible() || list->minimumSizeHint().height() <= list->height()) << idOf(*list);
}

struct Look {
    const char* name;
    double fontScale;
    bool highContrast;
    int zoom;
};

struct AppliedLook {
    explicit AppliedLook(const Look& look) {
        static const QFont usual = QApplication::font();
        QFont font = usual;
        font.setPointSizeF(usual.pointSizeF() * look.fontScale);
        QApplication::setFont(font);
        if (look.highContrast) {
            QPalette palette(Qt::yellow, Qt::black);
            palette.setColor(QPalette::Text, Qt::yellow);
            palette.setColor(QPalette::Base, Qt::white);
            QApplication::setPalette(palette);
        }
        applyStyle(*qApp);
        setZoom(look.zoom);
    }
};

// All windows, with every control that they can have.
struct AccessibilityFixture : testing::TestWithParam<Look>, AppliedLook, SilentProgram {
    AccessibilityFixture() : AppliedLook(GetParam()) {
        std::string channels;
        for (int c = 0; c < kMidiChannels; ++c)
            channels += {static_cast<char>(0x90 + c), static_cast<char>(0xC0 + c), static_cast<char>(c * 8)};
        std::string song = dir.write("song.mid", songOf(channels));
        mixer().midi().OpenMidi(song);
        mixer().run().listenPath = dir.write("mix.mp3", "");
        main().SetMainLanguage();
    }

    void examine(const char* name) { examine(find<QWidget>(main(), name)); }
    void examine(QWidget& window) {
        ASSERT_TRUE(QTest::qWaitFor([&] {
            if (QApplication::activeWindow() != &window) window.activateWindow();
            return QApplication::focusWidget() && QApplication::focusWidget()->window() == &window;
        })) << window.objectName().toStdString();
        SCOPED_TRACE(window.objectName().toStdString() + " in " + shell.language);
        QList<QWidget*> controls;
        collect(QAccessible::queryAccessibleInterface(&window), controls);
        expectNamed(controls);
        expectReachedByTab(window, controls);
        expectReadable(window);
        expectApart(window);
        for (const char* page : {"FM", "languagePage"})
            if (const auto* shown = window.findChild<QWidget*>(QLatin1String(page))) expectApart(*shown);
        const auto [size, isNew] = sizes().try_emplace(window.objectName(), window.size());
        EXPECT_EQ(window.size(), zoomed(size->second));
        for (const QWidget* control : controls) {
            EXPECT_EQ(control->geometry(), zoomed(placeOf(*control))) << idOf(*control);
            EXPECT_TRUE(control->parentWidget()->rect().contains(control->geometry())) << idOf(*control);
        }
    }
    // Every entry has a text of its own.
    void expectMenus() {
        int entries = 0;
        for (auto* menu : main().findChildren<QMenu*>()) {
            std::set<QString> texts{QString()};
            for (const QAction* entry : menu->actions()) {
                if (entry->isSeparator() || !entry->isVisible()) continue;
                EXPECT_TRUE(texts.insert(entry->text().remove(u'&')).second) << entry->text().toStdString();
                ++entries;
            }
        }
        EXPECT_GT(entries, 8);
    }
    // Of the windows by name, in the first look.
    static std::map<QString, QSize>& sizes() {
        static std::map<QString, QSize> all;
        return all;
    }
};

TEST_P(AccessibilityFixture, EveryWindowIsNamedReachedAndReadable) {
    press("b_eff");
    press("b_midi");
    press("progress");
    find<QAbstractButton>(main(), "ins15").click();
    mixer().fields().background = dir / "song.mid";
    find<QAction>(main(), "tags").trigger();
    for (const char* code : {"en", "pl"}) {
        chooseLanguage(code);
        expectMenus();
        for (const bool running : {true, false}) {  // the stop button is on, most others are off
            mixer().run().isMixing = running;
            main().SetMainLanguage();
            examine(main());
            EXPECT_EQ(find<QWidget>(main(), "b_STOP").isEnabled(), running);
        }
        for (const char* window : {"frmEff", "frmChann", "frmIns", "frmTimeline", "frmTags"}) examine(window);
        press("bHelp");
        for (const char* page : {"TABA1", "TABA2", "TABA3", "TABA0"}) {
            click(find<QWidget>(main(), "mnuHelp"), page);
            examine("mnuHelp");
        }
        find<QWidget>(main(), "mnuHelp").close();
        press("b_listen");
        EXPECT_TRUE(QTest::qWaitFor([&] { return find<QWidget>(main(), "Ed_Button1").isEnabled(); }));
        examine("frmPlayer");
        find<QWidget>(main(), "frmPlayer").close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        modLang language;
        language.InitLanguage(FakeFileNames(), code);
        MixerStart start(language);
        start.show();
        examine(start);
    }
}

INSTANTIATE_TEST_SUITE_P(Looks, AccessibilityFixture,
                         testing::Values(Look{"usual", 1, false, 100}, Look{"large", 1.5, false, 125},
                                         Look{"contrast", 1.5, true, 150}, Look{"double", 1, false, 200},
                                         Look{"triple", 1, false, 300}),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
}  // namespace melvane
