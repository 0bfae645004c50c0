// The connection to the machine's sound server, made when it is first needed and made again after a loss.
#pragma once

#include <cubeb/cubeb.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace melvane::engine {

struct CaptureSource {
    std::string id;    // the server's own name of the source
    std::string name;  // as shown to the user
    bool isMonitor = false;
    bool isDefault = false;
};

class SoundServer {
public:
    // Any thread. nullptr when no server can be reached. A stream keeps the connection that it was made on. Like
    // every call to the server, this one waits as long as the server does: see patience.h.
    std::shared_ptr<cubeb> connection();
    // Any thread: the next connection is a new one.
    void reconnect();
    // The microphones, lines and monitors that can be recorded, in the server's order.
    std::vector<CaptureSource> captureSources();

private:
    std::mutex mutex_;
    std::shared_ptr<cubeb> connection_;
};

}  // namespace melvane::engine
