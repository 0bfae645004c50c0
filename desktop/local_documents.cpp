#include "desktop/local_documents.h"

#include <QSaveFile>
#include <cerrno>
#include <fstream>

#include "base/paths.h"

namespace melvane {

namespace {

// What the last call left behind, or a fault of the drive where it left nothing.
int lastError() {
    return errno != 0 ? errno : EIO;
}

}  // namespace

int LocalDocuments::read(const std::string& path, std::size_t most, std::string& bytes) {
    bytes.clear();
    if (!isFile(path)) return ENOENT;  // a pipe would keep waiting who opens it
    errno = 0;
    std::ifstream file(toPath(path), std::ios::binary);
    if (!file) return lastError();
    bytes.resize(most + 1);
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (file.bad()) return lastError();
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes.size() > most ? EFBIG : 0;
}

// commit() alone does not tell when the last bytes find no room.
int LocalDocuments::write(const std::string& path, std::string_view bytes) {
    errno = 0;
    QSaveFile file(QString::fromStdString(path));
    const auto size = static_cast<qint64>(bytes.size());
    const bool written = file.open(QIODevice::WriteOnly) && file.write(bytes.data(), size) == size && file.flush();
    return written && file.commit() ? 0 : lastError();
}

}  // namespace melvane
