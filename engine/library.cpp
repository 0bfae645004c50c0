#include "engine/library.h"

#include <algorithm>
#include <cmath>
#include <system_error>
#include <thread>
#include <utility>

#include "engine/graph/kept_mix.h"
#include "engine/graph/limited_source.h"
#include "engine/graph/tempo_source.h"
#include "engine/readers.h"

namespace melvane::engine {

namespace {

// Twelve hours, more than any place between song and voice.
constexpr std::int64_t kFurthest = std::int64_t{12 * 3600} * kSampleRate;
constexpr std::uint32_t kEffectInterfaceVersion = 8;  // the least that is asked for

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
    if (options_.clock == CardClock::stepped) return initialised_ = true;
    try {
        auto server = options_.clock == CardClock::device ? server_ : nullptr;
        mixing_ = std::make_unique<MixingThread>(card_, std::move(server), options_.blockFrames);
    } catch (const std::system_error&) {
        return false;
    }
    return initialised_ = true;
}

bool Library::BASS_Free() {
    if (!initialised_) return false;
    mixing_.reset();
    giveUpOpening();
    openings_.end();
    for (const HandleTable::Thing& thing : handles_.takeAll()) {
        if (const auto* channel = std::get_if<std::shared_ptr<Channel>>(&thing)) card_.remove(*channel);
        if (const auto* capture = std::get_if<std::shared_ptr<Capture>>(&thing)) card_.unlisten(*capture);
    }
    initialised_ = false;
    return true;
}

bool Library::BASS_GetInfo(BASS_INFO& info) {
    info = {kEffectInterfaceVersion, mixing_ ? mixing_->latencyMilliseconds() : 0};
    return initialised_;
}

void Library::holdCardAtEndOf(Handle handle) {
    card_.holdAtEndOf(handles_.find<Channel>(handle));
}

bool Library::cueCard(std::int64_t frame) {
    if (initialised_) card_.cue(std::max<std::int64_t>(frame, 0));
    return initialised_;
}

std::uint32_t Library::stepCard(std::uint32_t frames) {
    if (options_.clock != CardClock::stepped) return 0;
    constexpr int kPatience = 100;  // ms
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
    const auto sounding = handles_.find<Channel>(channel);
    return sounding ? sounding->takePeaks() : PeakLevels{};
}

std::shared_ptr<KeptMix> Library::keepMix(Handle channel) {
    if (options_.clock != CardClock::stepped) return nullptr;
    try {
        auto kept = std::make_shared<KeptMixFile>(channel != 0);
        card_.tap(kept, handles_.find<Channel>(channel));
        return kept;
    } catch (const std::system_error&) {
        return nullptr;
    }
}

std::unique_ptr<LimitedSound> Library::limited(std::unique_ptr<PcmSource> source) {
    return source ? std::make_unique<LimitedSource>(std::move(source)) : nullptr;
}

// --- playback ---

void Library::giveUpOpening() {
    openings_.giveUp();
    const std::lock_guard lock(givenUpMutex_);
    std::exchange(givenUp_, std::stop_source()).request_stop();
}

Handle Library::BASS_StreamCreateFile(bool mem, const char* file, std::uint32_t offset, std::uint32_t length,
                                      std::uint32_t flags) {
    return mem || !file || offset != 0 || length != 0 ? 0 : openRecording(file, 0, flags);
}

Handle Library::openRecording(const std::string& file, double driftPpm, std::uint32_t flags) {
    if (!initialised_ || !(std::abs(driftPpm) <= kMostDrift)) return 0;
    std::shared_ptr<PcmSource> source = openings_.open(file, driftPpm);
    if (!source) return 0;
    if (flags & BASS_STREAM_DECODE) return handles_.keep(std::move(source));
    return handles_.keep(std::make_shared<Channel>(std::move(source), (flags & BASS_SAMPLE_LOOP) != 0));
}

std::unique_ptr<PcmSource> Library::openReader(const std::string& file, const std::function<bool()>& wanted) {
    return engine::openReader(file, decoded_, wanted);
}

std::unique_ptr<PcmSource> Library::inKey(std::unique_ptr<PcmSource> source, double semitones) {
    return engine::inKey(std::move(source), semitones);
}

Handle Library::createStream(std::shared_ptr<PcmSource> source) {
    if (!initialised_ || !source) return 0;
    return handles_.keep(std::make_shared<Channel>(std::move(source), false));
}

bool Library::BASS_StreamFree(Handle handle) {
    const auto channel = handles_.find<Channel>(handle);
    if (!channel && !handles_.find<PcmSource>(handle)) return false;
    if (channel) card_.remove(channel);
    handles_.forget(handle);
    return true;
}

bool Library::BASS_ChannelPlay(Handle handle, bool restart) {
    if (const auto channel = handles_.find<Channel>(handle)) {
        card_.play(channel, restart);
        return true;
    }
    const auto capture = handles_.find<Capture>(handle);
    if (!capture || capture->begun() || !capture->begin(handle)) return false;
    card_.listen(capture);
    return true;
}

bool Library::BASS_ChannelStop(Handle handle) {
    if (const auto channel = handles_.find<Channel>(handle)) {
        channel->stop();
        card_.wake();
        return true;
    }
    const auto capture = handles_.find<Capture>(handle);
    if (!capture) return false;
    card_.unlisten(capture);
    capture->stop();
    return true;
}

ChannelActivity Library::BASS_ChannelIsActive(Handle handle) const {
    const auto channel = handles_.find<Channel>(handle);
    const auto capture = handles_.find<Capture>(handle);
    const bool active = (channel && channel->playing()) || (capture && capture->capturing());
    return active ? ChannelActivity::playing : ChannelActivity::stopped;
}

bool Library::channelFailed(Handle handle) const {
    const auto channel = handles_.find<Channel>(handle);
    return channel && channel->failed();
}

std::uint64_t Library::BASS_ChannelGetLength(Handle handle) const {
    const auto channel = handles_.find<Channel>(handle);
    return channel ? toBytes(channel->length()) : 0;
}

std::uint64_t Library::BASS_ChannelGetPosition(Handle handle) const {
    const auto channel = handles_.find<Channel>(handle);
    return channel ? toBytes(channel->position()) : 0;
}

bool Library::BASS_ChannelSetPosition(Handle handle, std::uint64_t position) {
    const auto channel = handles_.find<Channel>(handle);
    return channel && position <= toBytes(channel->length()) &&
           channel->seek(static_cast<std::int64_t>(position / kBytesPerFrame));
}

std::uint64_t Library::BASS_ChannelSeconds2Bytes(Handle handle, float seconds) const {
    if (!handles_.find<Channel>(handle) || !std::isfinite(seconds) || seconds <= 0.0F) return 0;
    return toBytes(std::llround(static_cast<double>(seconds) * kSampleRate));
}

bool Library::BASS_ChannelGetAttributes(Handle handle, std::uint32_t& frequency, std::uint32_t& volume,
                                        std::int32_t& pan) const {
    const auto channel = handles_.find<Channel>(handle);
    if (!channel) return false;
    frequency = kSampleRate;
    volume = channel->level().volume;
    pan = channel->level().pan;
    return true;
}

bool Library::BASS_ChannelSetAttributes(Handle handle, std::uint32_t, std::uint32_t volume, std::int32_t pan) {
    const auto channel = handles_.find<Channel>(handle);
    if (channel) channel->setLevel({volume, pan});
    return channel != nullptr;
}

bool Library::trimChannel(Handle handle, float decibels) {
    const auto channel = handles_.find<Channel>(handle);
    if (channel) channel->trim(std::pow(10.0F, std::clamp(decibels, -kMostTrim, kMostTrim) / 20));
    return channel != nullptr;
}

bool Library::placeChannel(Handle handle, std::int64_t earlierFrames, bool once) {
    const auto channel = handles_.find<Channel>(handle);
    if (channel) channel->place({static_cast<std::int32_t>(std::clamp(earlierFrames, -kFurthest, kFurthest)), once});
    return channel != nullptr;
}

// --- effects ---

Handle Library::BASS_ChannelSetFX(Handle handle, std::uint32_t type, std::int32_t priority) {
    const auto channel = handles_.find<Channel>(handle);
    std::shared_ptr<Effect> effect = channel ? makeEffect(static_cast<EffectType>(type)) : nullptr;
    if (!effect) return 0;
    channel->addEffect(effect, priority);
    return handles_.keep(std::move(effect), handle);
}

bool Library::BASS_FXSetParameters(Handle handle, const EffectRecord& record) {
    const auto effect = handles_.find<Effect>(handle);
    return effect && effect->set(record);
}

bool Library::BASS_FXGetParameters(Handle handle, EffectRecord& record) const {
    const auto effect = handles_.find<Effect>(handle);
    if (effect) record = effect->get();
    return effect != nullptr;
}

// --- tempo add-on ---

Handle Library::BASS_FX_TempoCreate(Handle source, std::uint32_t flags) {
    const auto decoding = handles_.find<PcmSource>(source);
    if (!decoding) return 0;
    const Handle handle = handles_.keep(std::make_shared<Channel>(std::make_shared<TempoSource>(decoding), false));
    if (flags & BASS_FX_FREESOURCE) handles_.setOwner(source, handle);
    return handle;
}

bool Library::BASS_FX_TempoSet(Handle handle, float tempo, float rate, float pitch) {
    const auto channel = handles_.find<Channel>(handle);
    auto* const source = channel ? dynamic_cast<TempoSource*>(&channel->source()) : nullptr;
    if (!source || tempo != kTempoUnchanged || rate != kRateUnchanged) return false;
    source->setPitch(pitch);
    return true;
}

}  // namespace melvane::engine
