// Hands the newest record from the user-interface thread to the mixing thread.
#pragma once

#include <atomic>
#include <mutex>

namespace melvane::engine {

template <typename Record>
class Mailbox {
public:
    // --- user-interface thread ---
    void put(const Record& record) {
        const std::lock_guard lock(mutex_);
        record_ = record;
        unread_ = true;
    }
    Record last() const {
        const std::lock_guard lock(mutex_);
        return record_;
    }

    // --- mixing thread ---
    // False when there is nothing newer than what was taken last. The default record waits at the beginning. The lock
    // is taken only for a new record, and held for no longer than copying it takes.
    bool take(Record& record) {
        if (!unread_) return false;
        const std::lock_guard lock(mutex_);
        record = record_;
        unread_ = false;
        return true;
    }

private:
    mutable std::mutex mutex_;
    Record record_;
    std::atomic<bool> unread_{true};
};

}  // namespace melvane::engine
