#include "engine/library.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "engine/capture/command_line.h"
#include "engine/decode/open_source.h"

namespace melvane::engine {

namespace {

constexpr std::uint32_t kEffectInterfaceVersion = 8;

std::uint64_t toBytes(std::int64_t frames) {
    return static_cast<std::uint64_t>(frames) * kBytesPerFrame;
}

AudioLibraryOptions checked(AudioLibraryOptions options) {
    options.blockFrames = std::clamp(options.blockFrames, 16U, 8192U);
    return options;
}

}  // namespace

Library::Library(const AudioLibraryOptions& options)
    : options_(checked(options)), stepBlock_(options_.blockFrames * 2) {}

Library::~Library() {
    BASS_Free();
}

// --- card and device ---

bool Library::BASS_Init(int, std::uint32_t freq, std::uint32_t, void*, const void*) {
    if (initialised_ || freq != kSampleRate) return false;
    initialised_ = true;
    if (options_.clock != CardClock::stepped) {
        auto server = options_.clock == CardClock::device ? server_ : nullptr;
        mixing_ = std::make_unique<MixingThread>(card_, std::move(server), options_.blockFrames);
    }
    return true;
}

bool Library::BASS_Free() {
    if (!initialised_) return false;
    mixing_.reset();
    scans_.end();
    std::unordered_map<Handle, Entry> entries;
    {
        const std::lock_guard lock(entriesMutex_);
        entries.swap(entries_);
    }
    for (const auto& [handle, entry] : entries) {
        card_.remove(entry.channel);
        card_.unlisten(entry.capture);
    }
    initialised_ = false;
    return true;
}

bool Library::BASS_GetInfo(BASS_INFO& info) {
    info = {kEffectInterfaceVersion, mixing_ ? mixing_->latencyMilliseconds() : 0};
    return initialised_;
}

void Library::holdCardAtEndOf(Handle handle) {
    card_.holdAtEndOf(find(handle).channel);
}

std::uint32_t Library::stepCard(std::uint32_t frames) {
    if (options_.clock != CardClock::stepped) return 0;
    constexpr int kPatience = 100;
    for (int waited = 0; card_.congested(); ++waited) {
        if (waited == kPatience) return 0;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    std::uint32_t done = 0;
    while (done < frames) {
        const std::uint32_t wanted = std::min(frames - done, options_.blockFrames);
        const auto got = static_cast<std::uint32_t>(card_.mix(stepBlock_.data(), wanted));
        done += got;
        if (got < wanted) break;
    }
    return done;
}

CardStatus Library::cardStatus() const {
    return {card_.framesMixed(), mixing_ ? mixing_->underruns() : 0, mixing_ && mixing_->deviceOpen()};
}

PeakLevels Library::takePeaks(Handle channel) {
    if (channel == 0) return card_.takePeaks();
    const Entry entry = find(channel);
    return entry.channel ? entry.channel->takePeaks() : PeakLevels{};
}

std::unique_ptr<WaveformScan> Library::scanWaveform(const std::string& file, int columns) {
    return scans_.begin(file, columns);
}

// --- handles ---

Handle Library::keep(Entry entry) {
    const std::lock_guard lock(entriesMutex_);
    entries_.emplace(++lastHandle_, std::move(entry));
    return lastHandle_;
}

Library::Entry Library::find(Handle handle) const {
    const std::lock_guard lock(entriesMutex_);
    const auto found = entries_.find(handle);
    return found == entries_.end() ? Entry{} : found->second;
}

void Library::forget(Handle handle) {
    const std::lock_guard lock(entriesMutex_);
    entries_.erase(handle);
}

// --- playback ---

Handle Library::BASS_StreamCreateFile(bool mem, const char* file, std::uint32_t offset, std::uint32_t length,
                                      std::uint32_t flags) {
    if (!initialised_ || mem || !file || offset != 0 || length != 0) return 0;
    std::shared_ptr<PcmSource> source = decode::openSource(file);
    if (!source) return 0;
    if (flags & BASS_STREAM_DECODE) return keep({.decoding = std::move(source)});
    return keep({.channel = std::make_shared<Channel>(std::move(source), (flags & BASS_SAMPLE_LOOP) != 0)});
}

Handle Library::createStream(std::shared_ptr<PcmSource> source) {
    if (!initialised_ || !source) return 0;
    return keep({.channel = std::make_shared<Channel>(std::move(source), false)});
}

bool Library::BASS_StreamFree(Handle handle) {
    const Entry entry = find(handle);
    if (!entry.decoding && !entry.channel) return false;
    if (entry.channel) card_.remove(entry.channel);
    forget(handle);
    for (const Handle other : entry.freedWithIt) forget(other);
    return true;
}

bool Library::BASS_MusicFree(Handle handle) {
    return BASS_StreamFree(handle);
}

bool Library::BASS_ChannelPlay(Handle handle, bool restart) {
    const Entry entry = find(handle);
    if (entry.capture && !entry.capture->begun()) {
        entry.capture->begin();
        card_.listen(entry.capture);
        return true;
    }
    if (!entry.channel) return false;
    card_.play(entry.channel, restart);
    return true;
}

bool Library::BASS_ChannelStop(Handle handle) {
    const Entry entry = find(handle);
    if (entry.capture) {
        card_.unlisten(entry.capture);
        entry.capture->stop();
        return true;
    }
    if (!entry.channel) return false;
    entry.channel->stop();
    card_.wake();
    return true;
}

ChannelActivity Library::BASS_ChannelIsActive(Handle handle) const {
    const Entry entry = find(handle);
    const bool active = (entry.channel && entry.channel->playing()) || (entry.capture && entry.capture->capturing());
    return active ? ChannelActivity::playing : ChannelActivity::stopped;
}

std::uint64_t Library::BASS_ChannelGetLength(Handle handle) const {
    const Entry entry = find(handle);
    return entry.channel ? toBytes(entry.channel->length()) : 0;
}

std::uint64_t Library::BASS_ChannelGetPosition(Handle handle) const {
    const Entry entry = find(handle);
    return entry.channel ? toBytes(entry.channel->position()) : 0;
}

bool Library::BASS_ChannelSetPosition(Handle handle, std::uint64_t position) {
    const Entry entry = find(handle);
    return entry.channel && position <= toBytes(entry.channel->length()) &&
           entry.channel->seek(static_cast<std::int64_t>(position / kBytesPerFrame));
}

std::uint64_t Library::BASS_ChannelSeconds2Bytes(Handle handle, float seconds) const {
    const Entry entry = find(handle);
    if (!entry.channel || !std::isfinite(seconds) || seconds <= 0.0F) return 0;
    return toBytes(std::llround(static_cast<double>(seconds) * kSampleRate));
}

bool Library::BASS_ChannelGetAttributes(Handle handle, std::uint32_t& frequency, std::uint32_t& volume,
                                        std::int32_t& pan) const {
    const Entry entry = find(handle);
    if (!entry.channel) return false;
    frequency = kSampleRate;
    volume = entry.volume;
    pan = entry.pan;
    return true;
}

bool Library::BASS_ChannelSetAttributes(Handle handle, std::uint32_t, std::uint32_t volume, std::int32_t pan) {
    const std::lock_guard lock(entriesMutex_);
    const auto found = entries_.find(handle);
    if (found == entries_.end() || !found->second.channel) return false;
    Entry& entry = found->second;
    entry.volume = std::min(volume, 100U);
    entry.pan = std::clamp(pan, -100, 100);
    entry.channel->setLevel(gainOf(entry.volume, entry.pan));
    return true;
}

bool Library::setChannelOffset(Handle handle, std::int64_t bytes) {
    const Entry entry = find(handle);
    if (entry.channel) entry.channel->setOffset(bytes / kBytesPerFrame);
    return entry.channel != nullptr;
}

// --- effects ---

Handle Library::BASS_ChannelSetFX(Handle handle, std::uint32_t type, std::int32_t priority) {
    const Entry channel = find(handle);
    std::shared_ptr<Effect> effect = channel.channel ? makeEffect(static_cast<EffectType>(type)) : nullptr;
    if (!effect) return 0;
    channel.channel->addEffect(effect, priority);
    const Handle attached = keep({.effect = std::move(effect)});
    const std::lock_guard lock(entriesMutex_);
    entries_[handle].freedWithIt.push_back(attached);
    return attached;
}

bool Library::BASS_FXSetParameters(Handle handle, const EffectRecord& record) {
    const Entry entry = find(handle);
    return entry.effect && entry.effect->set(record);
}

bool Library::BASS_FXGetParameters(Handle handle, EffectRecord& record) const {
    const Entry entry = find(handle);
    if (entry.effect) record = entry.effect->get();
    return entry.effect != nullptr;
}

// --- tempo add-on ---

Handle Library::BASS_FX_TempoCreate(Handle source, std::uint32_t flags) {
    const Entry decoding = find(source);
    if (!decoding.decoding) return 0;
    auto tempo = std::make_shared<TempoSource>(decoding.decoding);
    Entry entry{.channel = std::make_shared<Channel>(tempo, false), .tempo = tempo};
    if (flags & BASS_FX_FREESOURCE) entry.freedWithIt.push_back(source);
    return keep(std::move(entry));
}

bool Library::BASS_FX_TempoSet(Handle handle, float tempo, float rate, float pitch) {
    const Entry entry = find(handle);
    if (!entry.tempo || tempo != kTempoUnchanged || rate != kRateUnchanged) return false;
    entry.tempo->setPitch(pitch);
    return true;
}

// --- capture ---

bool Library::BASS_RecordInit(int) {
    inputs_.list(options_.clock == CardClock::device ? server_ : nullptr);
    return true;
}

const char* Library::BASS_RecordGetInputName(int input) const {
    const RecordingInput* found = inputs_.at(input);
    return found ? found->name.c_str() : nullptr;
}

Handle Library::BASS_RecordStart(std::uint32_t freq, std::uint32_t chans, std::uint32_t, RecordProc proc, void* user) {
    if (!initialised_ || freq != kSampleRate || chans != 2 || !proc) return 0;
    forgetFinishedCaptures();
    const Handle handle = keep({});
    auto capture = std::make_shared<Capture>(handle, proc, user);
    if (!capture->open(inputs_, server_)) {
        forget(handle);
        return 0;
    }
    const std::lock_guard lock(entriesMutex_);
    entries_[handle].capture = std::move(capture);
    return handle;
}

void Library::forgetFinishedCaptures() {
    // Freed outside the lock: a capture waits for its thread, and that thread may be asking for a handle.
    std::vector<std::shared_ptr<Capture>> finished;
    const std::lock_guard lock(entriesMutex_);
    std::erase_if(entries_, [&](const auto& kept) {
        const auto& capture = kept.second.capture;
        if (!capture || capture->capturing() || capture->encoderRunning()) return false;
        finished.push_back(capture);
        return true;
    });
}

// --- encoder add-on ---

std::vector<std::string> Library::encoderWords(const char* commandLine) const {
    auto words = commandWords(commandLine ? commandLine : "");
    if (words.empty()) return {};
    const char* path = std::getenv("PATH");
    const auto program = findProgram(words.front(), options_.programDirectory, path ? path : "");
    if (!program) return {};
    words.front() = *program;
    return words;
}

bool Library::encoderFound(const char* commandLine) const {
    return !encoderWords(commandLine).empty();
}

bool Library::BASS_Encode_Start(Handle handle, const char* commandLine, std::uint32_t, void*, void*) {
    const Entry entry = find(handle);
    const auto words = encoderWords(commandLine);
    return entry.capture && !words.empty() && entry.capture->encoderState() == EncoderState::none &&
           entry.capture->startEncoder(words);
}

bool Library::BASS_Encode_IsActive(Handle handle) const {
    // Asked on the capture thread too, which must never be the last owner of its capture: no copy is made.
    const std::lock_guard lock(entriesMutex_);
    const auto found = entries_.find(handle);
    return found != entries_.end() && found->second.capture && found->second.capture->encoderRunning();
}

bool Library::BASS_Encode_Stop(Handle handle) {
    const Entry entry = find(handle);
    if (!entry.capture) return false;
    card_.unlisten(entry.capture);
    entry.capture->endEncoding();
    return true;
}

EncoderState Library::encoderState(Handle handle) const {
    const Entry entry = find(handle);
    return entry.capture ? entry.capture->encoderState() : EncoderState::none;
}

}  // namespace melvane::engine
