#include "desktop/library_file.h"

#include <QFileInfo>
#include <QLibrary>
#include <QString>

namespace melvane {

std::string LibraryFile::fileName() const {
#ifdef _WIN32
    return "bass.dll";
#else
    return "libbass.so";
#endif
}

bool LibraryFile::exists(const std::string& path) const {
    return QFileInfo(QString::fromStdString(path)).isFile();
}

bool LibraryFile::load(const std::string& path) {
    getVersion_ = nullptr;
    create_ = nullptr;
    if (!exists(path)) return false;
    // A bare name would be looked for in the system's directories instead.
    QLibrary library(QFileInfo(QString::fromStdString(path)).absoluteFilePath());
    // Symbols stay local unless asked otherwise. Threads of the library may run until the process ends.
    library.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    const auto getVersion = library.resolve(kBASS_GetVersionSymbol);
    const auto create = library.resolve(kCreateAudioLibrarySymbol);
    if (getVersion == nullptr || create == nullptr) return false;
    getVersion_ = reinterpret_cast<BASS_GetVersionFunction>(getVersion);
    create_ = reinterpret_cast<CreateAudioLibraryFunction>(create);
    return true;
}

std::uint32_t LibraryFile::BASS_GetVersion() const {
    return getVersion_ == nullptr ? 0 : getVersion_();
}

std::unique_ptr<AudioLibrary> LibraryFile::create(const AudioLibraryOptions& options) {
    return std::unique_ptr<AudioLibrary>(create_ == nullptr ? nullptr : create_(options));
}

}  // namespace melvane
