// The system around the program's windows: what opens pages and documents, and what shows the program beside others.
// Used on the user-interface thread.
#pragma once

#include <string>

namespace melvane {

class Shell {
public:
    virtual ~Shell() = default;

    // `address` is a web address or that of a file (file://). Returns at once, without waiting for what it started.
    // False when it is no address, when there is no such file, or nothing that could open it.
    virtual bool open(const std::string& address) = 0;
    // Shows how much of a mix is done (0 to 1) where the system shows the program, such as a taskbar; -1: no mix. The
    // same as before costs nothing.
    virtual void showProgress(double done) = 0;
    // The texts that come with the system's own boxes and dialogs are in the language of this code from now on; in
    // English when it is not known.
    virtual void useLanguage(const std::string& code) = 0;
};

}  // namespace melvane
