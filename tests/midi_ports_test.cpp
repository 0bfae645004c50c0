// MIDI ports of the machine: a JACK server without a card, and a receiver that notes when messages come.
#include <RtMidi.h>
#include <gtest/gtest.h>
#include <jack/jack.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <optional>

#include "music/output_ports.h"
#include "tests/sound_server.h"

using namespace std::chrono_literals;
using melvane::music::OutputPorts;
using Clock = std::chrono::steady_clock;
using Bytes = std::vector<unsigned char>;

namespace {

constexpr int kBlock = 441;
constexpr int kRing = 2048;
constexpr auto kLatency = 20ms;  // of the device behind the card's ring
constexpr auto kReceiver = "hall:in";

struct Timed {
    Bytes bytes;
    Clock::time_point time;
};

// Synchronous: it waits for a late client instead of losing the messages of a cycle. Short cycles: a message waits for
// the server's next one, so half a cycle, 0.7 ms, of every lateness is JACK's.
class JackServer {
public:
    // One that follows a killed one may have to try more than once.
    JackServer() {
        jack_set_error_function([](const char*) {});
        for (int attempt = 0; attempt < 5; ++attempt) {
            server_.emplace(std::vector<std::string>{"jackd", "-s", "-S", "-t", "2000", "--no-realtime", "-n", name_,
                                                     "-d", "dummy", "-r", "44100", "-p", "64"});
            if (answers()) return;
        }
    }
    void vanish() { server_->stop(SIGKILL); }
    void freeze() { server_->freeze(); }

private:
    static bool answers() {
        jack_client_t* client = nullptr;
        for (int i = 0; i < 40 && !client; ++i) {
            std::this_thread::sleep_for(50ms);
            client = jack_client_open("probe", JackNoStartServer, nullptr);
        }
        return client && jack_client_close(client) == 0;
    }

    const std::string name_ = [] {
        const std::string name = "melvane-" + std::to_string(getpid());
        setenv("JACK_DEFAULT_SERVER", name.c_str(), 1);
        setenv("JACK_NO_AUDIO_RESERVATION", "1", 1);
        return name;
    }();
    std::optional<melvane::test::Child> server_;
};

class Receiver {
public:
    Receiver() : in_(std::make_unique<RtMidiIn>(RtMidi::UNIX_JACK, "hall")) {
        in_->ignoreTypes(false, false, false);
        in_->setCallback(&Receiver::note, heard_.get());
        in_->openVirtualPort("in");
    }
    // The JACK library closes by itself what is left of a server that has gone.
    static void leave(std::unique_ptr<Receiver> receiver) {
        static auto& left = *new std::vector<std::unique_ptr<Receiver>>;
        left.push_back(std::move(receiver));
    }

    std::vector<Timed> heard() const {
        const std::lock_guard lock(heard_->mutex);
        return heard_->messages;
    }

private:
    struct Heard {
        std::mutex mutex;
        std::vector<Timed> messages;
    };
    static void note(double, Bytes* message, void* user) {
        auto* heard = static_cast<Heard*>(user);
        const std::lock_guard lock(heard->mutex);
        heard->messages.push_back({*message, Clock::now()});
    }
    std::shared_ptr<Heard> heard_ = std::make_shared<Heard>();
    std::unique_ptr<RtMidiIn> in_;
};

class MidiPorts : public testing::Test {
protected:
    void SetUp() override {
        server = std::make_unique<JackServer>();
        receiver = std::make_unique<Receiver>();
        sink = ports.open(kReceiver);
        ASSERT_TRUE(sink);
    }

    // Mixes `seconds` of a song of chords as the card's thread does, into a ring that a fast card empties in pieces
    // of 256 frames; it is held once. Gives what was sent, and when the card plays it.
    std::vector<Timed> play(double seconds, double holdAt = 1e9) {
        const double rate = 44100 * 1.0002;
        std::vector<Timed> sent;
        auto start = Clock::now();
        std::int64_t startFrame = 0;
        sink->begin(std::chrono::duration<double>(kLatency).count() + kRing / 44100.0);
        for (std::int64_t frame = 0; static_cast<double>(frame) < seconds * 44100;) {
            const double played = std::chrono::duration<double>(Clock::now() - start).count() * rate;
            if (static_cast<double>(frame - startFrame) + kBlock > std::floor(played / 256) * 256 + kRing) {
                std::this_thread::sleep_for(5ms);
                continue;
            }
            if (static_cast<double>(frame) > holdAt * 44100) {
                holdAt = 1e9;
                std::this_thread::sleep_for(400ms);
                start = Clock::now();
                startFrame = frame;
            }
            for (int i = 0; i < kBlock; ++i, ++frame) {
                if (frame % 4410 != 1000 && frame % 4410 != 3000) continue;
                const auto due = std::chrono::duration<double>(static_cast<double>(frame - startFrame) / rate);
                const auto heard = start + kLatency + std::chrono::duration_cast<Clock::duration>(due);
                for (unsigned char key = 60; key < 70; ++key) {
                    const auto velocity = static_cast<unsigned char>(frame % 4410 == 1000 ? 1 + frame % 127 : 0);
                    sink->send(frame, 0x93, key, velocity);
                    sent.push_back({{0x93, key, velocity}, heard});
                }
                const Bytes sysex{0xF0, 0x7D, static_cast<unsigned char>(frame % 128), 1, 2, 3, 4, 0xF7};
                sink->sendSysex(frame, sysex);
                sent.push_back({sysex, heard});
            }
            sink->mixedUpTo(frame);
        }
        return sent;
    }

    // A port whose server is gone costs nobody time, also not the processor's.
    void stopQuickly() {
        const auto start = Clock::now();
        sink->allNotesOff();
        sink.reset();
        EXPECT_LT(Clock::now() - start, 600ms);
        const std::clock_t spent = std::clock();
        std::this_thread::sleep_for(500ms);
        EXPECT_LT(std::clock() - spent, CLOCKS_PER_SEC / 5);
        const auto asked = Clock::now();
        EXPECT_TRUE(ports.descriptions().empty());
        EXPECT_LT(Clock::now() - asked, 1500ms);
    }

    std::unique_ptr<JackServer> server;
    OutputPorts ports;
    std::unique_ptr<Receiver> receiver;
    std::unique_ptr<melvane::music::PortSink> sink;
};

}  // namespace

TEST_F(MidiPorts, PlayASongWhenTheCardDoes) {
    const auto sent = play(10, 6);
    std::this_thread::sleep_for(200ms);
    const auto heard = receiver->heard();
    ASSERT_EQ(heard.size(), sent.size());
    std::vector<double> late;
    for (std::size_t i = 0; i < sent.size(); ++i) {
        ASSERT_EQ(heard[i].bytes, sent[i].bytes) << i;
        late.push_back(std::chrono::duration<double, std::milli>(heard[i].time - sent[i].time).count());
    }
    std::ranges::sort(late);
    std::printf("%zu messages, ms late: first %.2f, median %.2f, 99%% %.2f, last %.2f\n", late.size(), late.front(),
                late[late.size() / 2], late[late.size() * 99 / 100], late.back());
    EXPECT_LT(std::abs(late[late.size() / 2]), 2);
    // The rest is up to the machine's load.
    EXPECT_GT(late[late.size() / 10], -5);
    EXPECT_LT(late[late.size() * 9 / 10], 5);
}

TEST_F(MidiPorts, EndAllNotesAtOnce) {
    EXPECT_EQ(ports.descriptions(), std::vector<std::string>{kReceiver});
    sink->begin(0.1);
    sink->send(0, 0x95, 61, 100);
    sink->send(0, 0xC5, 7, 0);
    sink->send(44100, 0x95, 62, 100);
    std::this_thread::sleep_for(300ms);
    sink->allNotesOff();
    std::this_thread::sleep_for(1s);
    const auto heard = receiver->heard();
    ASSERT_EQ(heard.size(), 2U + 1 + 16 * 3);
    EXPECT_EQ(heard[1].bytes, (Bytes{0xC5, 7}));
    EXPECT_EQ(heard[2 + 5 * 3].bytes, (Bytes{0x85, 61, 64}));
    EXPECT_EQ(heard[2 + 5 * 3 + 1].bytes, (Bytes{0xB5, 64, 0}));
    EXPECT_EQ(heard.back().bytes, (Bytes{0xBF, 120, 0}));
}

TEST_F(MidiPorts, LeaveAServerThatHangs) {
    play(1);
    server->freeze();
    play(9);
    stopQuickly();
    Receiver::leave(std::move(receiver));
}

TEST_F(MidiPorts, LeaveAServerThatVanishedForANewOne) {
    play(1);
    server->vanish();
    play(9);
    Receiver::leave(std::move(receiver));
    stopQuickly();
    SetUp();
    sink->send(0, 0x90, 60, 100);
    std::this_thread::sleep_for(300ms);
    EXPECT_EQ(receiver->heard().size(), 1U);
}
