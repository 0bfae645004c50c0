#include "tools/options.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string_view>
#include <vector>

#include "app/source_files.h"
#include "audio/modAudio.h"
#include "effects/presets.h"
#include "state/loudness.h"
#include "state/numbers.h"

namespace melvane {

namespace {

constexpr double kMostSync = 12 * 3600;
constexpr double kMostKnobSync = 0.6;  // up to which a short vocal starts again

struct Option {
    std::string_view name;
    std::string_view value;  // what the value is called; empty: the option takes none
    std::string_view help;
    void (*take)(MixOptions&, const std::string& value);
    std::string (*words)() = nullptr;  // this and the next: see OptionHelp
    std::string_view endings{};
};

template <typename T>
T number(const std::string& text, T low, T high, const std::string& fault) {
    T value{};
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value);
    if (read.ec != std::errc() || read.ptr != end || !(value >= low && value <= high)) throw UsageError(fault);
    return value;
}

// Whole numbers of one range, joined by commas.
template <typename T, std::size_t count>
std::array<T, count> numbers(const std::string& text, T low, T high, const std::string& fault) {
    const std::vector<std::string> fields = split(text, ',');
    if (fields.size() != count) throw UsageError(fault);
    std::array<T, count> values{};
    for (std::size_t i = 0; i < count; ++i) values[i] = number<T>(fields[i], low, high, fault);
    return values;
}

// A number that may have decimals and a plus sign.
double decimal(const std::string& text, double low, double high, const std::string& fault) {
    const bool plus = text.starts_with('+');
    if (plus && text.find('-') != std::string::npos) throw UsageError(fault);
    return number<double>(plus ? text.substr(1) : text, low, high, fault);
}

void takeVolume(MixOptions& o, const std::string& text) {
    const auto volume =
        numbers<std::int16_t, 2>(text, 0, 100, "--volume takes two whole numbers from 0 to 100, joined by a comma");
    o.changes.push_back([volume](Settings& s) { s.volume = volume; });
}

void takeTone(MixOptions& o, const std::string& text) {
    const auto tone = numbers<std::int16_t, 4>(
        text, 0, 100, "--tone takes four whole numbers from 0 (full boost) to 100 (full cut), joined by commas");
    o.changes.push_back([tone](Settings& s) { s.toneValue = tone; });
}

void takeBalance(MixOptions& o, const std::string& text) {
    const auto balance = numbers<std::int32_t, 2>(
        text, -100, 100, "--balance takes two whole numbers from -100 (left) to 100 (right), joined by a comma");
    o.changes.push_back([balance](Settings& s) { s.balanceValue = balance; });
}

void takeEffects(MixOptions& o, const std::string& text) {
    const std::string fault =
        "--effects takes four pairs \"e,l\" joined by semicolons: e 0 or 1 (on), l a whole number from 0 to 100";
    const std::vector<std::string> pairs = split(text, ';');
    if (pairs.size() != 4) throw UsageError(fault);
    std::array<std::array<std::int16_t, 2>, 4> values{};
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        values[i] = numbers<std::int16_t, 2>(pairs[i], 0, 100, fault);
        if (values[i][0] > 1) throw UsageError(fault);
    }
    o.changes.push_back([values](Settings& s) {
        for (std::size_t i = 0; i < values.size(); ++i) {
            s.EffectState[i].enabled = values[i][0] ? -1 : 0;
            s.EffectState[i].level = values[i][1];
        }
    });
}

std::string presetNames(const char* between) {
    std::string names;
    for (const Preset& preset : kPresets) names += (names.empty() ? "" : between) + std::string(preset.name);
    return names;
}

void takePreset(MixOptions& o, const std::string& text) {
    for (std::size_t i = 0; i < kPresets.size(); ++i) {
        if (lowerCase(text) != lowerCase(std::string(kPresets[i].name)) && text != std::to_string(i)) continue;
        o.changes.push_back([i](Settings& s) { s.currentPreset = static_cast<std::int16_t>(i); });
        return;
    }
    throw UsageError("--preset takes a number from 0 to 13 or a name: " + presetNames(", "));
}

void takeSync(MixOptions& o, const std::string& text) {
    o.findsPlace = text == "auto";
    if (o.findsPlace) return;
    const double seconds = decimal(text, -kMostSync, kMostSync,
                                   "--sync takes seconds, up to twelve hours (vocal earlier, below 0 later), or auto");
    const bool small = std::abs(seconds) <= kMostKnobSync;
    o.sync = {small ? static_cast<float>(seconds) : 0, {small ? 0 : std::llround(seconds * kSampleRate), 0}};
}

void takeKey(MixOptions& o, const std::string& text) {
    o.key = decimal(text, -5, 5, "--key takes semitones from -5 to 5");
}

// Channels count from 1 for the user.
std::int16_t channelIndex(const std::string& text, const std::string& fault) {
    return static_cast<std::int16_t>(number<std::int16_t>(text, 1, kMidiChannels, fault) - 1);
}

void takeMute(MixOptions& o, const std::string& text) {
    for (const std::string& field : split(text, ',')) {
        const auto channel = channelIndex(field, "--mute takes MIDI channels from 1 to 16, joined by commas");
        o.channelChanges.push_back([channel](MidiBackground& midi) { midi.setChannelVolume(channel, 0); });
    }
}

using ChannelSetter = void (MidiBackground::*)(std::int16_t channel, std::int16_t value);

template <ChannelSetter setter>
void takeChannel(MixOptions& o, const std::string& text) {
    const std::string fault = "channel options take CHANNEL=VALUE: a MIDI channel from 1 to 16, a value from 0 to 127";
    const auto fields = split(text, '=');
    if (fields.size() != 2) throw UsageError(fault);
    const auto channel = channelIndex(fields[0], fault);
    const auto value = number<std::int16_t>(fields[1], 0, 127, fault);
    o.channelChanges.push_back([channel, value](MidiBackground& midi) { (midi.*setter)(channel, value); });
}

template <TagField field>
void takeTag(MixOptions& o, const std::string& text) {
    o.tags.texts[field] = text;
}

void takeYear(MixOptions& o, const std::string& text) {
    const bool four = text.size() == 4;
    if (!text.empty()) number<int>(four ? text : "", 1, 9999, "--year takes four digits");
    o.tags.texts[kYearTag] = text;
}

constexpr Option kOptions[] = {
    {"--volume", "B,V", "volume of background and vocal, 0 to 100 each", takeVolume},
    {"--sync", "SECONDS", "vocal earlier (below 0: later); auto: as its recording tells", takeSync,
     [] { return std::string("auto"); }},
    {"--voice-trim", "DB", "vocal that much louder before its effects, -24 to 24",
     [](MixOptions& o, const std::string& text) {
         o.trim = decimal(text, -double{kMostTrim}, kMostTrim, "--voice-trim takes decibels from -24 to 24");
     }},
    {"--match-levels", "", "put the vocal 2 LU above the background, as both are measured",
     [](MixOptions& o, const std::string&) { o.matchesLevels = true; }},
    {"--loudness", "LUFS", "bring the mix to this loudness, -40 to -5",
     [](MixOptions& o, const std::string& text) {
         o.loudness = decimal(text, kLeastLoudness, kMostLoudness, "--loudness takes LUFS from -40 to -5");
     }},
    {"--key", "SEMITONES", "key of the background, -5 to 5, fractions too", takeKey},
    {"--tone", "B,T,B,T", "bass and treble of background and vocal: 0 boost, 50 flat, 100 cut", takeTone},
    {"--balance", "B,V", "balance of background and vocal, -100 left to 100 right", takeBalance},
    {"--effects", "E,L;...", "reverb, echo, chorus, flanger: on (1) or off (0), level 0 to 100", takeEffects},
    {"--preset", "NAME", "equaliser preset of the vocal, by name or number (0 to 13)", takePreset,
     [] { return presetNames("\n"); }},
    {"--mute", "CH,CH...", "MIDI background: channels to silence, 1 to 16", takeMute},
    {"--program", "CH=N", "MIDI background: instrument of a channel, 0 to 127",
     takeChannel<&MidiBackground::setChannelInstrument>},
    {"--channel-volume", "CH=N", "MIDI background: volume of a channel, 0 to 127",
     takeChannel<&MidiBackground::setChannelVolume>},
    {"--channel-balance", "CH=N", "MIDI background: balance of a channel, 0 left, 64 centre, 127 right",
     takeChannel<&MidiBackground::setChannelBalance>},
    {"--soundfont", "FILE", "MIDI background: play with the sounds of this file",
     [](MixOptions& o, const std::string& text) { o.soundFont = text; }, nullptr, "sf2|sf3"},
    {"--title", "TEXT", "title in the tags of the mix, instead of the song's; '': none", takeTag<kTitleTag>},
    {"--artist", "TEXT", "artist, in the same way", takeTag<kArtistTag>},
    {"--album", "TEXT", "album", takeTag<kAlbumTag>},
    {"--year", "YEAR", "year, four digits", takeYear},
    {"--genre", "TEXT", "genre", takeTag<kGenreTag>},
    {"--cover", "FILE", "picture for the cover, JPEG or PNG of at most 16 MB; '': none",
     [](MixOptions& o, const std::string& text) { o.tags.cover = text; }, nullptr, "jpg|jpeg|png"},
    {"--no-tags", "", "write no tags into the mix", [](MixOptions& o, const std::string&) { o.tags.wanted = false; }},
    {"--find-sync", "", "mix nothing: tell where the vocal belongs, and its drift",
     [](MixOptions& o, const std::string&) { o.findSync = true; }},
    {"--job", "FILE", "start from a job that the window program saved; the options beside it win",
     [](MixOptions& o, const std::string& text) { o.job = text; }, nullptr, "melvane"},
    {"--settings", "", "start from what the window program saved",
     [](MixOptions& o, const std::string&) { o.storedSettings = true; }},
    {"--overwrite", "", "replace an existing DESTINATION",
     [](MixOptions& o, const std::string&) { o.overwrite = true; }},
    {"--quiet", "", "no progress", [](MixOptions& o, const std::string&) { o.quiet = true; }},
    {"--json", "", "progress and result as JSON lines on standard output",
     [](MixOptions& o, const std::string&) { o.json = true; }},
    {"--help", "", "show this text", [](MixOptions& o, const std::string&) { o.help = true; }},
    {"--version", "", "show the version", [](MixOptions& o, const std::string&) { o.version = true; }},
};

const Option& findOption(std::string_view name) {
    for (const Option& option : kOptions)
        if (option.name == name) return option;
    throw UsageError("unknown option " + std::string(name));
}

void takePaths(MixOptions& options, const std::vector<std::string>& paths) {
    const bool job = !options.job.empty();
    if (job && options.findSync && !paths.empty()) throw UsageError("--find-sync takes the files of its job");
    if (job && options.storedSettings) throw UsageError("--job and --settings exclude each other");
    if (job && paths.size() > 1) throw UsageError("beside --job at most the DESTINATION is needed");
    if (options.findSync && options.matchesLevels) throw UsageError("--find-sync mixes nothing to be matched");
    if (!job && options.findSync && paths.size() != 2) throw UsageError("--find-sync needs BACKGROUND and VOCAL");
    if (!options.findSync && !job && paths.size() != 3)
        throw UsageError("BACKGROUND, VOCAL and DESTINATION are needed");
    if (!job) options.background = paths[0];
    if (!job) options.vocal = paths[1];
    if (!options.findSync && !paths.empty()) options.destination = paths.back();
}

}  // namespace

MixOptions parseOptions(std::span<const char* const> arguments) {
    MixOptions options;
    std::vector<std::string> paths;
    bool onlyPaths = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string argument = arguments[i];
        if (onlyPaths || !argument.starts_with("-") || argument == "-") {
            paths.push_back(argument);
        } else if (argument == "--") {
            onlyPaths = true;
        } else {
            const auto equals = argument.find('=');
            const Option& option = findOption(argument.substr(0, equals));
            const bool joined = equals != std::string::npos;
            if (joined && option.value.empty()) throw UsageError(std::string(option.name) + " takes no value");
            if (!joined && !option.value.empty() && ++i == arguments.size())
                throw UsageError(std::string(option.name) + " needs a value");
            option.take(options, joined ? argument.substr(equals + 1) : std::string(arguments[i]));
        }
    }
    if (options.help || options.version) return options;
    takePaths(options, paths);
    if (options.job.empty() && !isMidiFile(options.background) &&
        !(options.channelChanges.empty() && options.soundFont.empty()))
        throw UsageError("options of channels and --soundfont are for MIDI backgrounds");
    return options;
}

CommandHelp toolHelp() {
    CommandHelp help{
        .program = "melvane-mix",
        .purpose = "Mixes a karaoke background and a vocal recording into one MP3 file",
        .usages = {"[options] BACKGROUND VOCAL DESTINATION", "[options] --find-sync BACKGROUND VOCAL",
                   "[options] --job FILE [DESTINATION]", "[options] --find-sync --job FILE"},
        .description =
            {"BACKGROUND and VOCAL may be MP3, OGG, WAV, M4A, MP4, Opus, WebM, FLAC, WMA and more, told by content. A "
             "BACKGROUND may also be a MIDI song (.mid, .midi, .kar), which a built-in synthesiser plays with the best "
             "General MIDI sounds that are installed.",
             "No display and no sound card are needed; the mix is made as fast as the processor allows. A shorter "
             "VOCAL starts again until the song ends, unless it was given a place of its own."},
        .options = {},
        .note = "Names that begin with a dash go behind --.",
        .exits = {{"0", "done"},
                  {"1", "could not"},
                  {"2", "wrong usage"},
                  {"130 or 143", "interrupted (what was mixed is kept)"}},
        .files = {{"~/.config/Tessaro", "what the window program saved, for --settings"},
                  {"~/.local/state/Tessaro/unfinished mixes",
                   "the mixes that run; one that was cut off is brought back"}},
        .examples = {{"melvane-mix song.mp3 voice.wav mix.mp3", "mixes both as they are"},
                     {"melvane-mix --mute 4 --key -2 song.kar voice.wav mix.mp3",
                      "leaves the melody to the singer, two semitones lower"},
                     {"melvane-mix --job evening.melvane --volume 70,100", "mixes a job, its song softer"}},
        .endings = joinedEndings(soundEndings(true)),
    };
    for (const Option& option : kOptions)
        help.options.push_back(
            {option.name, option.value, option.help, option.words ? option.words() : "", option.endings});
    return help;
}

}  // namespace melvane
