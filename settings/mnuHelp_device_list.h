// A list of devices that is up to date whenever it is opened.
#pragma once

#include <QAbstractItemView>
#include <QComboBox>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace melvane {

// Names of the devices as they were listed last (UTF-8), in the order of their numbers, from 0.
using DeviceNames = std::function<std::vector<std::string>()>;

class DeviceList : public QComboBox {
    Q_OBJECT

public:
    DeviceList(QWidget* page, const QRect& place, DeviceNames deviceNames);

    // Lists the devices anew; when they have changed, none is selected.
    void refresh();
    const std::vector<std::string>& listed() const { return listed_; }
    // Shows the device of that name under another.
    void rename(const std::string& name, const QString& shown);
    // Shown while there is no device.
    void setEmptyText(const QString& text);

    bool isOpen() const { return view()->isVisible(); }
    void showPopup() override;
    void hidePopup() override;

Q_SIGNALS:
    void aboutToOpen();
    void closed();

private:
    void showEmptyText();
    QString shownName(const std::string& name) const;

    DeviceNames askForNames_;
    std::vector<std::string> listed_;
    std::pair<std::string, QString> renamed_;
    QString emptyText_;
};

}  // namespace melvane
