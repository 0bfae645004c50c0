// Well-known directories and file-name forms of the machine that the program runs on.
#pragma once

#include <memory>
#include <string>

#include "platform/file_names.h"

class QLockFile;

namespace melvane {

class LocalFileNames : public FileNames {
public:
    std::string systemDirectory() const override;
    // Also without an application object; empty when the system does not tell.
    std::string programDirectory() const override;
    // Claimed at the first call, by a lock file beside it, for as long as these names or a copy of them live.
    std::string temporaryMidiFile() const override;
    // The absolute form, byte by byte; links and dots in it stay. `path` itself when that cannot be made.
    std::string shortPath(const std::string& path) const override;
    std::string commandLineWord(const std::string& path) const override;

private:
    mutable std::string temporaryMidiFile_;
    mutable std::shared_ptr<QLockFile> claim_;
};

}  // namespace melvane
