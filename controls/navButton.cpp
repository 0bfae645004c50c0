#include "controls/navButton.h"

#include <utility>

#include "controls/button_pictures.h"
#include "controls/zoom.h"

namespace melvane {

namespace {

constexpr int kTickMs = 100;
constexpr QSize kImageSize(24, 18);
constexpr std::array kSymbols = {Symbol::next, Symbol::back, Symbol::list};

bool isType(short type) {
    return type >= 0 && static_cast<std::size_t>(type) < kSymbols.size();
}

}  // namespace

navButton::navButton(QWidget* parent) : HotButton(parent, kTickMs) {
    for (std::size_t i = 0; i < kSymbols.size(); ++i) {
        const ButtonPictures pictures = buttonPictures(ButtonLook::plain, kSymbols[i], kImageSize);
        images_[2 * i] = pictures.normal;
        images_[2 * i + 1] = pictures.hot;
    }
}

void navButton::setButtonType(short type) {
    type_ = type;
    update();
    Q_EMIT PropertyChanged();
}

std::size_t navButton::shownImage() const {
    const auto pair = static_cast<std::size_t>(isType(type_) ? type_ : 0);
    return 2 * pair + (isHot() && isType(type_) ? 2 : 1);
}

void navButton::paintEvent(QPaintEvent*) {
    PlacePainter painter(this);
    painter.setOpacity(isEnabled() ? 1 : kDisabledOpacity);
    drawPicture(painter, Image(shownImage()));
    drawButtonState(painter, *this, kImageSize);
}

navButton* addNavButton(QWidget* window, const char* name, const QPoint& place, short type,
                        std::function<void()> click) {
    auto* button = new navButton(window);
    button->setObjectName(QLatin1String(name));
    layOut(button, {place, kImageSize});
    button->setButtonType(type);
    QObject::connect(button, &navButton::Click, window, std::move(click));
    return button;
}

}  // namespace melvane
