// Message boxes of a program without windows: nobody is asked anything, and what a box would say reaches the
// user as the result of the run.
#pragma once

#include "platform/dialogs.h"

namespace melvane {

class ConsoleDialogs : public Dialogs {
public:
    BoxAnswer messageBox(const std::string&, const std::string&, BoxIcon, BoxButtons) override {
        return BoxAnswer::cancel;
    }
    std::string openFile(const std::string&, const std::string&, const std::string&) override { return ""; }
    std::string saveFile(const std::string&, const std::string&, const std::string&) override { return ""; }
};

}  // namespace melvane
