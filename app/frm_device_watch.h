// Sees during a run which of the ports and inputs that it uses go.
#pragma once

#include <chrono>
#include <future>
#include <string>
#include <vector>

#include "app/mixer.h"

namespace melvane {

class DeviceWatch {
public:
    // Everything outlives it. What it still waits for when it goes is left behind.
    DeviceWatch(Mixer& mixer, const Environment& environment) : mixer_(mixer), environment_(environment) {}

    // To be called several times a second; returns at once. Asks the machine every two seconds while a run goes on.
    void look();
    // Which had gone when the machine was asked last in this run, or in the last one; "" where none had.
    const std::string& lostPort() const { return lostPort_; }
    const std::string& lostInput() const { return lostInput_; }

private:
    void begin();
    void ask();

    Mixer& mixer_;
    const Environment& environment_;
    std::chrono::steady_clock::time_point next_;
    bool running_ = false;
    std::vector<std::string> port_;  // that the song is sent to, if it is
    std::vector<std::string> inputs_;
    std::string lostPort_;
    std::string lostInput_;
    std::future<std::vector<std::string>> ports_;
    std::future<std::vector<std::string>> found_;  // inputs
};

}  // namespace melvane
