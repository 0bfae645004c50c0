// A song on a MIDI port of the machine: on the card it is silence that keeps the time.
#pragma once

#include <memory>
#include <mutex>

#include "music/instrument.h"
#include "music/port_sink.h"

namespace melvane::music {

class PortInstrument final : public Instrument {
public:
    // `secondsAhead` as in PortSink::begin.
    PortInstrument(std::shared_ptr<PortSink> port, double secondsAhead);

    // Any thread: ends all notes, and whatever is still rendered sends nothing any more.
    void stop();

    void begin() override;
    void render(float* out) override;
    // What an instrument outside does is unknown.
    bool silent() const override { return false; }
    void send(std::int64_t frame, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) override;
    void sendSysex(std::int64_t frame, std::span<const std::uint8_t> message) override;

private:
    const std::shared_ptr<PortSink> port_;
    const double secondsAhead_;
    std::mutex mutex_;
    bool stopped_ = false;
    std::int64_t rendered_ = 0;
};

}  // namespace melvane::music
