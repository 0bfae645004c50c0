// What the timeline costs: a frame that is scrolled, zoomed or turned (ms), and following the playhead 30 times a
// second (the counter "core_percent": share of one core). An hour of sound, at the zoom that stands behind the name.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <memory>
#include <optional>
#include <random>
#include <thread>

#include "app/mixer.h"
#include "controls/skin.h"
#include "controls/zoom.h"
#include "desktop/local_destinations.h"
#include "rehearsal/frmTimeline.h"
#include "tests/fake_audio_library.h"
#include "tests/fake_music.h"
#include "tests/fake_platform.h"
#include "tests/temp_dir.h"

namespace melvane {
namespace {

using namespace melvane::test;

constexpr std::int64_t kHour = std::int64_t{3600} * kSampleRate;
constexpr double kFramesASecond = 30;
constexpr QSize kWindow(1000, 400);

// Cheap, and different everywhere.
class Rustle : public PcmSource {
public:
    std::int64_t frames() const override { return kHour; }
    std::size_t read(float* out, std::size_t count) override {
        count = static_cast<std::size_t>(std::min(static_cast<std::int64_t>(count), kHour - place_));
        std::fill_n(out, 2 * count, 0.0F);
        for (std::size_t i = 0; i < 2 * count; i += 64) out[i] = static_cast<float>(random_()) / 4e9F - 0.5F;
        place_ += static_cast<std::int64_t>(count);
        return count;
    }
    void seek(std::int64_t frame) override { place_ = frame; }

private:
    std::minstd_rand random_;
    std::int64_t place_ = 0;
};

struct Bench {
    explicit Bench(int zoom) {
        setZoom(zoom);
        mixer.fields() = {"/song.mp3", "/voice.wav", ""};
        library.length = kHour * kBytesPerFrame;
        window.emplace(mixer.rehearsal(), mixer.state(), mixer.midi().state(), waveforms, language, dialogs,
                       TimelineCalls{}, nullptr);
        window->resize(zoomed(kWindow));
        window->show();
        window->takeFiles();
        const auto& lane = *window->findChild<Lane*>(QStringLiteral("voiceLane"));
        while (lane.value().most < kHour / kSampleRate || !rested()) pass();
    }
    bool rested() {
        pass();
        return --toPass < 0;
    }
    static void pass() {
        QCoreApplication::processEvents();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }

    int toPass = 200;  // until both are read and shown
    TempDir dir;
    FakeAudioLibrary library;
    FakeMusic music;
    FakeSystemMixer systemMixer;
    FakeDialogs dialogs;
    FakeShell shell;
    FakeFileNames names;
    modLang language;
    LocalDestinations destinations{dir / "mixes"};
    Mixer mixer{{library, music, systemMixer, names, destinations, dialogs, shell, language, [] {}}};
    Waveforms waveforms{[](const auto&, const auto&) { return std::make_unique<Rustle>(); }, OutlineCache("")};
    std::optional<frmTimeline> window;
};

void scrolledFrame(benchmark::State& state) {
    Bench bench(static_cast<int>(state.range(0)));
    auto& lane = *bench.window->findChild<Lane*>(QStringLiteral("songLane"));
    Q_EMIT lane.zoomWanted(0.2, 0);
    bool forth = true;
    for (auto _ : state) {
        Q_EMIT lane.scrollWanted(forth ? 37 : -37);
        forth = !forth;
        QCoreApplication::processEvents();
    }
}
BENCHMARK(scrolledFrame)->Arg(100)->Arg(300)->Unit(benchmark::kMillisecond);

void following(benchmark::State& state) {
    Bench bench(static_cast<int>(state.range(0)));
    auto& lane = *bench.window->findChild<Lane*>(QStringLiteral("songLane"));
    for (int i = 0; i < 20; ++i) Q_EMIT lane.zoomWanted(0.8, 0);  // a quarter of a minute
    bench.mixer.rehearsal().play();
    for (auto _ : state) {
        bench.library.cardPlace += static_cast<std::int64_t>(kSampleRate / kFramesASecond);
        QMetaObject::invokeMethod(bench.window->findChild<QTimer*>(QStringLiteral("ticks")), "timeout");
        QCoreApplication::processEvents();
    }
    constexpr double kPercent = 100;
    state.counters["core_percent"] =
        benchmark::Counter(static_cast<double>(state.iterations()) / kFramesASecond / kPercent,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(following)->Arg(100)->Arg(300)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace melvane

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication app(argc, argv);
    melvane::applyStyle(*qApp);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
