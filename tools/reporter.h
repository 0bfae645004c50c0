// What melvane-mix says while it works and at the end.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "loudness/level_search.h"
#include "mixing/voice_search.h"
#include "settings/modLang.h"
#include "state/run_state.h"

namespace melvane {

class Reporter {
public:
    enum class Style { quiet, bar, json };

    // `language` outlives it.
    Reporter(Style style, const modLang& language) : style_(style), language_(language) {}

    // The share of a file that is decoded before the mix begins, 0..1.
    void opening(double share);
    // The share of the search for the voice's place, 0..1; shown to people only.
    void searching(double share);
    // The share of what is measured before the mix, 0..1; shown to people only.
    void measuring(double share);
    // The levels of the mix that follows.
    void matched(const LevelMatch& match);
    // `done` and `total` in frames.
    void progress(std::int64_t done, std::int64_t total);
    // The run's last mix was written: all of the song, or what was mixed before an interrupt; "" when that was nothing.
    void finished(const RunState& run, std::int64_t frames, bool interrupted);
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
    const modLang& language_;
    std::chrono::steady_clock::time_point lastShown_{};
    bool barShown_ = false;
};

}  // namespace melvane
