// Looks for MIDI ports and recording inputs while the windows go on.
#pragma once

#include <QObject>
#include <QTimer>
#include <future>
#include <string>
#include <vector>

#include "app/mixer.h"

namespace melvane {

class DeviceSearch : public QObject {
    Q_OBJECT

public:
    // Everything outlives it. What it still waits for when it goes is left behind.
    DeviceSearch(QObject* owner, Mixer& mixer, const Environment& environment);

    // Unless it is under way. The inputs stay as they are during a run, which uses them.
    void start();

Q_SIGNALS:
    // The ports, or the inputs, are now listed as they are.
    void found();

private:
    void look();

    Mixer& mixer_;
    Environment environment_;
    std::future<std::vector<std::string>> ports_;
    std::future<std::vector<std::string>> inputs_;
    QTimer timer_;  // runs while something is looked for
};

}  // namespace melvane
