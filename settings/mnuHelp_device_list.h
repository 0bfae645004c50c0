// A list of devices that is up to date whenever it is opened.
#pragma once

#include <QComboBox>
#include <functional>
#include <string>
#include <vector>

namespace melvane {

// Names of the devices that there are now (UTF-8), in the order of their numbers, from 0.
using DeviceNames = std::function<std::vector<std::string>()>;

class DeviceList : public QComboBox {
    Q_OBJECT

public:
    DeviceList(QWidget* page, const QRect& place, DeviceNames deviceNames);

    // Lists the devices that there are now; when they have changed, none is selected.
    void refresh();
    const std::vector<std::string>& listed() const { return listed_; }
    // Shown while there is no device.
    void setEmptyText(const QString& text);

    void showPopup() override;

Q_SIGNALS:
    void aboutToOpen();

private:
    void showEmptyText();

    DeviceNames askForNames_;
    std::vector<std::string> listed_;
    QString emptyText_;
};

}  // namespace melvane
