#include "app/frm_settings_keeper.h"

#include <QCoreApplication>
#include <QEvent>

namespace melvane {

namespace {
constexpr int kPauseMs = 1000;
}

SettingsKeeper::SettingsKeeper(const SettingsStore& store, const Settings& settings, const std::function<void()>& due)
    : store_(store), settings_(settings), saved_(SettingsStore::texts(settings)), tried_(saved_) {
    due_.setSingleShot(true);
    due_.setInterval(kPauseMs);
    connect(&due_, &QTimer::timeout, this, due);
    qApp->installEventFilter(this);
}

bool SettingsKeeper::save() {
    due_.stop();
    auto now = SettingsStore::texts(settings_);
    if (now == tried_) return false;
    store_.saveChanges(now, saved_);
    tried_ = std::move(now);
    if (store_.failure() == ERROR_SUCCESS) saved_ = tried_;
    return true;
}

// A value that changes is painted anew.
bool SettingsKeeper::eventFilter(QObject*, QEvent* event) {
    const auto type = event->type();
    if ((type == QEvent::UpdateRequest || type == QEvent::Move) && !due_.isActive()) due_.start();
    return false;
}

}  // namespace melvane
