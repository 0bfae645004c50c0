#include "midi/playback.h"

#include <cctype>
#include <exception>
#include <iterator>
#include <string_view>

#include "midi/channel_reader.h"
#include "midi/karaoke_container.h"

namespace melvane {

namespace {

constexpr std::int32_t kAutomaticPort = -5;
constexpr std::int32_t kNoPort = -1;
constexpr int kDefaultPort = 0;
constexpr int kChannelGroups = 80;
constexpr std::string_view kPreferredPorts[] = {"MICROSOFT GS WAVETABLE", "MICROSOFT MIDI MAPPER"};

template <typename Action>
void ignoringErrors(Action action) {
    try {
        action();
    } catch (const std::exception&) {
    }
}

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

void MidiPlayback::ReadMap() {
    std::unique_ptr<MusicPerformance> ports;
    int count = 0;
    ignoringErrors([&] { device_.loader = music_.createLoader(); });
    ignoringErrors([&] {
        ports = music_.createPerformance();
        count = ports->portCount();
    });
    state_.midiPorts.clear();
    for (int port = 1; port <= count; ++port) {
        state_.midiPorts.emplace_back();
        ignoringErrors([&] { state_.midiPorts.back() = ports->portDescription(port); });
    }
    if (settings_.midiPort > count || settings_.midiPort == kAutomaticPort)
        settings_.midiPort = automaticPort(state_.midiPorts);
}

void MidiPlayback::Initialize() {
    auto performance = music_.createPerformance();
    performance->init();
    const bool known = settings_.midiPort >= 1 && settings_.midiPort <= std::ssize(state_.midiPorts);
    performance->setPort(known ? settings_.midiPort : kDefaultPort, kChannelGroups);
    device_.performance = std::move(performance);
}

void MidiPlayback::OpenMidi(std::string& fileName) {
    const unsigned generation = ++generation_;
    const auto current = [&] { return generation == generation_; };
    openFile_ = fileName;
    setFailure(MidiFailure::none, {});
    close();
    if (!current()) return;
    state_.midiLength = 0;
    if (!openDevice(fileName)) return;
    doEvents_();
    if (current()) ReadFile(fileName, state_, doEvents_);
    if (!current()) return;

    loadSegment(fileName);
    ignoringErrors([&] { device_.performance->setMasterTempo(1.0); });
    // The container's settings are not applied: the channels are as the song itself sets them.
    ReadMidi({}, state_, channels_, [](double) {});
    channels_.ApplyChannelSettings();
    if (!current()) return;
    ignoringErrors([&] { channels_.SetMidiVolume(); });
    ignoringErrors([&] { channels_.updateChannels(); });
    channels_.transpose(run_.key);
    if (device_.segment) state_.midiLength = static_cast<float>(device_.segment->length());
    state_.midiLoaded = -1;
    if (!loaded()) close();  // nothing to hold the port for
}

bool MidiPlayback::openDevice(std::string& fileName) {
    auto failure = MidiFailure::fileNotPlayable;
    try {
        fileName = ExtractMidi(fileName, state_, names_);
        failure = MidiFailure::interfaceNotInitialised;
        Initialize();
        return true;
    } catch (const std::exception& error) {
        setFailure(failure, error.what());
        return false;
    }
}

void MidiPlayback::loadSegment(const std::string& fileName) {
    try {
        if (!device_.loader) throw MusicError("no loader");
        auto segment = device_.loader->loadSegment(fileName);
        device_.performance->download(segment);
        device_.segment = std::move(segment);
        state_.deviceOpen = true;
    } catch (const std::exception& error) {
        setFailure(MidiFailure::fileNotPlayable, error.what());
    }
}

void MidiPlayback::reopen() {
    if (openFile_.empty()) return;
    auto wanted = state_.ChannelInfo;
    std::string fileName = openFile_;
    const unsigned generation = generation_ + 1;
    OpenMidi(fileName);
    if (generation != generation_) return;
    for (std::int16_t c = 0; c < kMidiChannels; ++c) {
        const auto flag = [](bool changed) { return static_cast<std::int16_t>(changed ? -1 : 0); };
        const InitialSettings& initial = state_.InitialChannel[c];
        wanted[c].instrumentChanged = flag(wanted[c].instrument != initial.instrument);
        wanted[c].volumeChanged = flag(wanted[c].volume != initial.volume);
        wanted[c].balanceChanged = flag(wanted[c].balance != initial.balance);
    }
    state_.ChannelInfo = wanted;
    channels_.ApplyChannelSettings();
    channels_.updateChannels();
}

bool MidiPlayback::PlayMidi() {
    if (!loaded()) return false;
    try {
        device_.performance->playSegment();
        return true;
    } catch (const std::exception& error) {
        setFailure(MidiFailure::fileNotPlayable, error.what());
        return false;
    }
}

void MidiPlayback::StopMidi() {
    if (loaded()) ignoringErrors([&] { device_.performance->stop(); });
}

void MidiPlayback::CloseDevice() {
    ++generation_;
    openFile_.clear();
    close();
}

// Taken out of the device first: what a window event opens meanwhile is not closed.
void MidiPlayback::close() {
    if (!device_.performance) return;
    auto performance = std::move(device_.performance);
    auto segment = std::move(device_.segment);
    state_.deviceOpen = false;
    ignoringErrors([&] { performance->stop(); });
    doEvents_();
    doEvents_();
    ignoringErrors([&] { performance->unload(); });
    doEvents_();
    ignoringErrors([&] { performance->closeDown(kChannelGroups); });
    doEvents_();
    performance.reset();
    doEvents_();
    segment.reset();
    doEvents_();
}

bool MidiPlayback::playing() const {
    return loaded() && device_.performance->playing();
}

Handle MidiPlayback::stream() const {
    return loaded() ? device_.performance->stream() : 0;
}

double MidiPlayback::position() const {
    return loaded() ? device_.performance->position() : 0;
}

void MidiPlayback::setFailure(MidiFailure failure, const std::string& text) {
    failure_ = failure;
    text_ = text;
}

}  // namespace melvane
