// MIDI ports of the machine: a JACK server without a card, and a receiver that notes when messages come.
#include <RtMidi.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <jack/jack.h>

#include <cerrno>
#include <ctime>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>

#include "engine/library.h"
#include "music/music.h"
#include "music/output_ports.h"
#include "tests/sound_server.h"

using namespace std::chrono_literals;
using namespace melvane;
using Clock = std::chrono::steady_clock;
using Bytes = std::vector<unsigned char>;

namespace {

constexpr auto kReceiver = "hall:in";

struct Timed {
    Bytes bytes;
    Clock::time_point time;
};

// Synchronous: it waits for a late client instead of losing the messages of a cycle. Short cycles: a message waits for
// the server's next one, so half a cycle, 0.7 ms, of every lateness is JACK's.
class JackServer {
public:
    JackServer() {
        jack_set_error_function([](const char*) {});
        start();
    }
    ~JackServer() {
        server_.reset();
        clearPlacesOfTheDead();
    }
    void vanish() { server_->stop(SIGKILL); }
    void freeze() { server_->freeze(); }

private:
    static bool isDead(pid_t process) { return process > 0 && kill(process, 0) != 0 && errno == ESRCH; }

    // A killed server keeps its place among the eight that a machine can have, and the files of its clients.
    static void clearPlacesOfTheDead() {
        const std::filesystem::path shared = "/dev/shm";
        const int registry = open((shared / "jack-shm-registry").c_str(), O_RDWR | O_CLOEXEC);
        std::int32_t head[6]{};  // the fifth is its length and that of all places
        if (pread(registry, head, sizeof head, 0) == sizeof head) {
            const std::string nobody((static_cast<std::size_t>(head[4]) - sizeof head) / 8, '\0');
            for (auto place = static_cast<off_t>(sizeof head); place < head[4]; place += std::ssize(nobody)) {
                pid_t process = 0;
                const bool told = pread(registry, &process, sizeof process, place) == sizeof process;
                if (told && isDead(process) && pwrite(registry, nobody.data(), nobody.size(), place) < 0) break;
            }
        }
        close(registry);
        for (const auto& entry : std::filesystem::directory_iterator(shared)) {
            const std::string name = entry.path().filename();
            const auto at = name.find(kName);
            std::error_code error;
            if (name.starts_with("jack") && at != std::string::npos && isDead(std::atoi(&name[at + kName.size()])))
                std::filesystem::remove(entry, error);
        }
    }

    // One that follows a killed one may have to try more than once.
    void start() {
        clearPlacesOfTheDead();
        for (int attempt = 0; attempt < 5; ++attempt) {
            server_.emplace(std::vector<std::string>{"jackd", "-s", "-S", "-t", "2000", "--no-realtime", "-n", name_,
                                                     "-d", "dummy", "-r", "44100", "-p", "64"});
            if (answers()) return;
            server_->stop(SIGKILL);
        }
    }
    static bool answers() {
        jack_client_t* client = nullptr;
        for (int i = 0; i < 40 && !client; ++i) {
            std::this_thread::sleep_for(50ms);
            client = jack_client_open("probe", JackNoStartServer, nullptr);
        }
        return client && jack_client_close(client) == 0;
    }

    static constexpr std::string_view kName = "melvane-";  // and the test's process
    const std::string name_ = [] {
        const std::string name = std::string(kName) + std::to_string(getpid());
        setenv("JACK_DEFAULT_SERVER", name.c_str(), 1);
        setenv("JACK_NO_AUDIO_RESERVATION", "1", 1);
        return name;
    }();
    std::optional<test::Child> server_;
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
        ASSERT_EQ(ports.list().size(), 2U);
        port = ports.open(kReceiver);
        ASSERT_TRUE(port);
    }

    // Mixes `seconds` of a song of chords as a card does. Gives what was sent, and when the card plays it.
    std::vector<Timed> play(double seconds) {
        constexpr double kAhead = 0.06;
        port = std::make_shared<music::PortInstrument>(*port, kAhead);
        const auto start = Clock::now();
        const auto time = [&](auto frame, double later = 0) {
            const std::chrono::duration<double> passed(static_cast<double>(frame) / 44100 + later);
            return start + std::chrono::duration_cast<Clock::duration>(passed);
        };
        port->begin(0);
        std::vector<Timed> sent;
        std::array<float, 128> silence;  // one piece
        for (std::int64_t frame = 0; static_cast<double>(frame) < seconds * 44100; frame += 64) {
            std::this_thread::sleep_until(time(frame));
            const auto on = static_cast<unsigned char>(frame / 64 % 2);
            for (unsigned char key = 60; frame / 64 % 8 < 2 && key < 65; ++key) {
                port->send(frame, 0x93, key, on);
                sent.push_back({{0x93, key, on}, time(frame, kAhead)});
            }
            const Bytes sysex{0xF0, 0x7D, static_cast<unsigned char>(frame / 64 % 128), 1, 2, 3, 4, 0xF7};
            port->sendSysex(frame, sysex);
            sent.push_back({sysex, time(frame, kAhead)});
            port->render(silence.data());
        }
        return sent;
    }

    // A port whose server is gone costs nobody time, also not the processor's.
    void stopQuickly() {
        const auto start = Clock::now();
        port->stop();
        port.reset();
        const std::clock_t spent = std::clock();
        std::this_thread::sleep_for(500ms);
        EXPECT_LT(std::clock() - spent, CLOCKS_PER_SEC / 5);
        EXPECT_EQ(ports.list().size(), 1U);
        EXPECT_LT(Clock::now() - start, 5s);
    }

    // What has come by the time that there are so many, or that nobody expects them any more.
    std::vector<Timed> heard(std::size_t messages) const {
        for (int i = 0; i < 2000 && receiver->heard().size() < messages; ++i) std::this_thread::sleep_for(10ms);
        return receiver->heard();
    }

    std::unique_ptr<JackServer> server;
    music::OutputPorts ports{true};
    std::unique_ptr<Receiver> receiver;
    std::shared_ptr<music::PortInstrument> port;
};

// The channel is as a device has it without a song before anything is played on it.
void expectReset(const std::vector<Timed>& heard, unsigned char channel,
                 std::map<unsigned char, unsigned char> controls, const std::vector<Bytes>& tuning) {
    const auto on = [&](int status) { return static_cast<unsigned char>(status | channel); };
    std::vector<Bytes> wanted{{on(0xB0), 121, 0}};
    controls.insert({{0, 0}, {7, 100}, {10, 64}, {11, 127}, {32, 0}});
    for (const auto& [control, value] : controls) wanted.push_back({on(0xB0), control, value});
    for (const auto& parameters :
         {std::vector<Bytes>{{101, 0}, {100, 0}, {6, 2}, {38, 0}}, tuning, {{101, 127}, {100, 127}}})
        for (const Bytes& parameter : parameters) wanted.push_back({on(0xB0), parameter[0], parameter[1]});
    wanted.push_back({on(0xE0), 0, 0x40});
    wanted.push_back({on(0xC0), 0});
    std::vector<Bytes> first;
    for (const Timed& message : heard)
        if ((message.bytes[0] & 0x0F) == channel && message.bytes[0] < 0xF0 && first.size() < wanted.size())
            first.push_back(message.bytes);
    EXPECT_EQ(first, wanted);
}

}  // namespace

TEST_F(MidiPorts, PlayASongWhenTheCardDoes) {
    const auto before = port;
    const auto sent = play(2);
    before->send(0, 0x90, 1, 1);  // of a play that is over
    const auto heard = this->heard(sent.size());
    ASSERT_EQ(heard.size(), sent.size());
    std::vector<double> late;
    for (std::size_t i = 0; i < sent.size(); ++i) {
        ASSERT_EQ(heard[i].bytes, sent[i].bytes) << i;
        late.push_back(std::chrono::duration<double, std::milli>(heard[i].time - sent[i].time).count());
    }
    std::ranges::sort(late);
    const auto part = [&](double share) {
        return late[static_cast<std::size_t>(share * static_cast<double>(late.size()))];
    };
    // A busy machine makes messages late; a benchmark shows by how much on an idle one.
    EXPECT_GT(part(0.1), -20);
    EXPECT_LT(part(0.5), 1000);
    std::printf("late_ms %.2f %.2f %.2f\n", part(0.1), part(0.5), part(0.9));
}

TEST_F(MidiPorts, GetTheSongAsTheUserSetItAndTheEndOfAllNotes) {
    port.reset();
    engine::Library library({CardClock::stepped, 441, ""});
    library.BASS_Init(-1, 44100, 0, nullptr, nullptr);
    const music::Music music = music::createMusic(library, {});
    const auto listed = music.system->portSearch()();
    EXPECT_EQ(listed, (std::vector<std::string>{"Melvane synthesizer", kReceiver}));
    const auto performance = music.system->createPerformance(listed);
    performance->setPort(1, 80);
    using namespace std::string_literals;
    performance->download(
        music.system->loadSegment("MThd\0\0\0\6\0\0\0\1\0\xF0MTrk\0\0\0\x14"
                                  "\0\xB5\7\x10\0\x95\x3D\x64\0\xC5\7\x87\x40\x95\x3E\x64\0\xFF\x2F\0"s));
    performance->setMasterVolume(-1200);
    performance->sendMidi(10, kReferenceTime, 5, 0xB0, 7, 90);
    performance->sendPatch(0, kReferenceTime, 4, 128, 0, 0);
    performance->playSegment();
    library.stepCard(4410);
    constexpr std::size_t kReset = 14;  // messages for each channel, of a device that has played nothing yet
    constexpr std::size_t kBegun = 16 * kReset + 4;
    constexpr std::size_t kEnded = kBegun + 1 + 16 * 3;
    this->heard(kBegun);
    performance->stop();
    library.stepCard(88200);
    auto heard = this->heard(kEnded);
    ASSERT_EQ(heard.size(), kEnded);
    expectReset(heard, 5, {}, {});
    heard.erase(heard.begin(), heard.begin() + 16 * kReset);
    EXPECT_EQ(heard[0].bytes, (Bytes{0xB5, 7, 90})) << "and not the song's own";
    EXPECT_EQ(heard[1].bytes, (Bytes{0xF0, 0x7F, 0x7F, 4, 1, 0x13, 0x40, 0xF7})) << "half the amplitude, by square law";
    EXPECT_EQ(heard[2].bytes, (Bytes{0x95, 61, 100}));
    EXPECT_EQ(heard[3].bytes, (Bytes{0xC5, 7}));
    EXPECT_EQ(heard[4].bytes, (Bytes{0x85, 61, 64}));
    EXPECT_EQ(heard[5 + 5 * 3].bytes, (Bytes{0xB5, 64, 0}));
    EXPECT_EQ(heard.back().bytes, (Bytes{0xBF, 120, 0}));

    performance->playSegment();
    const Bytes set{1, 6, 8, 38, 70, 71, 78, 79, 91, 95, 96, 100, 101, 102, 119, 120};
    for (const std::uint8_t controller : set) performance->sendMidi(0, kReferenceTime, 5, 0xB0, controller, 9);
    library.stepCard(4410);
    this->heard(kEnded + kBegun + set.size());
    performance->stop();
    const std::size_t first = this->heard(2 * kEnded + set.size()).size();
    performance->playSegment();
    library.stepCard(441);
    heard = this->heard(first + 16 * (kReset + 1));
    heard.erase(heard.begin(), heard.begin() + static_cast<std::ptrdiff_t>(first));
    expectReset(heard, 5,
                {{1, 0}, {8, 64}, {70, 0}, {71, 64}, {78, 64}, {79, 0}, {91, 40}, {95, 0}, {102, 0}, {119, 0}},
                {{100, 1}, {6, 64}, {38, 0}, {100, 2}, {6, 64}, {38, 0}});

    // Another place: the note ends, and is struck again behind what the song has set there.
    const auto heardUpTo = [&](const Bytes& last) {
        for (int i = 0; i < 1000 && receiver->heard().back().bytes != last; ++i) std::this_thread::sleep_for(10ms);
        return receiver->heard();
    };
    const std::size_t begun = heardUpTo({0xC5, 7}).size();
    library.cueCard(44100);
    library.stepCard(441);
    heard = heardUpTo({0x95, 61, 100});
    EXPECT_EQ(heard.at(begun).bytes, (Bytes{0x85, 61, 64}));
    EXPECT_EQ(heard.back().bytes, (Bytes{0x95, 61, 100}));
    EXPECT_EQ(heard.at(heard.size() - 2).bytes, (Bytes{0xC5, 7}));

    // A pause is silent; behind it sounds what did before.
    performance->sendMidi(0, kReferenceTime, 5, 0xB0, 64, 100);
    library.stepCard(441);
    const std::size_t playing = heardUpTo({0xB5, 64, 100}).size();
    performance->pause(true);
    heard = heardUpTo({0xBF, 120, 0});
    EXPECT_EQ(heard.at(playing).bytes, (Bytes{0x85, 61, 64}));
    EXPECT_EQ(heard.size(), playing + 1 + 16 * 3);
    performance->pause(false);
    library.stepCard(441);
    heard = heardUpTo({0x95, 61, 100});
    EXPECT_EQ(heard.at(heard.size() - 2).bytes, (Bytes{0xB5, 64, 100}));
    EXPECT_EQ(heard.size(), playing + 1 + 16 * 3 + 2);
}

TEST_F(MidiPorts, LeaveAServerThatHangs) {
    play(0.5);
    server->freeze();
    play(2);
    stopQuickly();
    Receiver::leave(std::move(receiver));
}

TEST_F(MidiPorts, LeaveAServerThatVanishedForANewOne) {
    play(0.5);
    server->vanish();
    play(2);
    Receiver::leave(std::move(receiver));
    stopQuickly();
    SetUp();
    port->send(0, 0x90, 60, 100);
    EXPECT_EQ(heard(1).size(), 1U);
}
