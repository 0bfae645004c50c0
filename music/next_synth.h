// The synthesiser that plays next. It holds the sounds that the one that plays now is going to need.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "music/live_channels.h"
#include "music/synth.h"

namespace melvane::music {

// Any thread. Everything but askFor waits until sounds have been read from the file.
class NextSynth : public std::enable_shared_from_this<NextSynth> {
public:
    // Plays with this font from now on, with none when "". Throws MusicError when it can't be read.
    void use(const std::string& font);
    void hold(const Song& song);
    // Makes the synthesiser, with all the sounds that were asked for.
    void prepare();
    std::unique_ptr<Synth> take();
    // Lets go of all sounds.
    void clear();

    // Has the sounds of a patch read on a thread of its own; on this one where the system has none left. Tells when
    // they are there.
    std::shared_ptr<const std::atomic<Sounds>> askFor(int channel, const Patch& patch);

private:
    struct Asked {
        int channel;
        Patch patch;
        std::shared_ptr<std::atomic<Sounds>> sounds;
    };

    void readAsked();
    // Under the lock.
    Synth& synth();
    void holdAsked();

    std::mutex mutex_;  // held while the file is read
    std::string font_;
    std::unique_ptr<Synth> synth_;
    HeldSounds held_;  // what the synthesiser is to hold, while there is none

    std::mutex askedMutex_;  // never held for long
    std::vector<Asked> asked_;
};

}  // namespace melvane::music
