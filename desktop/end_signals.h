// SIGTERM, SIGINT and SIGHUP, which ask the program to end, as events of the window's thread.
#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>

namespace melvane {

// One lives at a time.
class EndSignals {
public:
    // `act` is called in the event loop when one of them came. The same signal again ends the program at once. A SIGHUP
    // that was ignored stays so.
    explicit EndSignals(const std::function<void()>& act);
    ~EndSignals();
    EndSignals(const EndSignals&) = delete;
    EndSignals& operator=(const EndSignals&) = delete;

private:
    int ends_[2] = {-1, -1};
    std::unique_ptr<QSocketNotifier> arrived_;
};

}  // namespace melvane
