// What melvane-mix says while it works and at the end.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "mixing/voice_search.h"

namespace melvane {

class Reporter {
public:
    enum class Style { quiet, bar, json };

    explicit Reporter(Style style) : style_(style) {}

    // The share of a file that is decoded before the mix begins, 0..1.
    void opening(double share);
    // The share of the search for the voice's place, 0..1; shown to people only.
    void searching(double share);
    // `done` and `total` in frames.
    void progress(std::int64_t done, std::int64_t total);
    // The file was written: all of the song, or what was mixed before an interrupt; "" when that was nothing.
    void finished(const std::string& destination, std::int64_t frames, bool interrupted);
    // Where the voice comes in the mix that follows.
    void placed(const VoiceFound& found);
    // The same on standard output, where nothing else is asked for.
    void tellPlace(const VoiceFound& found);
    void failed(const std::string& message);
    // Beside the result.
    void note(const std::string& message);

private:
    bool isTime();
    void drawBar(double fraction, const std::string& place);
    void clearBar();

    const Style style_;
    std::chrono::steady_clock::time_point lastShown_{};
    bool barShown_ = false;
};

}  // namespace melvane
