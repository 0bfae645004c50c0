#include "music/next_synth.h"

#include <exception>
#include <system_error>
#include <thread>
#include <utility>

namespace melvane::music {

void NextSynth::use(const std::string& font) {
    const std::lock_guard lock(mutex_);
    font_ = font;
    if (!font_.empty()) synth();
}

void NextSynth::hold(const Song& song) {
    const std::lock_guard lock(mutex_);
    synth().hold(song);
}

void NextSynth::prepare() {
    const std::lock_guard lock(mutex_);
    holdAsked();
    if (!font_.empty()) synth();
}

std::unique_ptr<Synth> NextSynth::take() {
    const std::lock_guard lock(mutex_);
    holdAsked();
    held_ = synth().held();
    return std::move(synth_);
}

void NextSynth::clear() {
    const std::lock_guard lock(mutex_);
    synth_.reset();
    held_.clear();
}

// Whoever is about to read takes everything that was asked for until then.
std::shared_ptr<const std::atomic<Sounds>> NextSynth::askFor(int channel, const Patch& patch) {
    auto sounds = std::make_shared<std::atomic<Sounds>>(Sounds::awaited);
    {
        const std::lock_guard lock(askedMutex_);
        asked_.push_back({channel, patch, sounds});
        if (asked_.size() > 1) return sounds;
    }
    try {
        std::thread([self = shared_from_this()] { self->readAsked(); }).detach();
    } catch (const std::system_error&) {
        readAsked();
    }
    return sounds;
}

void NextSynth::readAsked() {
    const std::lock_guard lock(mutex_);
    holdAsked();
}

Synth& NextSynth::synth() {
    if (!synth_) synth_ = std::make_unique<Synth>(font_, held_);
    return *synth_;
}

void NextSynth::holdAsked() {
    std::vector<Asked> asked;
    {
        const std::lock_guard lock(askedMutex_);
        asked.swap(asked_);
    }
    for (const Asked& each : asked) try {
            synth().hold(each.channel, each.patch);
            *each.sounds = Sounds::loaded;
        } catch (const std::exception&) {
            *each.sounds = Sounds::missing;
        }
}

}  // namespace melvane::music
