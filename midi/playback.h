// MIDI backgrounds: the ports, and the song that is loaded and played. Used on the user-interface thread; pending
// window events run inside OpenMidi and CloseDevice, and when these are called again from there, the last call counts.
#pragma once

#include <string>

#include "midi/channel_settings.h"
#include "midi/midi_device.h"
#include "platform/file_names.h"
#include "platform/music_performance.h"
#include "state/midi_state.h"
#include "state/run_state.h"
#include "state/settings.h"

namespace melvane {

// Why there is no song that could be played.
enum class MidiFailure { none, interfaceNotInitialised, fileNotPlayable };

class MidiPlayback {
public:
    MidiPlayback(MusicSystem& music, MidiDevice& device, MidiState& state, MidiChannels& channels, const RunState& run,
                 Settings& settings, const FileNames& names, const DoEvents& doEvents)
        : music_(music),
          device_(device),
          state_(state),
          channels_(channels),
          run_(run),
          settings_(settings),
          names_(names),
          doEvents_(doEvents) {}

    // Lists the ports and settles the one to use. At the start of the program, before a song is opened.
    void ReadMap();
    // Loads a song; `fileName` (UTF-8) becomes the file that is played. See loaded() and failure().
    void OpenMidi(std::string& fileName);
    // Opens the song again, as after another port was chosen. The user's channel settings stay; nothing without a song.
    void reopen();
    // From the beginning. False when there is nothing to play or it can't be played.
    bool PlayMidi();
    void StopMidi();
    // Lets go of the song, the port and everything that belongs to them.
    void CloseDevice();

    bool loaded() const { return state_.deviceOpen; }
    bool playing() const;
    Handle stream() const;                                    // on the card; 0 when nothing plays
    double position() const;                                  // seconds
    double length() const { return state_.midiLength; }       // seconds, of the last song; 0: it can't be played
    MidiFailure failure() const { return failure_; }          // of the last OpenMidi or PlayMidi
    const std::string& failureText() const { return text_; }  // what was wrong, in English

private:
    void Initialize();
    void close();
    bool openDevice(std::string& fileName);
    void loadSegment(const std::string& fileName);
    void setFailure(MidiFailure failure, const std::string& text);

    MusicSystem& music_;
    MidiDevice& device_;
    MidiState& state_;
    MidiChannels& channels_;
    const RunState& run_;
    Settings& settings_;
    const FileNames& names_;
    DoEvents doEvents_;
    std::string openFile_;     // as it was chosen
    unsigned generation_ = 0;  // counts what was asked for: an older opening gives up
    MidiFailure failure_ = MidiFailure::none;
    std::string text_;
};

}  // namespace melvane
