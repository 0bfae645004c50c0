#include "controls/caption.h"

namespace melvane {

QLabel* addCaption(QWidget* window, const QRect& place, Accent accent, Qt::Alignment alignment) {
    auto* caption = new QLabel(window);
    caption->setProperty("accent", accent == Accent::song ? QStringLiteral("song") : QStringLiteral("voice"));
    caption->setAlignment(alignment);
    caption->setGeometry(place);
    return caption;
}

}  // namespace melvane
