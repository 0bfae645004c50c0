// Looks for the voice's place beside the windows, and puts the voice there: because the user asked for it, or by itself
// when a voice or a song is new.
#pragma once

#include <QObject>
#include <QTimer>
#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/mixer.h"
#include "mixing/voice_search.h"
#include "rehearsal/waveforms.h"

namespace melvane {

class LineUp : public QObject {
    Q_OBJECT

public:
    struct Calls {
        // The user is at something else that a place is not to come between.
        std::function<bool()> busy;
        // Runs what changes the place, as one step that can be undone; files may be opened for it.
        std::function<void(const std::function<void()>& change)> change;
    };

    // Everything outlives it. When it goes it gives up what it does; what a file keeps busy for longer than a second
    // goes on by itself.
    LineUp(QObject* owner, Mixer& mixer, const Environment& environment, Waveforms& waveforms, Calls calls);
    ~LineUp() override;

    // Of the song and the voice that are chosen now. What was looked for before is given up.
    void start() { begin(Wish::asked); }
    // The same, unless the user wants none or has given the voice a place. What is not found is not told.
    void startByItself();
    void giveUp();

    // For the status line: how far it is, or where the voice went as long as it stays there; "" for neither.
    std::string message() const;

Q_SIGNALS:
    void looking(double done);  // 0..1
    // How it ended: with the voice at its new place, or without; `failure` is "" when there is nothing to tell.
    void linedUp(double certainty);
    void noTrace();
    void notLinedUp(const std::string& failure);

private:
    enum class Wish { asked, byItself };
    struct Work {
        std::atomic<bool> wanted{true};
        std::atomic<double> done{0};
    };
    struct Put {
        std::string song;
        std::string voice;
        VoicePlace place;
        double certainty = 0;
    };

    void begin(Wish wish);
    void look();
    // It goes on by itself until it notices that it is not wanted any more.
    void leave();
    void end(const VoiceFound& found);
    void place(const VoiceFound& found);
    bool areChosen(const std::string& song, const std::string& voice) const;

    Mixer& mixer_;
    Environment environment_;
    const Calls calls_;
    Waveforms& waveforms_;
    Wish wish_ = Wish::asked;  // of the one under way, or the last
    VoiceSearch search_;
    VoicePlace before_;
    bool takesTime_ = false;
    std::optional<Put> put_;
    std::shared_ptr<Work> work_ = std::make_shared<Work>();
    std::future<VoiceFound> found_;              // while it looks
    std::vector<std::future<VoiceFound>> left_;  // what may still go on
    QTimer timer_;                               // runs while it looks
};

}  // namespace melvane
