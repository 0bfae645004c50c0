#include "app/frm_device_watch.h"

#include <algorithm>

#include "state/window_patience.h"

namespace melvane {

namespace {

constexpr std::chrono::seconds kPause{2};

// The first of `wanted` that is not among `there`.
std::string missing(const std::vector<std::string>& wanted, const std::vector<std::string>& there) {
    const auto lost =
        std::ranges::find_if(wanted, [&](const auto& name) { return std::ranges::find(there, name) == there.end(); });
    return lost == wanted.end() ? "" : *lost;
}

}  // namespace

void DeviceWatch::look() {
    const bool began = !running_ && mixer_.run().isMixing;
    running_ = mixer_.run().isMixing;
    if (began) begin();
    if (!running_) return;
    if (ports_.valid() && isReady(ports_)) lostPort_ = missing(port_, ports_.get());
    if (found_.valid() && isReady(found_)) lostInput_ = missing(inputs_, found_.get());
    if (!ports_.valid() && !found_.valid() && std::chrono::steady_clock::now() >= next_) ask();
}

void DeviceWatch::begin() {
    port_.clear();
    if (mixer_.midi().onDevice()) port_ = {mixer_.settings().knownPort.name};
    inputs_ = mixer_.input().namesOn();
    lostPort_.clear();
    lostInput_.clear();
    ports_ = {};
    found_ = {};
    next_ = std::chrono::steady_clock::now() + kPause;
}

void DeviceWatch::ask() {
    next_ = std::chrono::steady_clock::now() + kPause;
    if (!port_.empty()) ports_ = beside(environment_.music.portSearch());
    if (!mixer_.input().recordsCard()) found_ = beside(environment_.library.inputSearch());
}

}  // namespace melvane
