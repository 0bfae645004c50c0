#include "mixing/file_loudness.h"

#include <chrono>
#include <utility>
#include <vector>

#include "base/low_priority.h"
#include "loudness/loudness_meter.h"
#include "state/window_patience.h"

namespace melvane {

namespace {

constexpr std::size_t kPiece = 4096;
// By when a file that is being opened has been given up.
constexpr std::chrono::milliseconds kEndPatience{500};

std::optional<Loudness> measure(PcmSource& source, const std::atomic<bool>& wanted) {
    LoudnessMeter meter;
    std::vector<float> piece(kPiece * 2);
    while (const std::size_t got = wanted ? source.read(piece.data(), kPiece) : 0) meter.add(piece.data(), got);
    return wanted && !source.failed() ? std::optional(meter.result()) : std::nullopt;
}

}  // namespace

FileLoudness::~FileLoudness() {
    giveUp();
}

void FileLoudness::start(const std::string& file) {
    giveUp();
    wanted_ = std::make_shared<std::atomic<bool>>(true);
    result_ = beside([library = &library_, file, wanted = wanted_]() -> std::optional<Loudness> {
        lowerPriority();
        const auto source = library->openReader(file, [&] { return wanted->load(); });
        return source ? measure(*source, *wanted) : std::nullopt;
    });
}

// Behind the opening nothing of the library is used any more.
void FileLoudness::giveUp() {
    *wanted_ = false;
    if (result_.valid()) std::exchange(result_, {}).wait_for(kEndPatience);
}

std::optional<Loudness> FileLoudness::ended() {
    if (!going() || !isReady(result_)) return std::nullopt;
    return std::exchange(result_, {}).get();
}

}  // namespace melvane
