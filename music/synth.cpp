#include "music/synth.h"

#include <fluidsynth.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>

#include "music/midi_messages.h"
#include "music/sound_fonts.h"
#include "platform/audio_library.h"
#include "platform/music_performance.h"

namespace melvane::music {

namespace {

// With a master volume of 12 dB the peaks of an ordinary song come out just below full scale: of 31 songs, half stay
// within it.
constexpr double kGain = 0.1;

// Below half a step of 16 bits for longer than a low note needs to pass through zero.
constexpr float kQuiet = 1.0F / 65536;
constexpr int kQuietPieces = 40;

// The number that devices of the GS family answer to.
constexpr int kDeviceId = 16;

constexpr int kPercussionBank = 128;

// After ten seconds the oscillators of chorus (0.3 Hz) and reverb (1 Hz) are where they were.
constexpr std::int64_t kOscillators = 10 * kSampleRate;

// The synthesiser's own number of them.
constexpr int kVoices = 256;

void ignoreLog(int, const char*, void*) {}

void silenceLog() {
    static std::once_flag once;
    std::call_once(once, [] {
        for (int level = FLUID_PANIC; level < LAST_LOG_LEVEL; ++level)
            fluid_set_log_function(level, ignoreLog, nullptr);
    });
}

}  // namespace

struct Synth::Engine {
    Engine(const std::string& font, const HeldSounds& sounds);

    struct Delete {
        void operator()(fluid_settings_t* kept) const { delete_fluid_settings(kept); }
        void operator()(fluid_synth_t* kept) const { delete_fluid_synth(kept); }
    };
    std::unique_ptr<fluid_settings_t, Delete> settings;
    std::unique_ptr<fluid_synth_t, Delete> synth;
    int fontId = FLUID_FAILED;
};

Synth::Engine::Engine(const std::string& font, const HeldSounds& sounds) {
    silenceLog();
    settings.reset(new_fluid_settings());
    fluid_settings_setnum(settings.get(), "synth.sample-rate", kSampleRate);
    fluid_settings_setnum(settings.get(), "synth.gain", kGain);
    fluid_settings_setint(settings.get(), "synth.dynamic-sample-loading", 1);
    fluid_settings_setint(settings.get(), "synth.threadsafe-api", 0);
    fluid_settings_setint(settings.get(), "synth.device-id", kDeviceId);
    synth.reset(new_fluid_synth(settings.get()));
    // What isn't one would be tried by a reader of other formats, which complains on the terminal.
    if (synth && isSoundFont(font)) fontId = fluid_synth_sfload(synth.get(), font.c_str(), 1);
    if (fontId == FLUID_FAILED) throw MusicError("No sounds for the synthesizer could be read from \"" + font + "\".");
    for (const auto& [bank, program] : sounds) fluid_synth_pin_preset(synth.get(), fontId, bank, program);
}

Synth::Synth(std::string font, const HeldSounds& held)
    : font_(std::move(font)), held_(held), engine_(std::make_unique<Engine>(font_, held_)) {}

Synth::~Synth() = default;

// Lets the messages choose the sounds as they will, and begins anew.
void Synth::hold(const Song& song) {
    for (int channel = 0; channel < kMidiChannels; ++channel) holdSoundOf(channel);
    for (const SongEvent& event : song.events) {
        const int kind = event.status & 0xF0;
        if (event.status == kSystemExclusive) {
            sendSysex(0, song.sysex[event.sysex]);
        } else if (kind == kProgramChange ||
                   (kind == kControlChange && (event.data1 == kBankHigh || event.data1 == kBankLow))) {
            send(0, event.status, event.data1, event.data2);
            if (kind == kProgramChange) holdSoundOf(event.status & 0x0F);
        }
    }
    renew();
}

void Synth::hold(int channel, const Patch& patch) {
    sendPatch(*this, 0, channel, patch);
    holdSoundOf(channel);
    fluid_synth_system_reset(engine_->synth.get());
}

void Synth::holdSoundOf(int channel) {
    fluid_preset_t* preset = fluid_synth_get_channel_preset(engine_->synth.get(), channel);
    if (!preset) return;
    const int bank = fluid_preset_get_banknum(preset);
    const int program = fluid_preset_get_num(preset);
    if (held_.emplace(bank, program).second)
        fluid_synth_pin_preset(engine_->synth.get(), engine_->fontId, bank, program);
}

// A reset engine keeps the places of its oscillators and would not sound the same.
void Synth::renew() {
    engine_ = std::make_unique<Engine>(font_, held_);
    turned_ = 0;
    quietPieces_ = 0;
}

// In the middle of a song chorus and reverb are brought to where their oscillators are there: what they do to a pad is
// to be heard. A reset, which is quicker than a new engine, leaves them as they are.
void Synth::begin(std::int64_t frame) {
    if (frame == 0) {
        if (turned_ > 0) renew();
        return;
    }
    fluid_synth_system_reset(engine_->synth.get());
    std::int64_t left = (frame - turned_) % kOscillators;
    if (left < 0) left += kOscillators;
    std::array<float, kPieceFrames * 2> silence{};
    for (; left > static_cast<std::int64_t>(kPieceFrames / 2); left -= static_cast<std::int64_t>(kPieceFrames))
        render(silence.data());
    quietPieces_ = 0;
}

void Synth::render(float* out) {
    turned_ += static_cast<std::int64_t>(kPieceFrames);
    fluid_synth_write_float(engine_->synth.get(), kPieceFrames, out, 0, 2, out, 1, 2);
    const bool quiet = std::all_of(out, out + 2 * kPieceFrames, [](float x) { return std::abs(x) < kQuiet; });
    quietPieces_ = quiet ? quietPieces_ + 1 : 0;
}

bool Synth::silent() const {
    return quietPieces_ >= kQuietPieces && fluid_synth_get_active_voice_count(engine_->synth.get()) == 0;
}

std::uint16_t Synth::sounding(std::uint16_t) const {
    std::array<fluid_voice_t*, kVoices> voices{};
    fluid_synth_get_voicelist(engine_->synth.get(), voices.data(), kVoices, -1);
    unsigned channels = 0;
    for (fluid_voice_t* const* voice = voices.data(); voice != voices.data() + kVoices && *voice; ++voice)
        channels |= 1U << fluid_voice_get_channel(*voice);
    for (int channel = 0; channel < kMidiChannels; ++channel) {
        int volume = 0;
        fluid_synth_get_cc(engine_->synth.get(), channel, kVolumeController, &volume);
        if (volume == 0) channels &= ~(1U << channel);
    }
    return static_cast<std::uint16_t>(channels);
}

void Synth::send(std::int64_t, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) {
    fluid_synth_t* synth = engine_->synth.get();
    const int channel = status & 0x0F;
    switch (status & 0xF0) {
        case kNoteOff:
            fluid_synth_noteoff(synth, channel, data1);
            break;
        case kNoteOn:
            fluid_synth_noteon(synth, channel, data1, data2);
            break;
        case kKeyPressure:
            fluid_synth_key_pressure(synth, channel, data1, data2);
            break;
        case kControlChange:
            fluid_synth_cc(synth, channel, data1, data2);
            break;
        case kProgramChange:
            if (data1 == kPercussionInstrument)
                fluid_synth_program_select(synth, channel, engine_->fontId, kPercussionBank, 0);
            else
                fluid_synth_program_change(synth, channel, data1);
            break;
        case kChannelPressure:
            fluid_synth_channel_pressure(synth, channel, data1);
            break;
        case kPitchBend:
            fluid_synth_pitch_bend(synth, channel, data2 << 7 | data1);
            break;
        default:
            break;
    }
}

void Synth::sendSysex(std::int64_t, std::span<const std::uint8_t> message) {
    if (message.size() < 2) return;
    const auto inner = message.subspan(1, message.size() - 2);
    fluid_synth_sysex(engine_->synth.get(), reinterpret_cast<const char*>(inner.data()), static_cast<int>(inner.size()),
                      nullptr, nullptr, nullptr, 0);
}

}  // namespace melvane::music
