// Well-known directories and file-name forms of the machine that the program runs on.
#pragma once

#include <memory>
#include <string>

#include "platform/file_names.h"

namespace melvane {

class PrivateFolder;

class LocalFileNames : public FileNames {
public:
    std::string systemDirectory() const override;
    // Also without an application object; empty when the system does not tell.
    std::string programDirectory() const override;
    std::string pageAddress(const std::string& page) const override;
    // Its folder is made by the first call, and removed when these names and the copies of them have gone.
    std::string temporaryMidiFile() const override;
    std::string cacheDirectory() const override;
    // The absolute form, byte by byte; links and dots in it stay. `path` itself when that cannot be made.
    std::string shortPath(const std::string& path) const override;
    std::string commandLineWord(const std::string& path) const override;

private:
    mutable std::shared_ptr<PrivateFolder> folder_;
};

}  // namespace melvane
