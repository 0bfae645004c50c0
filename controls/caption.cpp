#include "controls/caption.h"

#include "controls/zoom.h"

namespace melvane {

namespace {
constexpr const char* kNames[] = {"song", "voice", "mix"};  // in the style sheet
}

QLabel* addCaption(QWidget* window, const QRect& place, Accent accent, Qt::Alignment alignment) {
    auto* caption = new QLabel(window);
    caption->setProperty("accent", QLatin1String(kNames[static_cast<std::size_t>(accent)]));
    caption->setAlignment(alignment);
    layOut(caption, place);
    return caption;
}

}  // namespace melvane
