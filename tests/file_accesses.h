// How often a file is opened and put in place, anew or instead of another.
#pragma once

#include <sys/inotify.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>
#include <utility>

namespace melvane::test {

using Accesses = std::pair<int, int>;  // opened, replaced

// While `action` runs; the file's folder must be there.
inline Accesses accessesTo(const std::filesystem::path& file, const std::function<void()>& action) {
    const int watch = inotify_init1(IN_NONBLOCK);
    // Without what lies between them, two equal events in a row would be told as one.
    inotify_add_watch(watch, file.parent_path().c_str(), IN_OPEN | IN_CLOSE | IN_CREATE | IN_MOVED_TO);
    action();
    alignas(inotify_event) char events[1 << 16];
    const auto size = read(watch, events, sizeof events);
    close(watch);
    Accesses counted;
    for (ssize_t at = 0; at < size;) {
        const auto* event = reinterpret_cast<const inotify_event*>(events + at);
        const bool same = event->len > 0 && file.filename() == event->name;
        if (same && (event->mask & IN_OPEN)) ++counted.first;
        if (same && (event->mask & (IN_CREATE | IN_MOVED_TO))) ++counted.second;
        at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
    }
    return counted;
}

}  // namespace melvane::test
