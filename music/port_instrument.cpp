#include "music/port_instrument.h"

#include <algorithm>

namespace melvane::music {

PortInstrument::PortInstrument(std::shared_ptr<PortSink> port, double secondsAhead)
    : port_(std::move(port)), secondsAhead_(secondsAhead) {}

void PortInstrument::stop() {
    {
        const std::lock_guard lock(mutex_);
        stopped_ = true;
    }
    port_->allNotesOff();
}

void PortInstrument::begin() {
    rendered_ = 0;
    const std::lock_guard lock(mutex_);
    if (!stopped_) port_->begin(secondsAhead_);
}

void PortInstrument::render(float* out) {
    std::fill_n(out, kPieceFrames * 2, 0.0F);
    rendered_ += static_cast<std::int64_t>(kPieceFrames);
    const std::lock_guard lock(mutex_);
    if (!stopped_) port_->mixedUpTo(rendered_);
}

void PortInstrument::send(std::int64_t frame, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) {
    const std::lock_guard lock(mutex_);
    if (!stopped_) port_->send(frame, status, data1, data2);
}

void PortInstrument::sendSysex(std::int64_t frame, std::span<const std::uint8_t> message) {
    const std::lock_guard lock(mutex_);
    if (!stopped_) port_->sendSysex(frame, message);
}

}  // namespace melvane::music
