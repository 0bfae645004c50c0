#include "engine/capture/recording_inputs.h"

#include <algorithm>
#include <utility>

#include "platform/audio_library.h"

namespace melvane::engine {

namespace {
constexpr const char* kCardInput = "Stereo Mix";
}

std::function<std::vector<std::string>()> RecordingInputs::search(std::shared_ptr<SoundServer> server) const {
    return [server = std::move(server), found = found_] {
        auto sources = server ? withPatience(kServerPatience, [server] { return server->captureSources(); })
                              : std::vector<CaptureSource>{};
        std::vector<std::string> names{kCardInput};
        for (const CaptureSource& source : sources.value_or(std::vector<CaptureSource>{})) names.push_back(source.name);
        const std::lock_guard lock(found->mutex);
        found->sources = std::move(sources).value_or(std::vector<CaptureSource>{});
        return names;
    };
}

void RecordingInputs::list(const std::shared_ptr<SoundServer>& server) {
    const auto takeFound = [this] {
        const std::lock_guard lock(found_->mutex);
        return std::exchange(found_->sources, std::nullopt);
    };
    auto sources = takeFound();
    if (!sources) {
        search(server)();
        sources = takeFound();
    }
    list(std::move(sources).value_or(std::vector<CaptureSource>{}));
}

void RecordingInputs::list(std::vector<CaptureSource> sources) {
    const std::lock_guard lock(mutex_);
    const auto before = std::exchange(inputs_, {{kCardInput, BASS_INPUT_TYPE_ANALOG, "", true}});
    for (CaptureSource& source : sources) {
        const std::uint32_t type = source.isMonitor ? BASS_INPUT_TYPE_UNDEF : BASS_INPUT_TYPE_MIC;
        if (source.isDefault) inputs_.front().on = false;
        inputs_.push_back({std::move(source.name), type, std::move(source.id), source.isDefault});
    }
    if (before.empty()) return;
    for (Input& input : inputs_) {
        const auto known = std::ranges::find(before, input.sourceId, &Input::sourceId);
        input.on = known != before.end() && known->on;
        if (known != before.end()) input.level = known->level;
    }
}

std::deque<RecordingInputs::Input> RecordingInputs::all() const {
    const std::lock_guard lock(mutex_);
    return inputs_;
}

const RecordingInputs::Input* RecordingInputs::at(int input) const {
    return input >= 0 && static_cast<std::size_t>(input) < inputs_.size() ? &inputs_[static_cast<std::size_t>(input)]
                                                                          : nullptr;
}

std::uint32_t RecordingInputs::setting(int input) const {
    const Input* found = at(input);
    return found ? found->type | found->level | (found->on ? 0 : BASS_INPUT_OFF) : ~0U;
}

bool RecordingInputs::set(int input, std::uint32_t setting) {
    if (!at(input)) return false;
    const std::lock_guard lock(mutex_);
    Input& changed = inputs_[static_cast<std::size_t>(input)];
    if (setting & BASS_INPUT_OFF) changed.on = false;
    if (setting & BASS_INPUT_ON) changed.on = true;
    if (setting & BASS_INPUT_LEVEL) changed.level = std::min(setting & 0xFFFFU, 100U);
    return true;
}

}  // namespace melvane::engine
