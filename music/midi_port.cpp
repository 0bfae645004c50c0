#include "music/midi_port.h"

#include <RtMidi.h>
#include <fcntl.h>
#include <jack/jack.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

namespace melvane::music {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kClientName = "Melvane";
constexpr auto kCycleLimit = std::chrono::milliseconds(500);
// What RtMidi may hold for the server between two cycles. It has room for 16 KiB and waits without end for more; half
// of that fits also when two cycles are counted as one.
constexpr std::size_t kUnreadLimit = 8192;
constexpr std::size_t kLengthField = 4;

bool sequencerWorks() {
    const int device = ::open("/dev/snd/seq", O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (device >= 0) ::close(device);
    return device >= 0;
}

}  // namespace

// A client without ports that sees the server's cycles.
class JackBeat {
public:
    static std::unique_ptr<JackBeat> find() {
        static std::once_flag once;
        std::call_once(once, [] {
            jack_set_error_function([](const char*) {});
            jack_set_info_function([](const char*) {});
        });
        auto beat = std::make_unique<JackBeat>();
        beat->client_ = jack_client_open("Melvane beat", JackNoStartServer, nullptr);
        if (!beat->client_) return nullptr;
        jack_set_process_callback(beat->client_, count, beat.get());
        jack_on_shutdown(beat->client_, noteLoss, beat.get());
        return jack_activate(beat->client_) == 0 ? std::move(beat) : nullptr;
    }

    JackBeat() = default;
    ~JackBeat() {
        if (client_) jack_client_close(client_);
    }
    JackBeat(const JackBeat&) = delete;
    JackBeat& operator=(const JackBeat&) = delete;

    bool serverGone() const { return gone_; }

    // Waits a moment for the next cycle, or for the word that there will be none. False when neither comes.
    bool answers() const {
        const auto limit = Clock::now() + kCycleLimit;
        for (const std::uint32_t before = cycles_; cycles_ == before && !gone_;) {
            if (Clock::now() > limit) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }

    // Sending thread. Whether `bytes` more can be given to the server.
    bool takes(std::size_t bytes) {
        const std::uint32_t cycles = cycles_;
        if (cycles != cyclesSeen_) {
            cyclesSeen_ = cycles;
            lastCycle_ = Clock::now();
            unread_ = 0;
        }
        if (gone_ || unread_ + bytes > kUnreadLimit || Clock::now() - lastCycle_ > kCycleLimit) return false;
        unread_ += bytes;
        return true;
    }

private:
    static int count(jack_nframes_t, void* self) {
        ++static_cast<JackBeat*>(self)->cycles_;
        return 0;
    }

    static void noteLoss(void* self) { static_cast<JackBeat*>(self)->gone_ = true; }

    jack_client_t* client_ = nullptr;
    std::atomic<bool> gone_{false};
    std::atomic<std::uint32_t> cycles_{0};
    std::uint32_t cyclesSeen_ = 0;
    Clock::time_point lastCycle_ = Clock::now();
    std::size_t unread_ = 0;
};

struct MidiPort::Connection {
    std::unique_ptr<JackBeat> beat;  // of the JACK server only
    RtMidiOut out;

    Connection(RtMidi::Api api, std::unique_ptr<JackBeat> found) : beat(std::move(found)), out(api, kClientName) {
        out.setErrorCallback([](RtMidiError::Type, const std::string&, void*) {});
    }
};

// The connections to the JACK server. When one is made after the server has gone, the JACK library itself closes all
// that were left of it; closing one of these again would crash. So they are kept, unused, and nothing is opened until
// it is known of each whether its server still runs.
struct MidiPort::JackConnections {
    std::mutex mutex;  // held while any is opened or closed
    std::vector<Connection*> open;
    std::vector<Connection*> abandoned;

    // Never destroyed: a thread that the server holds up may outlast the program's end.
    static JackConnections& all() {
        static auto& connections = *new JackConnections;
        return connections;
    }

    Owned make() {
        const std::lock_guard lock(mutex);
        if (!std::ranges::all_of(open, [](const Connection* other) { return other->beat->answers(); })) return nullptr;
        auto beat = JackBeat::find();
        if (!beat) return nullptr;
        Owned made(new Connection(RtMidi::UNIX_JACK, std::move(beat)));
        open.push_back(made.get());
        return made;
    }

    void close(Connection* connection) {
        const std::lock_guard lock(mutex);
        std::erase(open, connection);
        if (connection->beat->serverGone())
            abandoned.push_back(connection);
        else
            delete connection;
    }
};

void MidiPort::Close::operator()(Connection* connection) const {
    if (connection->beat)
        JackConnections::all().close(connection);
    else
        delete connection;
}

// RtMidi complains on the terminal where there is no server, so it is asked only where there is one.
MidiPort::Owned MidiPort::connect(MidiInterface to) try {
    if (to == MidiInterface::kJack) return JackConnections::all().make();
    if (!sequencerWorks()) return nullptr;
    return Owned(new Connection(RtMidi::LINUX_ALSA, nullptr));
} catch (const RtMidiError&) {
    return nullptr;
}

std::vector<std::string> MidiPort::names(MidiInterface from) {
    std::vector<std::string> names;
    const auto connection = connect(from);
    if (!connection) return names;
    const unsigned count = connection->out.getPortCount();
    for (unsigned i = 0; i < count; ++i) {
        std::string name = connection->out.getPortName(i);
        // The sequencer's numbers of client and port change from one start of the machine to the next.
        if (from == MidiInterface::kAlsa) name.resize(std::min(name.rfind(' '), name.size()));
        names.push_back(std::move(name));
    }
    return names;
}

std::unique_ptr<MidiPort> MidiPort::open(MidiInterface from, std::size_t index) {
    auto connection = connect(from);
    if (!connection) return nullptr;
    connection->out.openPort(static_cast<unsigned>(index), "song");
    if (!connection->out.isPortOpen()) return nullptr;
    return std::unique_ptr<MidiPort>(new MidiPort(std::move(connection)));
}

MidiPort::MidiPort(Owned connection) : connection_(std::move(connection)) {}

void MidiPort::send(std::span<const std::uint8_t> message) {
    if (connection_->beat && !connection_->beat->takes(message.size() + kLengthField)) return;
    connection_->out.sendMessage(message.data(), message.size());
}

}  // namespace melvane::music
