// The shell of the desktop that the program runs on.
#pragma once

#include "desktop/taskbar_progress.h"
#include "desktop/toolkit_texts.h"
#include "platform/shell.h"

namespace melvane {

class DesktopShell : public Shell {
public:
    bool open(const std::string& address) override;
    void showProgress(double done) override { taskbar_.showProgress(done); }
    void useLanguage(const std::string& code) override { texts_.use(code); }

private:
    TaskbarProgress taskbar_;
    ToolkitTexts texts_;
};

}  // namespace melvane
