// Song and voice on the card, as the user has set them: opened, played, steered while they sound. Whoever listens to
// the card, an encoder or only an ear, it is the same graph.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "effects/effect_chain.h"
#include "midi/midi_background.h"
#include "mixing/environment.h"
#include "state/mix_state.h"

namespace melvane {

class MixGraph {
public:
    // Everything outlives the graph.
    MixGraph(const Environment& environment, MixState& state, EffectChain& effects, MidiBackground& midi);

    // Opens song and voice of the run state's paths, or the one of them that there is, while window events run; given
    // up once it is not `wanted` any more. False: nothing is open, and the run state's failure tells why.
    bool open(const std::function<bool()>& wanted);
    // Both begin on the card's next frame, and the card is held behind the song's last one. The card is held meanwhile.
    void playFiles();
    // The same for a MIDI song, which takes a moment. False when it can't be played.
    bool playSong();
    // In the place of song and voice, which are closed, plays `mix`: the sum of both, as it was kept. No settings
    // apply.
    void playKept(std::shared_ptr<PcmSource> mix);
    // Attaches the effects, and sets everything to what the user chose.
    void applySettings();
    // Not a frame is lost or repeated in between; a port of the machine is silent, and strikes again what sounded.
    void pause();
    void goOn();
    // Closes what an earlier mix may have left, so that the next begins with the song as its file sets it.
    void closeLast();
    // Ends what plays and closes it.
    void close();

    // What the user moves, on what plays.
    void SetBassVolume();
    void applyKey();
    void applySyncOffset();
    void applyTrim();

    // Of the song, or of a voice alone, in frames; of a MIDI song the longest that it may become.
    std::int64_t length() const { return length_; }
    // What of the song has left the card, in frames.
    std::int64_t position() const;
    // The song is over; a MIDI song may fade sooner than at its full length.
    bool ended() const;
    // Which of the sources could no longer be read.
    RunFailure lostSource() const;

private:
    bool isMidi() const { return run_.isMidiBackground && !kept_; }
    bool isVoiceAlone() const { return run_.backgroundPath.empty(); }
    Handle openFile(const std::string& path, std::uint32_t flags, const std::function<bool()>& wanted,
                    double driftPpm = 0);
    void freeChannel(std::uint32_t& channel);

    const Environment with_;
    RunState& run_;
    const Settings& settings_;
    EffectChain& effects_;
    MidiBackground& midi_;
    bool kept_ = false;  // a kept mix plays
    std::int64_t length_ = 0;
    std::int64_t voiceLength_ = 0;
};

// While one lives no frame is mixed: what is set up starts on one frame.
class CardHold {
public:
    explicit CardHold(AudioLibrary& library) : library_(library) { library_.holdCard(); }
    ~CardHold() { library_.resumeCard(); }
    CardHold(const CardHold&) = delete;
    CardHold& operator=(const CardHold&) = delete;

private:
    AudioLibrary& library_;
};

}  // namespace melvane
