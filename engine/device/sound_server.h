// The machine's sound server.
#pragma once

#include <cubeb/cubeb.h>

#include <chrono>
#include <memory>
#include <stop_token>
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
    // Any thread. nullptr when no server can be reached. Like every call to the server, this one waits as long as the
    // server does: see base/patience.h. A new connection each time: what is asked of an old one after the server has
    // stopped answering crashes in cubeb when the server's library gives it up, after 30 s.
    std::shared_ptr<cubeb> connection() const;
    // The microphones, lines and monitors that can be recorded, in the server's order. Any thread.
    std::vector<CaptureSource> captureSources() const;
};

// A Device that was made of a connection and `arguments` and has started; nullptr when the server has none, does not
// answer or is given up.
template <typename Device, typename... Arguments>
std::unique_ptr<Device> startDevice(const std::shared_ptr<SoundServer>& server, const std::stop_token& givenUp,
                                    Arguments... arguments) {
    const auto open = [server, arguments...] {
        auto connection = server->connection();
        auto device = connection ? std::make_unique<Device>(std::move(connection), arguments...) : nullptr;
        return device && device->start() ? std::move(device) : nullptr;
    };
    return withPatience(kServerPatience, open, givenUp).value_or(nullptr);
}

}  // namespace melvane::engine
