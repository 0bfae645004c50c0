// The recording inputs and their switches. Input 0 is the card's own mix; the sources of the sound server
// follow. The switches are the library's own: the server's settings stay as they are.
// Used on the user-interface thread, but for what says otherwise.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "engine/device/sound_server.h"

namespace melvane::engine {

class RecordingInputs {
public:
    struct Input {
        std::string name;
        std::uint32_t type = 0;
        std::string sourceId;  // empty: the card's mix
        bool on = false;
        std::uint32_t level = 100;  // 0..100
    };

    // Asks `server` (may be null) for its sources, which the next list() takes, and tells the names that this will
    // list: any thread, also one that outlives this.
    std::function<std::vector<std::string>()> search(std::shared_ptr<SoundServer> server) const;
    // Lists the card's mix and the sources of `server`, which it asks unless a search has found them.
    void list(const std::shared_ptr<SoundServer>& server);
    // Lists the card's mix and these sources. The first time the default source is on, the card's mix where there is
    // none; later every input keeps its switch and level, and new ones are off.
    void list(std::vector<CaptureSource> sources);

    // nullptr outside the list.
    const Input* at(int input) const;
    // The setting word of an input; all ones outside the list.
    std::uint32_t setting(int input) const;
    bool set(int input, std::uint32_t setting);
    // Any thread.
    std::deque<Input> all() const;

private:
    // What a search leaves for the next list().
    struct Found {
        std::mutex mutex;
        std::optional<std::vector<CaptureSource>> sources;
    };

    const std::shared_ptr<Found> found_ = std::make_shared<Found>();
    mutable std::mutex mutex_;  // held while the inputs change, and where another thread reads them
    // A deque: names that were handed out stay where they are.
    std::deque<Input> inputs_;
};

}  // namespace melvane::engine
