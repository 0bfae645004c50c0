#include "desktop/private_folder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

namespace melvane {

namespace {

constexpr const char* kNames = "melvane-song-";
constexpr int kAttempts = 10;

// The user's own place for running programs, then the one that all share.
QStringList places() {
    QStringList found{QDir::tempPath()};
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (QDir::isAbsolutePath(runtime)) found.prepend(runtime);
    return found;
}

QString lockIn(const QString& folder) {
    return folder + QStringLiteral("/lock");
}

bool take(QLockFile& lock) {
    lock.setStaleLockTime(0);  // however long another process has it
    return lock.tryLock(0);
}

// Nothing but what such a folder holds: it may be somebody's who chose the same name.
void removeLeftover(const QString& folder) {
    if (QFile::exists(lockIn(folder))) {
        QLockFile lock(lockIn(folder));
        if (!take(lock)) return;
        QFile::remove(PrivateFolder::songIn(folder));
    }
    QDir().rmdir(folder);
}

}  // namespace

PrivateFolder::PrivateFolder() {
    for (const QString& place : places())
        for (int attempt = 0; attempt < kAttempts; ++attempt)
            if (makeIn(place)) return;
}

// A folder without a lock may be taken for a leftover: then another one is made.
bool PrivateFolder::makeIn(const QString& place) {
    folder_.emplace(place + QLatin1Char('/') + QLatin1String(kNames) + QStringLiteral("XXXXXX"));
    if (folder_->isValid() && take(lock_.emplace(lockIn(folder_->path())))) return true;
    lock_.reset();
    folder_.reset();
    return false;
}

QString PrivateFolder::songIn(const QString& folder) {
    return folder + QStringLiteral("/tmp.mid");
}

void PrivateFolder::removeLeftovers() {
    const QString name = QLatin1String(kNames) + QStringLiteral("??????");
    for (const QString& place : places())
        for (const QFileInfo& found : QDir(place).entryInfoList({name}, QDir::Dirs | QDir::NoSymLinks))
            if (found.isWritable()) removeLeftover(found.filePath());
}

}  // namespace melvane
