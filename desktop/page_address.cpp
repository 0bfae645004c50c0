#include "desktop/page_address.h"

#include <QDir>

namespace melvane {

namespace {

// Library directories may have one more level for the kind of machine.
constexpr int kLevels = 3;

QString pageFolder(const QString& programDirectory) {
    QDir directory(programDirectory);
    const QString built = directory.absoluteFilePath(QStringLiteral("pages"));
    if (QDir(built).exists()) return built;
    for (int level = 0; level < kLevels && directory.cdUp(); ++level) {
        const QString installed = directory.absoluteFilePath(QStringLiteral("share/doc/melvane"));
        if (QDir(installed).exists()) return installed;
    }
    return built;
}

}  // namespace

std::string pageAddress(const std::string& programDirectory, const std::string& page) {
    const QString folder = pageFolder(QString::fromStdString(programDirectory));
    const QByteArray path = (folder + u'/' + QString::fromStdString(page)).toUtf8();
    const QByteArray root = path.startsWith('/') ? "file://" : "file:///";
    return (root + path.toPercentEncoding("/:")).toStdString();
}

}  // namespace melvane
