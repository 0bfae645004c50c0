#include "desktop/desktop_shell.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

namespace melvane {

bool DesktopShell::open(const std::string& address) {
    const QUrl url(QString::fromStdString(address), QUrl::StrictMode);
    // What opens files would not tell us that there is none.
    const bool there = url.isLocalFile() ? QFileInfo(url.toLocalFile()).isFile() : !url.host().isEmpty();
    return there && QDesktopServices::openUrl(url);
}

}  // namespace melvane
