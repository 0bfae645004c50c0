#include "desktop/taskbar_progress.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QGuiApplication>
#include <QVariantMap>
#include <cmath>

namespace melvane {

// The launcher entry interface, which docks of several desktops listen to.
void TaskbarProgress::showProgress(double done) {
    const int percent = done < 0 ? -1 : static_cast<int>(std::lround(done * 100));
    if (percent == shown_) return;
    shown_ = percent;
    if (!qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) return;  // asking would start one
    QDBusMessage update =
        QDBusMessage::createSignal(QStringLiteral("/io/melvane/mixer"),
                                   QStringLiteral("com.canonical.Unity.LauncherEntry"), QStringLiteral("Update"));
    const QVariantMap state{{QStringLiteral("progress-visible"), percent >= 0},
                            {QStringLiteral("progress"), percent / 100.0}};
    update << QStringLiteral("application://%1.desktop").arg(QGuiApplication::desktopFileName()) << state;
    QDBusConnection::sessionBus().send(update);
}

}  // namespace melvane
