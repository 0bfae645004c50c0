// The choice of background, vocal and destination behind the browse buttons.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "midi/midi_background.h"
#include "platform/dialogs.h"
#include "settings/modLang.h"
#include "state/mix_state.h"
#include "state/product.h"

namespace melvane {

// The numbers of the fields, and of what browses for them.
inline constexpr int kBackgroundField = 0;
inline constexpr int kVocalField = 1;
inline constexpr int kDestinationField = 2;
// Song or voice: the user is asked.
inline constexpr int kSongOrVoice = 3;

class SourceFiles {
public:
    // Everything passed in outlives this. The disk is asked while window events run.
    SourceFiles(MixState& state, MidiBackground& midi, const modLang& language, Dialogs& dialogs,
                const DoEvents& doEvents)
        : run_(state.run),
          fields_(state.fields),
          settings_(state.settings),
          tags_(state.tags),
          midi_(midi),
          language_(language),
          dialogs_(dialogs),
          doEvents_(doEvents) {}

    // Told of every file that was taken, and for which field: 0 background, 1 vocal, 2 destination.
    std::function<void(int index, const std::string& path)> taken = [](int, const std::string&) {};
    // Where a song and a voice were taken last; the dialogs start there when there is no better place.
    std::array<std::string, 2> lastFolder;
    // A MIDI song is being opened; window events run meanwhile.
    bool opening() const { return opening_; }
    // The program is about to end: nobody waits for a disk any more, which then counts as having nothing.
    void giveUp();
    bool givenUp() const { return givenUp_; }
    // Opens the song again, on the port that was chosen.
    void reopenMidi();

    // 0 background, 1 vocal, 2 destination. A cancelled dialog changes nothing.
    void BR_Click(int index);

    // Takes a new background: loads it when it is a MIDI song, proposes the vocal of the same name and empties the
    // destination. What was chosen for the tags of another song goes.
    void chooseBackground(const std::string& path);

    // Takes what was dropped on the window or chosen again: a song or a voice, or a folder for the mix; see fieldFor.
    // With both sources there and no destination yet, proposes one. False when it is none of these.
    bool take(const std::string& path, std::optional<int> pointedAt = {});

    // Puts what is to be taken in the order in which it is: a song may bring a voice, and empties the destination; what
    // may be either then has one field left.
    void putInOrder(std::vector<std::string>& paths, std::optional<int> pointedAt);

    // Takes files that were chosen before, "" for none; whether what stands at the destination may be replaced is asked
    // anew.
    void restore(const PathFields& files);

    // Asks when something else stands at the destination than when that was chosen, such as a mix that was finished
    // since. True when a run may replace it.
    bool mayReplaceDestination();

private:
    // Tells one file from another that took its place; none where there is no file.
    using Standing = std::optional<std::pair<std::uintmax_t, std::filesystem::file_time_type>>;

    template <typename Question>
    auto ask(Question question);
    bool isThere(const std::string& path);
    Standing standingAt(const std::string& path);
    void chooseVocal(const std::string& path);
    void chooseDestination(const std::string& path);
    void proposeDestination(const std::string& background);
    // Asks first where there is a file.
    void offerDestination(const std::string& chosen);
    bool agreesToOverwrite();
    std::string startFolder(std::size_t kind, const std::string& file);
    void browseBackground();
    void openMidi();
    void whileOpening(const std::function<void()>& action);
    void browseVocal();
    void browseDestination();
    bool sourcesChosen();
    std::optional<int> askForField(const std::string& path);
    std::string soundFilter(bool song) const;

    RunState& run_;
    PathFields& fields_;
    const Settings& settings_;
    TagChoice& tags_;
    MidiBackground& midi_;
    const modLang& language_;
    Dialogs& dialogs_;
    DoEvents doEvents_;
    bool opening_ = false;
    bool givenUp_ = false;
    std::string agreedPath_;   // a destination
    Standing agreedStanding_;  // and what the user knows to stand there
};

// What the names of files with sound in them end with; MIDI songs are among those for a song.
std::vector<std::string_view> soundEndings(bool song);

// The field that takes what has this name, as the disk tells; `pointedAt` is the one that it was dropped on. A MIDI
// file is a song and a folder is where the mix goes, as is an MP3 that was dropped on that field. Other sound goes to
// the song or the voice that it was dropped on; else an MP3 or OGG is a song, a WAV a voice, and what may be either
// goes to the one of the two that is empty. None takes the rest.
std::optional<int> fieldFor(const std::string& path, std::optional<int> pointedAt, const PathFields& chosen);

// The background's name as an MP3, numbered from 2 on until no such file exists on the disk.
std::string proposedDestination(const std::string& background);
// The name with the extension ".mp3": appended where the file name has no point; otherwise the last four
// characters of the file name make way for it, whatever they are.
std::string withMp3Extension(const std::string& path);

}  // namespace melvane
