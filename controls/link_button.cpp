#include "controls/link_button.h"

#include <QStyleOptionButton>
#include <QStylePainter>

namespace melvane {

LinkButton::LinkButton(QWidget* parent) : QPushButton(parent) {
    setProperty("link", true);
    setCursor(Qt::PointingHandCursor);
}

void LinkButton::paintEvent(QPaintEvent*) {
    QStyleOptionButton option;
    initStyleOption(&option);
    const int room = style()->subElementRect(QStyle::SE_PushButtonContents, &option, this).width();
    option.text = fontMetrics().elidedText(text(), Qt::ElideMiddle, room, Qt::TextShowMnemonic);
    QStylePainter(this).drawControl(QStyle::CE_PushButton, option);
}

}  // namespace melvane
