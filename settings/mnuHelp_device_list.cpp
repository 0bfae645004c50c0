#include "settings/mnuHelp_device_list.h"

#include <utility>

#include "controls/zoom.h"

namespace melvane {

DeviceList::DeviceList(QWidget* page, const QRect& place, DeviceNames deviceNames)
    : QComboBox(page), askForNames_(std::move(deviceNames)) {
    layOut(this, place);
    setEnabled(false);
}

void DeviceList::refresh() {
    std::vector<std::string> names = askForNames_();
    if (names == listed_) return;
    listed_ = std::move(names);
    clear();
    for (const std::string& name : listed_) addItem(shownName(name));
    setCurrentIndex(-1);
    setEnabled(!listed_.empty());
    showEmptyText();
}

void DeviceList::rename(const std::string& name, const QString& shown) {
    renamed_ = {name, shown};
    for (int i = 0; i < count(); ++i) setItemText(i, shownName(listed_[static_cast<std::size_t>(i)]));
}

QString DeviceList::shownName(const std::string& name) const {
    return name == renamed_.first ? renamed_.second : QString::fromStdString(name);
}

void DeviceList::setEmptyText(const QString& text) {
    emptyText_ = text;
    showEmptyText();
}

// The text is shown whenever nothing is selected, also from a list that is not empty.
void DeviceList::showEmptyText() {
    setPlaceholderText(listed_.empty() ? emptyText_ : QString());
}

void DeviceList::showPopup() {
    Q_EMIT aboutToOpen();
    QComboBox::showPopup();
}

void DeviceList::hidePopup() {
    QComboBox::hidePopup();
    Q_EMIT closed();
}

}  // namespace melvane
