#include "music/sequencer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <utility>
#include <variant>

#include "music/chase.h"
#include "music/visitor.h"

namespace melvane::music {

namespace {

int channelOf(const SongEvent& event) {
    return event.status & 0x0F;
}

// A setting of a channel that the user can take over, in the order in which a device is to get them.
struct SongSetting {
    std::uint8_t kind;
    std::uint8_t controller;  // 0 for a program
    std::uint8_t usual;       // without a song

    bool isProgram() const { return kind == kProgramChange; }
    bool isSetBy(const SongEvent& event) const {
        return (event.status & 0xF0) == kind && (isProgram() || event.data1 == controller);
    }
    std::uint8_t of(const SongEvent& event) const { return isProgram() ? event.data1 : event.data2; }
    SongEvent event(int channel, std::uint8_t value) const {
        const std::uint8_t status = onChannel(kind, channel);
        return isProgram() ? SongEvent{0, status, value, 0} : SongEvent{0, status, controller, value};
    }
};
constexpr std::array<SongSetting, 7> kSettings{{{kControlChange, kBankHigh, 0},
                                                {kControlChange, kBankLow, 0},
                                                {kProgramChange, 0, 0},
                                                {kControlChange, kVolumeController, 100},
                                                {kControlChange, kVolumeController + kFine, 0},
                                                {kControlChange, kBalanceController, 64},
                                                {kControlChange, kBalanceController + kFine, 0}}};

}  // namespace

Sequencer::Sequencer(std::shared_ptr<const Song> song, double tempo, MidiSink& sink)
    : song_(std::move(song)), tempo_(tempo), sink_(&sink) {}

std::int64_t Sequencer::placeOf(std::int64_t songFrame) const {
    return std::llround(static_cast<double>(songFrame) / tempo_);
}

void Sequencer::begin(const LiveChannels& live, std::int64_t frame) {
    live_ = live;
    next_ = 0;
    sounding_.clear();
    pedals_ = {};
    lastRelease_ = 0;
    finished_ = false;
    if (frame <= 0) return live_.sendSettings(*sink_, 0);
    Chase chase;
    MidiSink* const sink = std::exchange(sink_, &chase);
    live_.sendSettings(*sink_, 0);
    playTo(frame);
    sink_ = sink;
    chase.tell(*sink_, frame);
}

void Sequencer::take(const LiveMessage& message, std::int64_t frame) {
    const LiveChannels before = live_;
    live_.keep(message);
    std::visit(Visitor{
                   [&](const PatchMessage& m) { sendPatch(*sink_, frame, m.channel, m.patch); },
                   [&](const ShortMessage& m) {
                       if (!live_.silences(m)) sink_->send(frame, m.status, m.data1, m.data2);
                   },
                   [&](const MasterVolumeMessage& m) { sendMasterVolume(*sink_, frame, m.value); },
                   [](const TransposeMessage&) {},
                   [&](const SoloMessage&) {
                       sendHeldBack(frame, before, live_);
                       live_.sendVolumes(*sink_, frame);
                   },
                   [&](const LiftMessage&) { sendHeldBack(frame, before, live_); },
               },
               message);
}

// What the song has set by now of all that the settings before have kept from it, and those of now no longer do.
void Sequencer::sendHeldBack(std::int64_t frame, const LiveChannels& before, const LiveChannels& now) {
    std::array<std::array<std::uint8_t, kSettings.size()>, kMidiChannels> values{};
    const auto forget = [&] {
        for (auto& channel : values)
            std::ranges::transform(kSettings, channel.begin(), [](const SongSetting& s) { return s.usual; });
    };
    forget();
    for (const SongEvent& event : std::span(song_->events).first(next_)) {
        if (event.status == kSystemExclusive) {
            if (isReset(song_->sysex[event.sysex])) forget();
            continue;
        }
        for (std::size_t i = 0; i < kSettings.size(); ++i)
            if (kSettings[i].isSetBy(event))
                values[static_cast<std::size_t>(channelOf(event))][i] = kSettings[i].of(event);
    }
    for (int channel = 0; channel < kMidiChannels; ++channel)
        for (std::size_t i = 0; i < kSettings.size(); ++i) {
            const SongEvent event = kSettings[i].event(channel, values[static_cast<std::size_t>(channel)][i]);
            if (before.overrides(event) && !now.overrides(event))
                sink_->send(frame, event.status, event.data1, event.data2);
        }
}

void Sequencer::playTo(std::int64_t frame) {
    const auto& events = song_->events;
    for (; next_ < events.size(); ++next_) {
        const std::int64_t place = placeOf(events[next_].frame);
        if (place >= frame) return;
        send(events[next_], place);
    }
    if (finished_ || endFrame() >= frame) return;
    releaseAll();
    finished_ = true;
}

void Sequencer::send(const SongEvent& event, std::int64_t frame) {
    if (live_.overrides(event)) return;
    switch (event.status & 0xF0) {
        case kNoteOff:
        case kNoteOn:
            sendNote(event, frame);
            break;
        case kKeyPressure: {
            const auto found = sounding(channelOf(event), event.data1);
            const std::uint8_t key = found == sounding_.end() ? moved(channelOf(event), event.data1) : found->sentKey;
            sink_->send(frame, event.status, key, event.data2);
            break;
        }
        case kControlChange:
            sendControl(event, frame);
            break;
        case kSystemExclusive:
            sendSysex(song_->sysex[event.sysex], frame);
            break;
        default:
            sink_->send(frame, event.status, event.data1, event.data2);
    }
}

void Sequencer::sendNote(const SongEvent& event, std::int64_t frame) {
    const int channel = channelOf(event);
    std::uint8_t key = moved(channel, event.data1);
    if ((event.status & 0xF0) == kNoteOn && event.data2 > 0) {
        // A key struck again without having been let go is the same key.
        const bool isDown = std::ranges::any_of(sounding_, [&](const Sounding& s) {
            return s.channel == channel && s.key == event.data1 && s.sentKey == key;
        });
        if (!isDown) sounding_.push_back({channel, event.data1, key});
    } else {
        lastRelease_ = frame;
        if (const auto found = sounding(channel, event.data1); found != sounding_.end()) {
            key = found->sentKey;
            sounding_.erase(found);
        }
    }
    sink_->send(frame, event.status, key, event.data2);
}

void Sequencer::sendControl(const SongEvent& event, std::int64_t frame) {
    const int channel = channelOf(event);
    sink_->send(frame, event.status, event.data1, event.data2);
    switch (event.data1) {
        case kSustain:
        case kSostenuto:
            pedals_[static_cast<std::size_t>(channel)] = event.data2 >= 64;
            lastRelease_ = frame;
            break;
        case kResetControllers:
            live_.sendSettings(*sink_, frame, channel);
            break;
        case kAllSoundOff:
            forgetNotes(channel);
            break;
        default:
            if (event.data1 >= kAllNotesOff) forgetNotes(channel);
    }
}

void Sequencer::sendSysex(const std::vector<std::uint8_t>& message, std::int64_t frame) {
    if (live_.overrides(message)) return;
    sink_->sendSysex(frame, message);
    if (!isReset(message)) return;
    sounding_.clear();
    live_.sendSettings(*sink_, frame);
}

// What leaves the range comes back by octaves.
std::uint8_t Sequencer::moved(int channel, std::uint8_t key) const {
    int to = key + live_.transposition(channel);
    while (to < 0) to += 12;
    while (to > 127) to -= 12;
    return static_cast<std::uint8_t>(to);
}

std::uint16_t Sequencer::keysDown() const {
    unsigned channels = 0;
    for (const Sounding& s : sounding_) channels |= 1U << s.channel;
    return static_cast<std::uint16_t>(channels);
}

std::vector<Sequencer::Sounding>::iterator Sequencer::sounding(int channel, std::uint8_t key) {
    return std::ranges::find_if(sounding_, [&](const Sounding& s) { return s.channel == channel && s.key == key; });
}

void Sequencer::forgetNotes(int channel) {
    std::erase_if(sounding_, [&](const Sounding& s) { return s.channel == channel; });
}

void Sequencer::releaseAll() {
    const std::int64_t frame = endFrame();
    if (!sounding_.empty() || std::ranges::find(pedals_, true) != pedals_.end()) lastRelease_ = frame;
    for (const Sounding& s : sounding_) sink_->send(frame, onChannel(kNoteOff, s.channel), s.sentKey, kReleaseVelocity);
    sounding_.clear();
    for (int channel = 0; channel < kMidiChannels; ++channel)
        for (const std::uint8_t pedal : {kSustain, kSostenuto})
            sink_->send(frame, onChannel(kControlChange, channel), pedal, 0);
}

}  // namespace melvane::music
