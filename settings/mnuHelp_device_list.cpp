#include "settings/mnuHelp_device_list.h"

#include <utility>

#include "controls/zoom.h"

namespace melvane {

DeviceList::DeviceList(QWidget* page, const QRect& place, DeviceNames deviceNames)
    : QComboBox(page), deviceNames_(std::move(deviceNames)) {
    layOut(this, place);
    setEnabled(false);
}

bool DeviceList::refresh() {
    QStringList names;
    for (const std::string& name : deviceNames_()) names << QString::fromStdString(name);
    const int before = currentIndex();
    if (names == names_) return before >= 0;

    // Two devices may have one name: the one that stayed where it was is the same.
    const QString selected = names_.value(before);
    const bool stayed = before >= 0 && names.value(before) == selected;
    const int now = stayed ? before : before >= 0 ? static_cast<int>(names.indexOf(selected)) : -1;
    names_ = names;
    clear();
    addItems(names);
    setCurrentIndex(now);
    setEnabled(!names.isEmpty());
    showEmptyText();
    return now >= 0;
}

void DeviceList::setEmptyText(const QString& text) {
    emptyText_ = text;
    showEmptyText();
}

// The text is shown whenever nothing is selected, also from a list that is not empty.
void DeviceList::showEmptyText() {
    setPlaceholderText(names_.isEmpty() ? emptyText_ : QString());
}

void DeviceList::showPopup() {
    Q_EMIT aboutToOpen();
    QComboBox::showPopup();
}

}  // namespace melvane
