#include "desktop/desktop_shell.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QUrl>

namespace melvane {

namespace {

// Library directories may have one more level for the kind of machine.
constexpr int kLevels = 4;

// Absolute name of the document; empty when there is none.
QString findDocument(const QString& programDirectory, const QString& document) {
    const QString installed = QStringLiteral("share/doc/melvane/") + QFileInfo(document).fileName();
    QDir directory(programDirectory);
    for (int level = 0; level < kLevels; ++level) {
        for (const QString& place : {installed, document})
            if (QFileInfo(directory.filePath(place)).isFile()) return directory.absoluteFilePath(place);
        if (!directory.cdUp()) break;
    }
    return {};
}

}  // namespace

bool DesktopShell::open(const std::string& address) {
    const QString text = QString::fromStdString(address);
    if (text.contains(QLatin1String("://"))) {
        const QUrl url(text, QUrl::StrictMode);
        return url.isValid() && QDesktopServices::openUrl(url);
    }
    const QString file = findDocument(QString::fromStdString(programDirectory_), text);
    return !file.isEmpty() && QDesktopServices::openUrl(QUrl::fromLocalFile(file));
}

}  // namespace melvane
