// Programs that tests run beside them, ended with the test: a PulseAudio server with a null sink, processor load.
#pragma once

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

extern char** environ;

namespace melvane::test {

class Child {
public:
    explicit Child(std::vector<std::string> words) {
        std::vector<char*> arguments;
        for (std::string& word : words) arguments.push_back(word.data());
        arguments.push_back(nullptr);
        if (posix_spawnp(&pid_, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0) pid_ = 0;
    }
    ~Child() { stop(SIGTERM); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    void stop(int signal) {
        if (pid_ <= 0) return;
        kill(pid_, frozen_ ? SIGKILL : signal);
        waitpid(pid_, nullptr, 0);
        pid_ = 0;
    }

    void freeze() {
        kill(pid_, SIGSTOP);
        frozen_ = true;
    }

private:
    pid_t pid_ = 0;
    bool frozen_ = false;
};

// While one lives, PULSE_SERVER names it.
class SoundServerProcess {
public:
    SoundServerProcess()
        : socket_(plainDirectory() + "/pulse.sock"),
          server_({"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
                   "--disable-shm=yes", "--log-level=error", "-L",
                   "module-native-protocol-unix auth-anonymous=1 socket=" + socket_, "-L",
                   "module-null-sink sink_name=hall rate=44100"}) {
        setenv("PULSE_SERVER", ("unix:" + socket_).c_str(), 1);
        for (int i = 0; i < 500 && !ready(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ~SoundServerProcess() {
        server_.stop(SIGTERM);
        std::error_code error;
        std::filesystem::remove_all(std::filesystem::path(socket_).parent_path(), error);
        unsetenv("PULSE_SERVER");
    }

    bool ready() const { return std::filesystem::exists(socket_); }
    void vanish() { server_.stop(SIGKILL); }
    // Keeps its connections but answers no more.
    void freeze() { server_.freeze(); }

private:
    // The server takes no blanks in its arguments.
    static std::string plainDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "melvane-sound-XXXXXX").string();
        return mkdtemp(name.data());
    }

    std::string socket_;
    Child server_;
};

}  // namespace melvane::test
