// For work that nobody waits for.
#pragma once

#ifdef __linux__
#include <sys/resource.h>
#endif

namespace melvane {

// Of the thread that calls, from now on; where threads have no priority of their own nothing changes.
inline void lowerPriority() {
#ifdef __linux__
    constexpr int kNice = 10;
    setpriority(PRIO_PROCESS, 0, kNice);  // on Linux niceness is a thread's own
#endif
}

}  // namespace melvane
