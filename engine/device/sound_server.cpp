#include "engine/device/sound_server.h"

#include <utility>

namespace melvane::engine {

std::shared_ptr<cubeb> SoundServer::connection() const {
    cubeb* made = nullptr;
    if (cubeb_init(&made, "Melvane", nullptr) != CUBEB_OK) return nullptr;
    return {made, cubeb_destroy};
}

std::vector<CaptureSource> SoundServer::captureSources() const {
    std::vector<CaptureSource> sources;
    const auto server = connection();
    cubeb_device_collection found{};
    if (!server || cubeb_enumerate_devices(server.get(), CUBEB_DEVICE_TYPE_INPUT, &found) != CUBEB_OK) return sources;
    for (std::size_t i = 0; i < found.count; ++i) {
        const cubeb_device_info& device = found.device[i];
        if (device.state != CUBEB_DEVICE_STATE_ENABLED || !device.device_id) continue;
        CaptureSource source;
        source.id = device.device_id;
        source.name = device.friendly_name ? device.friendly_name : device.device_id;
        source.isMonitor = source.id.ends_with(".monitor");
        source.isDefault = (device.preferred & CUBEB_DEVICE_PREF_MULTIMEDIA) != 0;
        sources.push_back(std::move(source));
    }
    cubeb_device_collection_destroy(server.get(), &found);
    return sources;
}

}  // namespace melvane::engine
