// Backgrounds that are MIDI songs. The one owner of the song that is loaded, of the performance that plays it, of the
// user's settings for its channels, and of the mixer lines that steer its sound.
//
// Used on the user-interface thread. Pending window events run inside ReadMap, OpenMidi, reopen, renewPort, PlayMidi,
// CloseDevice and ApplyChannelSettings, while a thread waits for servers and reads sounds; when OpenMidi or CloseDevice
// is called again from there, the last call counts and the others return. What fails is silent towards the user and
// kept: see failure().
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "audio/mod_Mixer.h"
#include "platform/file_names.h"
#include "platform/music_performance.h"
#include "state/errors.h"
#include "state/midi_state.h"
#include "state/run_state.h"
#include "state/settings.h"

namespace melvane {

enum class MidiFailure {
    none,
    interfaceNotInitialised,
    fileNotPlayable,      // also one that can't be read, or not be taken out of its container
    operationNotApplied,  // a setting or a message
};

class MidiBackground {
public:
    // Everything passed in outlives this.
    MidiBackground(MusicSystem& music, SystemMixer& systemMixer, const RunState& run, Settings& settings,
                   const FileNames& names, Dialogs& dialogs, const DoEvents& doEvents);

    // Called when the whole table of channels has changed.
    std::function<void()> updateChannels = [] {};

    const MidiState& state() const { return state_; }
    mod_Mixer& lines() { return lines_; }

    // --- ports and songs ---

    // At the start of the program: looks for the mixer lines and the MIDI ports.
    void prepare();
    // Lists the ports anew; a choice that is automatic or beyond them becomes the port that is preferred.
    void ReadMap();
    // The same with ports that were listed elsewhere.
    void takePorts(std::vector<std::string> ports);
    // Loads a song; `fileName` (UTF-8) becomes the file that is played. See loaded() and failure().
    void OpenMidi(std::string& fileName);
    // Opens the song again, as after another port was chosen. The user's channel settings stay; nothing without a song.
    void reopen();
    // The same where a device of the machine plays the song, or should: it may have gone or come back since.
    void renewPort();
    // An opening that is under way ends without a song.
    void giveUpOpening() { ++generation_; }
    // From the beginning. False when there is nothing to play or it can't be played.
    bool PlayMidi();
    void StopMidi();
    // As MusicPerformance has it.
    void pause(bool paused);
    // Lets go of the song, the port and everything that belongs to them.
    void CloseDevice();
    // The same, and shows that there are no channels.
    void close();

    // The song goes to a device of the machine, whose sound the card does not have.
    bool onDevice() const { return loaded() && performance_->port() > 0; }
    // The file that the song's sounds are taken from; "" when there is none.
    std::string soundFont() const { return loaded() ? performance_->soundFont() : ""; }
    // The name of the port that was wanted for the song, when the synthesiser took its place.
    const std::string& missingPort() const { return missingPort_; }

    bool loaded() const { return state_.deviceOpen; }
    bool playing() const { return loaded() && performance_->playing(); }
    Handle stream() const { return loaded() ? performance_->stream() : 0; }      // on the card; 0 when nothing plays
    double position() const { return loaded() ? performance_->position() : 0; }  // seconds
    double length() const { return state_.midiLength; }  // seconds, of the last song; 0: it can't be played

    // The song as it would play now, its notes moved as its reader is told; none where no song is loaded.
    MusicPerformance::SongReader reader() const;

    // What went wrong first since the last OpenMidi or PlayMidi began, and the cause in English.
    MidiFailure failure() const { return failure_; }
    const std::string& failureText() const { return failureText_; }

    // --- steps of OpenMidi ---

    // The file to play (UTF-8): the temporary one with the song that was cut out, or `fileName` itself when it is no
    // container. Sets midiSettingsBlock. Throws FileError when the file can't be read or the song can't be written, and
    // as splitContainer.
    std::string ExtractMidi(const std::string& fileName);
    // Takes the file's bytes into midiBytes and reads the channels from them. A file that can't be read leaves all of
    // them unused.
    void ReadFile(const std::string& fileName);
    // Hands the lines of a container's settings to SetSingleChannel, all but those of the percussion channel, and the
    // tone of each to `setTone`. Ends at the first line that is wrong. No song is opened with such lines: it is here
    // for the format's sake.
    void ReadMidi(std::string_view block, const std::function<void(double)>& setTone);

    // --- channels: kept in the table and sent at once; the song's file never changes ---
    // Values are 0..127 and sent as one byte. What was recorded before a failure, be it a channel outside 0..15 or a
    // message that can't be sent, stays.

    void setChannelInstrument(std::int16_t channel, std::int16_t instrument);
    void setChannelVolume(std::int16_t channel, std::int16_t volume);
    void setChannelBalance(std::int16_t channel, std::int16_t balance);
    // Sets the volume, and keeps whether the user has the channel on. Throws BoundsError.
    void switchChannel(std::int16_t channel, std::int16_t volume, bool on);
    // For programs that steer this one; the windows read the table. Throws BoundsError.
    std::int16_t GetInstrument(std::int16_t channel) const;

    // Records the settings of a used channel; off is volume 0. Sends nothing. Throws BoundsError.
    void SetSingleChannel(std::int16_t channel, bool on, std::int16_t volume, std::int16_t balance,
                          std::int16_t instrument);
    // Sends what SetSingleChannel has recorded since the song was read.
    void ApplyChannelSettings();
    // Only these channels are heard, all of them where there is none; another song clears it. Their volumes stay.
    void solo(std::uint16_t channels);
    // A bit for each channel that sounds now.
    std::uint16_t soundingChannels() const { return loaded() ? performance_->soundingChannels() : std::uint16_t{0}; }
    // Back to what the song itself sets; nothing before a song was loaded.
    void MidiRestore();
    // What the user has chosen for the channels.
    ChannelTable<ChannelChoice> choices() const;
    // Makes these the user's choices; what differs is sent.
    void choose(const ChannelTable<ChannelChoice>& wanted);
    // Moves the notes of every used channel but the percussion by `key` semitones, rounded to whole ones.
    void transpose(double key);
    // What is heard of it.
    static int soundingKey(double key) { return roundedCast<int>(key); }

    // --- volume, balance and tone of the whole ---

    // The background's volume. Throws OverflowError for one beyond 16-bit arithmetic.
    void SetMidiVolume();
    void applyVolumeAndBalance();
    // How much louder the synthesiser gets by a volume of 0 to 100 than by itself.
    static double volumeDecibels(int percent);
    // Bass and treble as the user wants them for a run, and as they are without one.
    void setTone();
    void restoreTone();

private:
    struct SongFile {
        std::string name;
        std::string bytes;
    };
    struct ChosenFile {
        std::string bytes;
        bool isTemporary = false;  // it is the temporary file itself
    };

    template <typename Action>
    bool attempt(MidiFailure failure, Action action);
    template <typename Message>
    void tell(Message message);
    std::shared_ptr<MusicPerformance> Initialize(unsigned generation);
    std::string extract(const std::string& fileName, ChosenFile chosen);
    void loadSegment(const std::shared_ptr<MusicPerformance>& performance, unsigned generation);
    void applySettings();
    void closeSong();
    void sendInstrument(std::int16_t channel);
    void sendController(std::int64_t time, std::int16_t channel, std::uint8_t controller, std::int16_t value);
    void sendVolume(std::int16_t channel);
    void sendBalance(std::int16_t channel);

    MusicSystem& music_;
    const RunState& run_;
    Settings& settings_;
    const FileNames& names_;
    DoEvents doEvents_;
    mod_Mixer lines_;
    MidiState state_;
    std::shared_ptr<MusicPerformance> performance_;
    SongFile extracted_;    // what ExtractMidi has read for ReadFile
    std::string openFile_;  // as it was chosen
    std::string missingPort_;
    unsigned generation_ = 0;  // counts what was asked for: an older opening gives up
    MidiFailure failure_ = MidiFailure::none;
    std::string failureText_;
};

// Where what the music throws becomes a value. False when `action` threw.
template <typename Action>
bool MidiBackground::attempt(MidiFailure failure, Action action) {
    try {
        action();
        return true;
    } catch (const std::exception& error) {
        if (failure_ == MidiFailure::none) {
            failure_ = failure;
            failureText_ = error.what();
        }
        return false;
    }
}

}  // namespace melvane
