#include "desktop/local_file_names.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QStandardPaths>
#include <QStringList>
#include <filesystem>
#include <system_error>

#include "base/paths.h"

namespace melvane {

namespace {

constexpr int kProgramsAtOnce = 64;

// The places for the temporary song, the preferred one first.
QStringList temporaryPlaces(const std::string& programDirectory) {
    QStringList places{QString::fromStdString(programDirectory) + QStringLiteral("/tmp.mid")};
    const QString caches = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    if (caches.isEmpty()) return places;
    places << caches + QStringLiteral("/Melvane/tmp.mid");
    for (int n = 2; n <= kProgramsAtOnce; ++n) places << caches + QStringLiteral("/Melvane/tmp-%1.mid").arg(n);
    return places;
}

// What else may stand in the place is left alone.
bool canBeOurs(const QString& place) {
    const QFileInfo file(place);
    return !file.isSymLink() && (!file.exists() || (file.isFile() && file.isWritable()));
}

}  // namespace

std::string LocalFileNames::systemDirectory() const {
    return MELVANE_SYSTEM_DIR;
}

std::string LocalFileNames::programDirectory() const {
    if (QCoreApplication::instance() != nullptr) return QCoreApplication::applicationDirPath().toStdString();
    std::error_code error;
    return toText(std::filesystem::read_symlink("/proc/self/exe", error).parent_path());
}

std::string LocalFileNames::temporaryMidiFile() const {
    if (claim_) return temporaryMidiFile_;
    for (const QString& place : temporaryPlaces(programDirectory())) {
        if (!QDir().mkpath(QFileInfo(place).path()) || !canBeOurs(place)) continue;
        auto lock = std::make_shared<QLockFile>(place + QStringLiteral(".lock"));
        lock->setStaleLockTime(0);  // however long another program has it open
        if (!lock->tryLock(0)) continue;
        claim_ = std::move(lock);
        temporaryMidiFile_ = place.toStdString();
        break;
    }
    return temporaryMidiFile_;
}

std::string LocalFileNames::shortPath(const std::string& path) const {
    std::error_code error;
    const auto absolute = std::filesystem::absolute(toPath(path), error);
    return error ? path : toText(absolute);
}

std::string LocalFileNames::commandLineWord(const std::string& path) const {
    if (!path.empty() && path.find_first_of(" \t\r\n\v\f\"\\") == std::string::npos) return path;
    std::string word = "\"";
    for (const char c : path) {
        if (c == '"' || c == '\\') word += '\\';
        word += c;
    }
    return word + '"';
}

}  // namespace melvane
