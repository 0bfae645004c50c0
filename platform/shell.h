// Opens pages and documents in the program that the system has for them. Used on the user-interface thread.
#pragma once

#include <string>

namespace melvane {

class Shell {
public:
    virtual ~Shell() = default;

    // `address` is a web address or a document of the program, such as "docs/help.en.md". Returns at once, without
    // waiting for what it started. False when there is no such document, or nothing that could open it.
    virtual bool open(const std::string& address) = 0;
};

}  // namespace melvane
