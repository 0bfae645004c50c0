#include "tools/reporter.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "mixing/loudness_text.h"
#include "platform/audio_library.h"
#include "state/numbers.h"

namespace melvane {

namespace {

using namespace std::chrono_literals;
constexpr auto kInterval = 100ms;
constexpr int kBarWidth = 40;

double seconds(std::int64_t frames) {
    return static_cast<double>(frames) / kSampleRate;
}

void printLine(const QJsonObject& object) {
    std::printf("%s\n", QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

// A name may hold line breaks; what is said about it is one line all the same.
std::string oneLine(std::string message) {
    std::ranges::replace_if(
        message, [](char c) { return static_cast<unsigned char>(c) < ' '; }, '?');
    return message;
}

// Never -0, which would be printed so.
double rounded(double value, double steps) {
    return std::round(value * steps) / steps + 0.0;
}

// Of decibels, to a hundredth; null where there are none, of silence.
QJsonValue level(double decibels) {
    constexpr double kSteps = 100;
    return std::isfinite(decibels) ? QJsonValue(rounded(decibels, kSteps)) : QJsonValue();
}

QString text(const std::string& utf8) {
    return QString::fromStdString(utf8);
}
QString text(const char* ascii) {
    return QString::fromLatin1(ascii);
}

}  // namespace

bool Reporter::isTime() {
    const auto now = std::chrono::steady_clock::now();
    if (style_ == Style::quiet || now - lastShown_ < kInterval) return false;
    lastShown_ = now;
    return true;
}

void Reporter::opening(double share) {
    if (!isTime()) return;
    if (style_ == Style::bar) return drawBar(share, "opening");
    printLine({{text("event"), text("opening")}, {text("fraction"), share}});
}

void Reporter::searching(double share) {
    if (style_ == Style::bar && (isTime() || share >= 1)) drawBar(share, "searching");
}

void Reporter::measuring(double share) {
    if (style_ == Style::bar && isTime()) drawBar(share, "measuring");
}

void Reporter::matched(const LevelMatch& match) {
    clearBar();
    const Levels& levels = match.levels;
    if (style_ == Style::json)
        printLine({{text("event"), text("levels")},
                   {text("voice_trim"), rounded(levels.trim, 10)},
                   {text("volume"), QJsonArray{levels.volume[0], levels.volume[1]}},
                   {text("song_lufs"), level(match.songLufs)},
                   {text("voice_lufs"), level(match.voiceLufs)},
                   {text("limited_share"), rounded(match.limitedShare, 10000)}});
    else if (style_ == Style::bar)
        std::fprintf(stderr, "melvane-mix: %s\n", levelsText(language_, match).c_str());
}

void Reporter::progress(std::int64_t done, std::int64_t total) {
    const bool last = style_ != Style::quiet && done >= total;
    if (total <= 0 || !(isTime() || last)) return;
    const double fraction = static_cast<double>(done) / static_cast<double>(total);
    if (style_ == Style::bar) return drawBar(fraction, clockText(done / kSampleRate));
    printLine({{text("event"), text("progress")},
               {text("position"), seconds(done)},
               {text("length"), seconds(total)},
               {text("fraction"), fraction}});
}

void Reporter::drawBar(double fraction, const std::string& place) {
    const int filled = static_cast<int>(fraction * kBarWidth);
    const std::string bar = std::string(static_cast<std::size_t>(filled), '#') +
                            std::string(static_cast<std::size_t>(kBarWidth - filled), '-');
    std::fprintf(stderr, "\r[%s] %3d %%  %-8s", bar.c_str(), static_cast<int>(fraction * 100), place.c_str());
    std::fflush(stderr);
    barShown_ = true;
}

void Reporter::clearBar() {
    if (barShown_) std::fputs("\n", stderr);
    barShown_ = false;
}

void Reporter::finished(const RunState& run, std::int64_t frames, bool interrupted) {
    clearBar();
    const std::string& destination = run.lastMixPath;
    if (style_ == Style::json) {
        const Loudness loudness = run.loudness.value_or(Loudness());
        QJsonObject result{{text("event"), text("result")},
                           {text("status"), text(interrupted ? "interrupted" : "done")},
                           {text("destination"), text(destination)},
                           {text("seconds"), seconds(frames)},
                           {text("frames"), static_cast<qint64>(frames)},
                           {text("lufs"), level(loudness.lufs)},
                           {text("range_lu"), loudness.known() ? level(loudness.rangeLu) : QJsonValue()},
                           {text("true_peak_db"), level(loudness.truePeakDb)}};
        if (run.targetLoudness) result[text("target_reached")] = !run.missesTarget;
        printLine(result);
    } else if (destination.empty()) {
        std::fputs("melvane-mix: interrupted before anything was mixed\n", stderr);
    } else if (interrupted) {
        std::fprintf(stderr, "melvane-mix: interrupted; %.1f s are in %s\n", seconds(frames), destination.c_str());
    }
    if (style_ == Style::bar && run.loudness)
        std::fprintf(stderr, "melvane-mix: %s\n", loudnessText(language_, *run.loudness).c_str());
}

void Reporter::placed(const VoiceFound& found) {
    clearBar();
    if (style_ == Style::json)
        printLine({{text("event"), text("sync")},
                   {text("sync"), found.sync},
                   {text("drift_ppm"), found.driftPpm},
                   {text("certainty"), found.certainty}});
    else if (style_ == Style::bar)
        std::fprintf(stderr, "melvane-mix: sync %.3f s, drift %.1f ppm, certainty %.2f\n", found.sync, found.driftPpm,
                     found.certainty);
}

void Reporter::tellPlace(const VoiceFound& found) {
    clearBar();
    const double sync = rounded(found.sync, 1000);
    const double drift = rounded(found.driftPpm, 10);
    if (style_ == Style::json)
        std::printf("{\"sync\": %.3f, \"drift_ppm\": %.1f, \"certainty\": %.2f}\n", sync, drift, found.certainty);
    else
        std::printf("sync %.3f s, drift %.1f ppm, certainty %.2f\n", sync, drift, found.certainty);
}

void Reporter::failed(const std::string& message) {
    clearBar();
    if (style_ == Style::json)
        printLine(
            {{text("event"), text("result")}, {text("status"), text("failed")}, {text("message"), text(message)}});
    note(message);
}

void Reporter::note(const std::string& message) {
    std::fprintf(stderr, "melvane-mix: %s\n", oneLine(message).c_str());
}

}  // namespace melvane
