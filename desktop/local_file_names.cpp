#include "desktop/local_file_names.h"

#include <QCoreApplication>
#include <filesystem>
#include <system_error>

#include "base/cache_folder.h"
#include "base/paths.h"
#include "desktop/page_address.h"
#include "desktop/private_folder.h"

namespace melvane {

std::string LocalFileNames::systemDirectory() const {
    return MELVANE_SYSTEM_DIR;
}

std::string LocalFileNames::programDirectory() const {
    if (QCoreApplication::instance() != nullptr) return QCoreApplication::applicationDirPath().toStdString();
    std::error_code error;
    return toText(std::filesystem::read_symlink("/proc/self/exe", error).parent_path());
}

std::string LocalFileNames::pageAddress(const std::string& page) const {
    return melvane::pageAddress(programDirectory(), page);
}

std::string LocalFileNames::temporaryMidiFile() const {
    if (!folder_) folder_ = std::make_shared<PrivateFolder>();
    return folder_->song().toStdString();
}

std::string LocalFileNames::cacheDirectory() const {
    const auto folder = cacheFolder();
    return folder.empty() ? "" : toText(folder / "Tessaro");
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
