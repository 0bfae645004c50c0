#include "music/port_sink.h"

#include <pthread.h>

#include <array>
#include <bitset>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "music/heard_clock.h"
#include "music/message_queue.h"
#include "music/midi_messages.h"

namespace melvane::music {

namespace {

using namespace std::chrono_literals;
using Clock = HeardClock::Clock;
constexpr auto kPatience = 200ms;
constexpr std::size_t kUsualSysex = 4096;
// Pedal up, all notes off, all sound off.
constexpr std::array<std::uint8_t, 3> kEndingControllers{kSustain, kAllNotesOff, kAllSoundOff};

// Where it isn't permitted, the thread goes on as it is.
void askForRealTime() {
    sched_param parameters{};
    parameters.sched_priority = sched_get_priority_min(SCHED_FIFO) + 10;
    pthread_setschedparam(pthread_self(), SCHED_FIFO, &parameters);
}

}  // namespace

struct PortSink::Sender {
    std::mutex mutex;
    std::condition_variable wake;
    std::condition_variable changed;  // `ending` or `finished`
    MessageQueue queue;
    HeardClock clock;
    bool ending = false;  // all notes are to be ended
    bool quit = false;
    bool finished = false;

    // The sending thread's own.
    std::unique_ptr<MidiPort> port;
    std::array<std::bitset<128>, kChannels> sounding;
    std::vector<std::uint8_t> message;

    explicit Sender(std::unique_ptr<MidiPort> to) : port(std::move(to)) { message.reserve(kUsualSysex); }

    void push(std::int64_t frame, std::span<const std::uint8_t> bytes) {
        const std::lock_guard lock(mutex);
        const bool idle = queue.empty();
        if (queue.push(frame, bytes) && idle) wake.notify_one();
    }

    void run() {
        askForRealTime();
        std::unique_lock lock(mutex);
        while (!quit) {
            if (ending)
                endNotes(lock);
            else if (queue.empty())
                wake.wait(lock);
            else if (const auto due = clock.heard(queue.firstFrame()); Clock::now() < due)
                wake.wait_until(lock, due);
            else
                sendFirst(lock);
        }
        lock.unlock();
        port.reset();
        lock.lock();
        finished = true;
        changed.notify_all();
    }

    void sendFirst(std::unique_lock<std::mutex>& lock) {
        queue.pop(message);
        lock.unlock();
        port->send(message);
        const unsigned kind = message[0] & 0xF0U;
        if (kind == 0x90 || kind == 0x80) sounding[message[0] & 0x0FU][message[1] & 0x7FU] = kind == 0x90 && message[2];
        lock.lock();
    }

    void endNotes(std::unique_lock<std::mutex>& lock) {
        queue.clear();
        lock.unlock();
        for (std::size_t channel = 0; channel < kChannels; ++channel) {
            const auto low = static_cast<std::uint8_t>(channel);
            for (std::size_t key = 0; key < 128; ++key)
                if (sounding[channel][key]) sendShort(0x80 | low, static_cast<std::uint8_t>(key), 64);
            for (const std::uint8_t controller : kEndingControllers) sendShort(0xB0 | low, controller, 0);
            sounding[channel].reset();
        }
        lock.lock();
        ending = false;
        changed.notify_all();
    }

    void sendShort(int status, std::uint8_t data1, std::uint8_t data2) {
        port->send(std::array{static_cast<std::uint8_t>(status), data1, data2});
    }
};

PortSink::PortSink(std::unique_ptr<MidiPort> port) : sender_(std::make_shared<Sender>(std::move(port))) {
    std::thread([sender = sender_] { sender->run(); }).detach();
}

PortSink::~PortSink() {
    std::unique_lock lock(sender_->mutex);
    sender_->quit = true;
    sender_->wake.notify_one();
    sender_->changed.wait_for(lock, kPatience, [this] { return sender_->finished; });
}

void PortSink::begin(double secondsAhead) {
    const std::lock_guard lock(sender_->mutex);
    sender_->clock.begin(Clock::now(), secondsAhead);
    sender_->wake.notify_one();
}

void PortSink::mixedUpTo(std::int64_t frame) {
    const std::lock_guard lock(sender_->mutex);
    if (sender_->clock.mixedUpTo(frame, Clock::now())) sender_->wake.notify_one();
}

void PortSink::send(std::int64_t frame, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) {
    const std::array message{status, data1, data2};
    const unsigned kind = status & 0xF0U;
    sender_->push(frame, std::span(message).first(kind == 0xC0 || kind == 0xD0 ? 2 : 3));
}

void PortSink::sendSysex(std::int64_t frame, std::span<const std::uint8_t> message) {
    if (!message.empty()) sender_->push(frame, message);
}

void PortSink::allNotesOff() {
    std::unique_lock lock(sender_->mutex);
    sender_->ending = true;
    sender_->wake.notify_one();
    sender_->changed.wait_for(lock, kPatience, [this] { return !sender_->ending; });
}

}  // namespace melvane::music
