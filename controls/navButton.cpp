#include "controls/navButton.h"

#include <QMouseEvent>
#include <utility>

#include "controls/button_pictures.h"

namespace melvane {

namespace {

constexpr int kTickMs = 100;
constexpr QSize kImageSize(24, 18);
constexpr std::array kSymbols = {Symbol::next, Symbol::back, Symbol::list};

bool isType(short type) {
    return type >= 0 && static_cast<std::size_t>(type) < kSymbols.size();
}

}  // namespace

navButton::navButton(QWidget* parent) : QAbstractButton(parent) {
    for (std::size_t i = 0; i < kSymbols.size(); ++i) {
        const ButtonPictures pictures = buttonPictures(ButtonLook::plain, kSymbols[i], kImageSize);
        images_[2 * i] = pictures.normal;
        images_[2 * i + 1] = pictures.hot;
    }
    setFixedSize(kImageSize);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    Timer1_.setInterval(kTickMs);
    connect(&Timer1_, &QTimer::timeout, this, &navButton::Timer1_Timer);
    connect(this, &QAbstractButton::clicked, this, &navButton::Click);
}

QSize navButton::sizeHint() const {
    return kImageSize;
}

void navButton::setButtonType(short type) {
    type_ = type;
    showImage(hover_);
    Q_EMIT PropertyChanged();
}

void navButton::showImage(bool hot) {
    const auto pair = static_cast<std::size_t>(isType(type_) ? type_ : 0);
    shown_ = 2 * pair + (hot && isType(type_) ? 2 : 1);
    update();
}

bool navButton::event(QEvent* event) {
    if (event->type() != QEvent::ContextMenu || isEnabled()) return QAbstractButton::event(event);
    event->ignore();
    return false;
}

void navButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setOpacity(isEnabled() ? 1 : kDisabledOpacity);
    drawPicture(painter, Image(shown_));
    drawButtonState(painter, *this);
}

void navButton::mouseMoveEvent(QMouseEvent* event) {
    QAbstractButton::mouseMoveEvent(event);
    setAttribute(Qt::WA_UnderMouse);  // moves may come without an enter event before them
    if (hover_) return;
    hover_ = true;
    showImage(true);
    Timer1_.start();
}

void navButton::Timer1_Timer() {
    if (!isUnderCursor(*this)) lightDown();
}

void navButton::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) lightDown();
    QAbstractButton::mousePressEvent(event);
}

void navButton::keyPressEvent(QKeyEvent* event) {
    if (!pressedByEnter(*this, *event)) QAbstractButton::keyPressEvent(event);
}

void navButton::changeEvent(QEvent* event) {
    QAbstractButton::changeEvent(event);
    if (event->type() == QEvent::EnabledChange) lightDown();
}

void navButton::lightDown() {
    hover_ = false;
    Timer1_.stop();
    showImage(false);
}

navButton* addNavButton(QWidget* window, const char* name, const QPoint& place, short type,
                        std::function<void()> click) {
    auto* button = new navButton(window);
    button->setObjectName(QLatin1String(name));
    button->move(place);
    button->setButtonType(type);
    QObject::connect(button, &navButton::Click, window, std::move(click));
    return button;
}

}  // namespace melvane
