#include "midi/midi_background.h"

#include <cctype>
#include <iterator>
#include <utility>

#include "base/paths.h"
#include "midi/channel_reader.h"
#include "midi/karaoke_container.h"
#include "midi/song_file.h"
#include "state/window_patience.h"

namespace melvane {

namespace {

constexpr std::int32_t kAutomaticPort = -5;
constexpr std::int32_t kNoPort = -1;
constexpr int kDefaultPort = 0;
// More than any song uses: a port that counts them refuses no channel.
constexpr int kChannelGroups = 80;
constexpr std::string_view kPreferredPorts[] = {"MICROSOFT GS WAVETABLE", "MICROSOFT MIDI MAPPER"};

std::string upperCase(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

std::int32_t automaticPort(const std::vector<std::string>& descriptions) {
    for (const std::string_view wanted : kPreferredPorts)
        for (std::size_t i = 0; i < descriptions.size(); ++i)
            if (upperCase(descriptions[i]).find(wanted) != std::string::npos) return static_cast<std::int32_t>(i + 1);
    return kNoPort;
}

}  // namespace

MidiBackground::MidiBackground(MusicSystem& music, SystemMixer& systemMixer, const RunState& run, Settings& settings,
                               const FileNames& names, Dialogs& dialogs, const DoEvents& doEvents)
    : music_(music),
      run_(run),
      settings_(settings),
      names_(names),
      doEvents_(doEvents),
      lines_(systemMixer, settings, dialogs) {}

void MidiBackground::prepare() {
    lines_.OpenMixer();
    lines_.keepSpeakerTone();
    ReadMap();
}

void MidiBackground::ReadMap() {
    const auto wanted = [this, generation = generation_] { return generation == generation_; };
    attempt(MidiFailure::interfaceNotInitialised, [&] {
        if (auto ports = whileWanted(doEvents_, wanted, music_.portSearch())) takePorts(std::move(*ports));
    });
}

void MidiBackground::takePorts(std::vector<std::string> ports) {
    state_.midiPorts = std::move(ports);
    const bool there = followDevice(settings_.knownPort, settings_.midiPort, state_.midiPorts);
    if (settings_.midiPort <= std::ssize(state_.midiPorts) && settings_.midiPort != kAutomaticPort) return;
    settings_.midiPort = automaticPort(state_.midiPorts);
    if (!there) settings_.knownPort.number = settings_.midiPort;  // it may come back
}

// None when something else was asked for meanwhile.
std::shared_ptr<MusicPerformance> MidiBackground::Initialize(unsigned generation) {
    std::shared_ptr<MusicPerformance> performance = music_.createPerformance(state_.midiPorts);
    const bool there = followDevice(settings_.knownPort, settings_.midiPort, state_.midiPorts);
    const bool known = there && settings_.midiPort >= 1 && settings_.midiPort <= std::ssize(state_.midiPorts);
    const std::string name = settings_.knownPort.name;
    const auto open = [performance, port = known ? settings_.midiPort : kDefaultPort] {
        performance->setPort(port, kChannelGroups);
        return performance->port();
    };
    const auto port = whileWanted(
        doEvents_, [&] { return generation == generation_; }, open);
    if (!port) return nullptr;
    missingPort_ = !there || (known && *port == kDefaultPort) ? name : std::string();
    return performance;
}

void MidiBackground::OpenMidi(std::string& fileName) {
    const unsigned generation = ++generation_;
    const auto current = [&] { return generation == generation_; };
    openFile_ = fileName;
    failure_ = MidiFailure::none;
    closeSong();
    if (!current()) return;
    state_.midiLength = 0;
    state_.touched = {};
    state_.songSettings = {};
    state_.trackNames = {};
    state_.notes.clear();
    state_.soloed = 0;
    std::shared_ptr<MusicPerformance> performance;
    const auto extracts = [&] {
        const auto read = [fileName, temporary = names_.temporaryMidiFile()] {
            return ChosenFile{readSongFile(fileName), isSameFile(fileName, temporary)};
        };
        if (auto chosen = whileWanted(doEvents_, current, read)) fileName = extract(fileName, std::move(*chosen));
    };
    if (!attempt(MidiFailure::fileNotPlayable, extracts) || !current() ||
        !attempt(MidiFailure::interfaceNotInitialised, [&] { performance = Initialize(generation); }) || !performance)
        return;
    doEvents_();
    if (current()) ReadFile(fileName);
    if (current()) attempt(MidiFailure::fileNotPlayable, [&] { loadSegment(performance, generation); });
    if (!current()) return whileEventsRun(doEvents_, [&] { performance.reset(); });
    performance_ = std::move(performance);
    applySettings();
    if (!current()) return;
    state_.midiLoaded = asFlag(true);
    if (!loaded()) closeSong();  // nothing to hold the port for
}

std::string MidiBackground::ExtractMidi(const std::string& fileName) {
    return extract(fileName, {readSongFile(fileName), isSameFile(fileName, names_.temporaryMidiFile())});
}

std::string MidiBackground::extract(const std::string& fileName, ChosenFile chosen) {
    state_.midiSettingsBlock.clear();
    SongFile song{fileName, std::move(chosen.bytes)};
    const auto container = splitContainer(song.bytes);
    const std::string temporary = names_.temporaryMidiFile();
    // Who opens the temporary file itself keeps it; a player does not mind what stands behind a song.
    if (container) {
        state_.midiSettingsBlock = container->settings;
        song.name = temporary;
        if (!chosen.isTemporary) {
            song.bytes.resize(container->song.size());
            writeSongFile(temporary, song.bytes);
        }
    } else if (!chosen.isTemporary) {
        removeSongFile(temporary);
    }
    extracted_ = std::move(song);
    return extracted_.name;
}

void MidiBackground::ReadFile(const std::string& fileName) {
    SongFile song = std::exchange(extracted_, {});
    if (song.name != fileName) {
        song.bytes.clear();
        attempt(MidiFailure::fileNotPlayable, [&] { song.bytes = readSongFile(fileName); });
    }
    state_.midiBytes = std::move(song.bytes);
    readChannels(state_.midiBytes, state_, doEvents_);
}

void MidiBackground::ReadMidi(std::string_view block, const std::function<void(double)>& setTone) {
    attempt(MidiFailure::operationNotApplied, [&] {
        readStoredChannels(block, [&](const StoredChannel& stored) {
            setTone(stored.tone);
            state_.fileSettingsFound = true;
            if (stored.channel != kPercussionChannel)
                SetSingleChannel(stored.channel, stored.on, stored.volume, stored.balance, stored.instrument);
        });
    });
}

void MidiBackground::loadSegment(const std::shared_ptr<MusicPerformance>& performance, unsigned generation) {
    const auto segment = whileEventsRun(doEvents_, [&, bytes = state_.midiBytes] { return music_.loadSegment(bytes); });
    const auto download = [performance, segment] {
        performance->download(segment);
        return true;
    };
    if (!whileWanted(
            doEvents_, [&] { return generation == generation_; }, download))
        return;
    state_.midiLength = static_cast<float>(segment->length());
    for (std::int16_t c = 0; c < kMidiChannels; ++c) {
        state_.songSettings[c] = segment->settings(static_cast<std::uint8_t>(c));
        state_.trackNames[c] = segment->trackName(static_cast<std::uint8_t>(c));
    }
    state_.notes = segment->notes();
    state_.deviceOpen = true;
}

void MidiBackground::applySettings() {
    const auto apply = [this](auto action) { attempt(MidiFailure::operationNotApplied, action); };
    apply([&] { performance_->setMasterTempo(1.0); });
    // The container's settings are not applied: the channels are as the song itself sets them.
    ReadMidi({}, [](double) {});
    ApplyChannelSettings();
    apply([&] { SetMidiVolume(); });
    apply(updateChannels);
    transpose(run_.key);
}

MusicPerformance::SongReader MidiBackground::reader() const {
    return loaded() ? performance_->reader() : nullptr;
}

void MidiBackground::reopen() {
    if (openFile_.empty()) return;
    auto wanted = state_.ChannelInfo;
    const auto initial = state_.InitialChannel;
    const auto touched = state_.touched;
    const std::uint16_t soloed = state_.soloed;
    std::string fileName = openFile_;
    const unsigned generation = generation_ + 1;
    OpenMidi(fileName);
    if (generation != generation_) return;
    for (std::int16_t c = 0; c < kMidiChannels; ++c) {
        wanted[c].instrumentChanged = asFlag(touched[c].instrument);
        wanted[c].volumeChanged = asFlag(touched[c].volume);
        wanted[c].balanceChanged = asFlag(touched[c].balance);
    }
    state_.ChannelInfo = wanted;
    // The reader leaves an instrument that it does not find as it is, which is the user's here.
    state_.InitialChannel = initial;
    state_.touched = touched;
    ApplyChannelSettings();
    if (soloed != 0) solo(soloed);
    updateChannels();
}

void MidiBackground::renewPort() {
    if (!onDevice() && missingPort_.empty()) return;
    const unsigned generation = generation_;
    ReadMap();
    if (generation == generation_) reopen();
}

bool MidiBackground::PlayMidi() {
    failure_ = MidiFailure::none;
    if (!loaded()) return false;
    const auto performance = performance_;
    return attempt(MidiFailure::fileNotPlayable,
                   [&] {
                       whileEventsRun(doEvents_, [&] { performance->makeReady(); });
                       if (performance == performance_) performance->playSegment();
                   }) &&
           performance == performance_;
}

void MidiBackground::StopMidi() {
    if (loaded()) attempt(MidiFailure::operationNotApplied, [&] { performance_->stop(); });
}

void MidiBackground::pause(bool paused) {
    if (loaded()) attempt(MidiFailure::operationNotApplied, [&] { performance_->pause(paused); });
}

void MidiBackground::CloseDevice() {
    ++generation_;
    openFile_.clear();
    closeSong();
}

void MidiBackground::close() {
    CloseDevice();
    updateChannels();
}

// Taken out first: what a window event opens meanwhile is not closed.
void MidiBackground::closeSong() {
    if (!performance_) return;
    auto performance = std::move(performance_);
    state_.deviceOpen = false;
    const auto apply = [this](auto action) {
        attempt(MidiFailure::operationNotApplied, action);
        doEvents_();
    };
    const auto applyBeside = [&](auto action) { apply([&] { whileEventsRun(doEvents_, action); }); };
    apply([&] { performance->stop(); });
    doEvents_();
    applyBeside([&] { performance->unload(); });
    applyBeside([&] { performance->closeDown(kChannelGroups); });
    applyBeside([&] { performance.reset(); });
}

}  // namespace melvane
