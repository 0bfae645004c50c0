// The connection to the machine's sound server, made when it is first needed and made again after a loss.
#pragma once

#include <cubeb/cubeb.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "base/patience.h"

namespace melvane::engine {

// How long a server may take to answer, and a device to close.
inline constexpr std::chrono::seconds kServerPatience{2};
inline constexpr std::chrono::milliseconds kClosePatience{500};

struct CaptureSource {
    std::string id;    // the server's own name of the source
    std::string name;  // as shown to the user
    bool isMonitor = false;
    bool isDefault = false;
};

class SoundServer {
public:
    // Any thread. nullptr when no server can be reached. A stream keeps the connection that it was made on. Like
    // every call to the server, this one waits as long as the server does: see base/patience.h.
    std::shared_ptr<cubeb> connection();
    // Any thread: the next connection is a new one.
    void reconnect();
    // The microphones, lines and monitors that can be recorded, in the server's order.
    std::vector<CaptureSource> captureSources();

private:
    std::mutex mutex_;
    std::shared_ptr<cubeb> connection_;
};

// A Device that was made of a connection and `arguments` and has started; nullptr when the server has none or does not
// answer, and the next connection to it is then a new one.
template <typename Device, typename... Arguments>
std::unique_ptr<Device> startDevice(const std::shared_ptr<SoundServer>& server, Arguments... arguments) {
    const auto open = [server, arguments...] {
        auto connection = server->connection();
        auto device = connection ? std::make_unique<Device>(std::move(connection), arguments...) : nullptr;
        return device && device->start() ? std::move(device) : nullptr;
    };
    auto device = withPatience(kServerPatience, open).value_or(nullptr);
    if (!device) server->reconnect();
    return device;
}

}  // namespace melvane::engine
