// The shell of the desktop that the program runs on.
#pragma once

#include <string>
#include <utility>

#include "desktop/taskbar_progress.h"
#include "desktop/toolkit_texts.h"
#include "platform/shell.h"

namespace melvane {

class DesktopShell : public Shell {
public:
    // Documents are looked for in this directory (UTF-8) and in those above it: there is the source tree when the
    // program was built in it, and share/doc/melvane when it was installed.
    explicit DesktopShell(std::string programDirectory) : programDirectory_(std::move(programDirectory)) {}

    bool open(const std::string& address) override;
    void showProgress(double done) override { taskbar_.showProgress(done); }
    void useLanguage(const std::string& code) override { texts_.use(code); }

private:
    std::string programDirectory_;
    TaskbarProgress taskbar_;
    ToolkitTexts texts_;
};

}  // namespace melvane
