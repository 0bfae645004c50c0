// Another program as a child process, started without a shell.
#pragma once

#include <string>
#include <vector>

namespace melvane::engine {

enum class ChildState {
    none,  // never started
    running,
    done,    // ended by itself with exit status 0
    failed,  // ended otherwise
};

// One thread at a time.
class ChildProcess {
public:
    // Open files of this process that the child gets. Without one it reads nothing, or what it writes is lost.
    struct Streams {
        int input = -1;
        int output = -1;
        int error = -1;
    };

    ChildProcess() = default;
    // Ends a child that still runs.
    ~ChildProcess() { kill(); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Starts words[0], an absolute path, in a process group of its own (an interrupt typed at the terminal is for this
    // program), with no other open files than these. False when it cannot be started.
    bool start(const std::vector<std::string>& words, const Streams& streams);
    // Asks the system.
    ChildState state();
    // Ends it at once, with whatever it has started in its group.
    void kill();

private:
    int pid_ = 0;
    ChildState state_ = ChildState::none;
};

}  // namespace melvane::engine
