// Message boxes of a program without windows: nobody is asked anything, and what a box would say reaches the
// user as the result of the run.
#pragma once

#include "platform/dialogs.h"
#include "platform/shell.h"

namespace melvane {

class SilentDialogs : public Dialogs {
public:
    void tell(const std::string&, const std::string&, BoxIcon) override {}
    BoxAnswer messageBox(const std::string&, const std::string&, BoxIcon, BoxButtons) override {
        return BoxAnswer::cancel;
    }
    std::optional<std::size_t> choose(const std::string&, const std::string&,
                                      const std::vector<std::string>&) override {
        return std::nullopt;
    }
    std::string openFile(const FileQuestion&) override { return ""; }
    std::string saveFile(const FileQuestion&) override { return ""; }
};

class SilentShell : public Shell {
public:
    bool open(const std::string&) override { return false; }
    void showProgress(double) override {}
    void useLanguage(const std::string&) override {}
};

}  // namespace melvane
