// What the library's handles stand for.
#pragma once

#include <memory>
#include <mutex>
#include <unordered_map>
#include <variant>
#include <vector>

#include "engine/capture/capture.h"
#include "engine/graph/channel.h"

namespace melvane::engine {

// Any thread: the capture callback asks for its encoder on the capture thread, and files are opened on others.
class HandleTable {
public:
    // A playable channel, the source of a tempo stream, an effect on a channel, a capture.
    using Thing = std::variant<std::shared_ptr<Channel>, std::shared_ptr<PcmSource>, std::shared_ptr<Effect>,
                               std::shared_ptr<Capture>>;

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
    // Null when the handle stands for something else.
    template <typename Kind>
    std::shared_ptr<Kind> find(Handle handle) const {
        const std::lock_guard lock(mutex_);
        return findLocked<Kind>(handle);
    }
    // Under the lock, because the capture thread asks, which must never be the last owner of its capture.
    bool encoderRunning(Handle handle) const {
        const std::lock_guard lock(mutex_);
        const auto capture = findLocked<Capture>(handle);
        return capture && capture->encoderRunning();
    }

    // With what it owns.
    void forget(Handle handle) {
        take([handle](Handle kept, const Entry& entry) { return kept == handle || entry.owner == handle; });
    }
    std::vector<Thing> takeAll() {
        return take([](Handle, const Entry&) { return true; });
    }
    // The captures that neither record nor wait for their encoder.
    void forgetFinishedCaptures() {
        take([](Handle, const Entry& entry) {
            const auto* capture = std::get_if<std::shared_ptr<Capture>>(&entry.thing);
            return capture && !(*capture)->capturing() && !(*capture)->encoderRunning();
        });
    }

private:
    struct Entry {
        Thing thing;
        Handle owner;
    };

    template <typename Kind>
    std::shared_ptr<Kind> findLocked(Handle handle) const {
        const auto found = entries_.find(handle);
        const auto* thing =
            found == entries_.end() ? nullptr : std::get_if<std::shared_ptr<Kind>>(&found->second.thing);
        return thing ? *thing : nullptr;
    }
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
