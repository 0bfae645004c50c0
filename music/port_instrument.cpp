#include "music/port_instrument.h"

#include <pthread.h>

#include <algorithm>
#include <array>
#include <bitset>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "music/heard_clock.h"
#include "music/held_notes.h"
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

// Registered parameters: bend range in semitones, fine and coarse tuning.
constexpr std::array<std::uint8_t, 3> kParameterDefaults{2, 64, 64};

// Set anew before each song, whatever was sent; resetting the controllers leaves these.
bool isBasic(std::uint8_t controller) {
    return controller == kBankHigh || controller == kBankLow || controller == kVolumeController ||
           controller == kBalanceController || controller == kExpression;
}

bool setsParameter(std::uint8_t controller) {
    return controller == kDataEntry || controller == kDataEntry + kFine ||
           (controller >= kDataIncrement && controller <= kParameterHigh);
}

// Of a device without a song, as General MIDI 2 has it.
std::uint8_t usualValue(std::uint8_t controller) {
    constexpr std::uint8_t kBalanceOfTwo = 8;
    constexpr std::uint8_t kReverb = 91;
    const bool ofSound = controller >= 71 && controller <= 78;
    if (controller == kVolumeController) return 100;
    if (controller == kExpression) return 127;
    if (controller == kBalanceController || controller == kBalanceOfTwo || ofSound) return 64;
    return controller == kReverb ? 40 : 0;
}

// Where it isn't permitted, the thread goes on as it is.
void askForRealTime() {
    sched_param parameters{};
    parameters.sched_priority = sched_get_priority_min(SCHED_FIFO) + 10;
    pthread_setschedparam(pthread_self(), SCHED_FIFO, &parameters);
}

}  // namespace

// Belongs to the instrument that plays now; those that are still rendered find themselves left out.
struct PortInstrument::Sender {
    std::mutex mutex;
    std::condition_variable wake;
    std::condition_variable ended;  // `finished`
    MessageQueue queue;
    HeardClock clock;
    const PortInstrument* owner;
    bool stopped = false;
    bool ending = false;     // all notes are to be ended
    bool resetting = false;  // and then all channels reset
    bool paused = false;
    bool hushed = false;          // what sounds was ended for a pause
    Clock::time_point hushDue{};  // when what was mixed before it has been heard
    double secondsAhead = 0;
    std::int64_t mixed = 0;  // frames
    bool quit = false;
    bool finished = false;

    // The sending thread's own.
    std::unique_ptr<MidiPort> port;
    HeldNotes sounding;
    std::array<std::bitset<128>, kMidiChannels> controllers;  // that were sent since the last reset
    std::vector<std::uint8_t> message;

    Sender(std::unique_ptr<MidiPort> to, const PortInstrument* by) : owner(by), port(std::move(to)) {
        message.reserve(kUsualSysex);
    }

    bool playedBy(const PortInstrument* instrument) const { return owner == instrument && !stopped; }

    void push(const PortInstrument* by, std::int64_t frame, std::span<const std::uint8_t> bytes) {
        const std::lock_guard lock(mutex);
        if (!playedBy(by)) return;
        goOn(frame);
        const bool idle = queue.empty();
        if (queue.push(frame, bytes) && idle) wake.notify_one();
    }

    void hushSoon() {
        hushed = hushed && !paused;
        hushDue = clock.heard(mixed);
        wake.notify_one();
    }

    // The first frame behind a pause: what sounded then is struck again.
    void goOn(std::int64_t frame) {
        if (paused || !std::exchange(hushed, false)) return;
        clock.begin(Clock::now(), frame, secondsAhead);
        queue.push(frame, {});
        wake.notify_one();
    }

    void run() {
        askForRealTime();
        std::unique_lock lock(mutex);
        while (!quit || ending) {
            if (ending)
                endNotes(lock);
            else if (resetting)
                resetChannels(lock);
            else if (queue.empty())
                waitForMore(lock);
            else if (const auto due = clock.heard(queue.firstFrame()); Clock::now() < due)
                wake.wait_until(lock, due);
            else
                sendFirst(lock);
        }
        lock.unlock();
        port.reset();
        lock.lock();
        finished = true;
        ended.notify_all();
    }

    void waitForMore(std::unique_lock<std::mutex>& lock) {
        if (!paused || hushed) return wake.wait(lock);
        if (Clock::now() < hushDue) return static_cast<void>(wake.wait_until(lock, hushDue));
        hushed = true;
        lock.unlock();
        hush();
        lock.lock();
    }

    void sendFirst(std::unique_lock<std::mutex>& lock) {
        queue.pop(message);
        lock.unlock();
        if (message.empty()) {
            sounding.strikeAgain([this](auto... bytes) { sendShort(bytes...); });
        } else {
            port->send(message);
            if (message[0] < kSystemExclusive) note(message[0], message[1], message.size() > 2 ? message[2] : 0);
        }
        lock.lock();
    }

    void note(std::uint8_t status, std::uint8_t data1, std::uint8_t data2) {
        sounding.take(status, data1, data2);
        if ((status & 0xF0) == kControlChange) controllers[status & 0x0FU].set(data1 & 0x7FU);
    }

    void hush() {
        sounding.letGo([this](auto... bytes) { sendShort(bytes...); });
        for (int channel = 0; channel < kMidiChannels; ++channel)
            for (const std::uint8_t controller : kEndingControllers)
                sendShort(onChannel(kControlChange, channel), controller, 0);
    }

    void endNotes(std::unique_lock<std::mutex>& lock) {
        ending = false;
        lock.unlock();
        hush();
        sounding.clear();
        lock.lock();
    }

    void resetChannels(std::unique_lock<std::mutex>& lock) {
        resetting = false;
        lock.unlock();
        for (int channel = 0; channel < kMidiChannels; ++channel) resetChannel(channel);
        lock.lock();
    }

    void resetChannel(int channel) {
        auto& sent = controllers[static_cast<std::size_t>(channel)];
        const auto control = [&](std::uint8_t controller, std::uint8_t value) {
            sendShort(onChannel(kControlChange, channel), controller, value);
        };
        control(kResetControllers, 0);
        for (std::uint8_t controller = 0; controller < kAllSoundOff; ++controller)
            if (isBasic(controller) || (sent[controller] && !setsParameter(controller)))
                control(controller, usualValue(controller));
        // The tuning only where a song may have set it: a cable takes a third of a millisecond for each byte.
        const std::size_t parameters = sent[kParameterLow] ? kParameterDefaults.size() : 1;
        control(kParameterHigh, 0);
        for (std::size_t parameter = 0; parameter < parameters; ++parameter) {
            control(kParameterLow, static_cast<std::uint8_t>(parameter));
            control(kDataEntry, kParameterDefaults[parameter]);
            control(kDataEntry + kFine, 0);
        }
        for (const std::uint8_t none : {kParameterHigh, kParameterLow}) control(none, 0x7F);
        sendShort(onChannel(kPitchBend, channel), 0, 0x40);
        port->send(std::array{onChannel(kProgramChange, channel), std::uint8_t{0}});
        sent.reset();
    }

    void sendShort(std::uint8_t status, std::uint8_t data1, std::uint8_t data2) {
        port->send(std::array{status, data1, data2});
    }
};

PortInstrument::PortInstrument(std::unique_ptr<MidiPort> port)
    : sender_(std::make_shared<Sender>(std::move(port), this)) {
    std::thread([sender = sender_] { sender->run(); }).detach();
}

PortInstrument::PortInstrument(const PortInstrument& before, double secondsAhead) : sender_(before.sender_) {
    const std::lock_guard lock(sender_->mutex);
    sender_->owner = this;
    sender_->secondsAhead = secondsAhead;
    sender_->mixed = 0;
    sender_->stopped = sender_->paused = sender_->hushed = false;
}

PortInstrument::~PortInstrument() {
    std::unique_lock lock(sender_->mutex);
    if (sender_->owner != this) return;
    sender_->quit = true;
    sender_->wake.notify_one();
    sender_->ended.wait_for(lock, kPatience, [this] { return sender_->finished; });
}

void PortInstrument::stop() {
    const std::lock_guard lock(sender_->mutex);
    if (!sender_->playedBy(this)) return;
    sender_->stopped = sender_->ending = true;
    sender_->paused = false;
    sender_->queue.clear();  // now: what the next play sends is to stay
    sender_->wake.notify_one();
}

void PortInstrument::pause(bool paused) {
    const std::lock_guard lock(sender_->mutex);
    if (!sender_->playedBy(this)) return;
    sender_->paused = paused;
    sender_->hushSoon();
}

void PortInstrument::reset() {
    const std::lock_guard lock(sender_->mutex);
    if (!sender_->playedBy(this)) return;
    sender_->resetting = true;
    sender_->wake.notify_one();
}

void PortInstrument::begin(std::int64_t frame) {
    const std::lock_guard lock(sender_->mutex);
    if (!sender_->playedBy(this)) return;
    const bool goesOn = std::exchange(sender_->mixed, frame) > 0;
    sender_->hushed = false;
    if (goesOn) {
        sender_->queue.clear();
        sender_->ending = sender_->resetting = true;
    }
    sender_->clock.begin(Clock::now(), frame, sender_->secondsAhead);
    sender_->wake.notify_one();
}

void PortInstrument::render(float* out) {
    std::fill_n(out, kPieceFrames * 2, 0.0F);
    const std::lock_guard lock(sender_->mutex);
    if (!sender_->playedBy(this)) return;
    sender_->goOn(sender_->mixed);
    sender_->mixed += static_cast<std::int64_t>(kPieceFrames);
    if (sender_->clock.mixedUpTo(sender_->mixed, Clock::now())) sender_->wake.notify_one();
    // The last block before the pause.
    if (sender_->paused) sender_->hushSoon();
}

void PortInstrument::send(std::int64_t frame, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) {
    const std::array message{status, data1, data2};
    sender_->push(this, frame, std::span(message).first(1 + dataBytes(status)));
}

void PortInstrument::sendSysex(std::int64_t frame, std::span<const std::uint8_t> message) {
    if (!message.empty()) sender_->push(this, frame, message);
}

}  // namespace melvane::music
