// Writes the settings while the program runs, so that little is lost when it is killed.
#pragma once

#include <QObject>
#include <QTimer>
#include <functional>
#include <string>
#include <vector>

#include "settings/settings_store.h"

namespace melvane {

class SettingsKeeper : public QObject {
public:
    // `due` is called a second after something was shown anew, so that no timer runs at rest; it is to call save().
    SettingsKeeper(const SettingsStore& store, const Settings& settings, const std::function<void()>& due);

    // Writes what has changed. False when nothing has.
    bool save();

private:
    bool eventFilter(QObject* object, QEvent* event) override;

    const SettingsStore& store_;
    const Settings& settings_;
    std::vector<std::string> saved_;
    std::vector<std::string> tried_;  // what can't be written is tried again with the next change
    QTimer due_;
};

}  // namespace melvane
