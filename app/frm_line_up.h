// Looks for the voice's place beside the window, and tells the timeline of it.
#pragma once

#include <QObject>
#include <QTimer>
#include <atomic>
#include <future>
#include <memory>

#include "app/mixer.h"
#include "mixing/voice_search.h"
#include "rehearsal/frmTimeline.h"

namespace melvane {

class LineUp : public QObject {
    Q_OBJECT

public:
    // Everything outlives it. When it goes it waits until what it does has given up, which takes a moment.
    LineUp(QObject* owner, Mixer& mixer, const Environment& environment);
    ~LineUp() override;

    // Of the song and the voice that are chosen now. One at a time.
    void start(frmTimeline* timeline);
    void giveUp() { work_->wanted = false; }

private:
    struct Work {
        std::atomic<bool> wanted{true};
        std::atomic<double> done{0};
    };

    void look();
    void tell(const VoiceFound& found);

    Mixer& mixer_;
    Environment environment_;
    frmTimeline* timeline_ = nullptr;
    VoiceSearch search_;
    std::shared_ptr<Work> work_ = std::make_shared<Work>();
    std::future<VoiceFound> found_;
    QTimer timer_;  // runs while it looks
};

}  // namespace melvane
