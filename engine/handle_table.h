// What the library's handles stand for.
#pragma once

#include <memory>
#include <mutex>
#include <unordered_map>
#include <variant>
#include <vector>

#include "engine/capture/capture.h"
#include "engine/graph/channel.h"
#include "engine/graph/tempo_source.h"

namespace melvane::engine {

// A playable channel; with the source that moves its key where it is a tempo stream.
struct Playback {
    std::shared_ptr<Channel> channel;
    std::shared_ptr<TempoSource> tempo;
};
using Decoding = std::shared_ptr<PcmSource>;  // the source of a tempo stream to be
using Attached = std::shared_ptr<Effect>;     // to a channel
using Recording = std::shared_ptr<Capture>;

// Any thread: the capture callback asks for its encoder on the capture thread, and files are opened on others.
class HandleTable {
public:
    using Thing = std::variant<Playback, Decoding, Attached, Recording>;

    // `owner`: the handle that it is freed with; 0 where it stands alone.
    Handle keep(Thing thing, Handle owner = 0) {
        const std::lock_guard lock(mutex_);
        entries_.emplace(++last_, Entry{std::move(thing), owner});
        return last_;
    }
    void setOwner(Handle handle, Handle owner) {
        const std::lock_guard lock(mutex_);
        if (const auto found = entries_.find(handle); found != entries_.end()) found->second.owner = owner;
    }

    // What `use` makes of the thing behind `handle`, a null pointer when that is no `Kind`. Under the lock.
    template <typename Kind, typename Use>
    auto ask(Handle handle, Use use) const {
        const std::lock_guard lock(mutex_);
        const auto found = entries_.find(handle);
        return use(found == entries_.end() ? nullptr : std::get_if<Kind>(&found->second.thing));
    }
    // A copy of the thing; an empty one when it is no `Kind`.
    template <typename Kind>
    Kind find(Handle handle) const {
        return ask<Kind>(handle, [](const Kind* thing) { return thing ? *thing : Kind{}; });
    }

    // With what it owns.
    void forget(Handle handle) {
        take([handle](Handle kept, const Entry& entry) { return kept == handle || entry.owner == handle; });
    }
    std::vector<Thing> takeAll() {
        return take([](Handle, const Entry&) { return true; });
    }
    // The captures that neither record nor wait for their encoder.
    std::vector<Thing> takeFinishedCaptures() {
        return take([](Handle, const Entry& entry) {
            const auto* capture = std::get_if<Recording>(&entry.thing);
            return capture && !(*capture)->capturing() && !(*capture)->encoderRunning();
        });
    }

private:
    struct Entry {
        Thing thing;
        Handle owner;
    };

    // Handed out, so that they end outside the lock: a capture waits for its thread, which may be asking for a handle.
    template <typename Predicate>
    std::vector<Thing> take(Predicate unwanted) {
        std::vector<Thing> taken;
        const std::lock_guard lock(mutex_);
        std::erase_if(entries_, [&](auto& kept) {
            if (!unwanted(kept.first, kept.second)) return false;
            taken.push_back(std::move(kept.second.thing));
            return true;
        });
        return taken;
    }

    mutable std::mutex mutex_;
    std::unordered_map<Handle, Entry> entries_;
    Handle last_ = 0;
};

}  // namespace melvane::engine
