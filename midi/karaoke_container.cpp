#include "midi/karaoke_container.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>

#include "base/paths.h"
#include "midi/file_bytes.h"
#include "state/errors.h"
#include "state/numbers.h"

namespace melvane {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kStart = "#VEXMidi";
constexpr std::string_view kEnd = "#End VEXMidi";
constexpr std::string_view kMarkerLine = "#VEX";
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::size_t kChannelAt = 2;
constexpr std::size_t kChannelDigits = 2;
constexpr std::size_t kValuesAt = 5;

// Nothing but a plain file is ever deleted.
void removeFile(const std::string& fileName) {
    std::error_code error;
    if (isFile(fileName)) fs::remove(toPath(fileName), error);
}

// Half a file is never left behind.
void writeFile(const std::string& fileName, std::string_view bytes) {
    std::ofstream file(toPath(fileName), std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (file.good()) return;
    removeFile(fileName);
    throw FileError("can't write " + fileName);
}

std::string_view from(std::string_view text, std::size_t start) {
    return text.substr(std::min(start, text.size()));
}

void readLine(std::string_view line, MidiState& state, MidiChannels& channels,
              const std::function<void(double)>& setTone) {
    const auto integer = [](std::string_view text) { return roundedCast<std::int16_t>(leadingNumber(text)); };
    const std::int16_t channel = integer(from(line, kChannelAt).substr(0, kChannelDigits));
    const auto values = split(from(line, kValuesAt), ',');
    const bool on = leadingNumber(values.at(0)) == 1;
    const double tone = leadingNumber(values.at(1));
    const std::int16_t volume = integer(values.at(2));
    const std::int16_t balance = integer(values.at(3));
    const std::int16_t instrument = integer(values.at(4));
    setTone(tone);
    state.fileSettingsFound = true;
    if (channel != kPercussionChannel) channels.SetSingleChannel(channel, on, volume, balance, instrument);
}

}  // namespace

std::optional<KaraokeContainer> splitContainer(std::string_view bytes) {
    const std::size_t start = bytes.rfind(kStart);
    const std::size_t end = bytes.rfind(kEnd);
    if (start == std::string_view::npos || end == std::string_view::npos) return std::nullopt;
    if (end < start) throw InvalidArgumentError();
    return KaraokeContainer{bytes.substr(0, start), bytes.substr(start, end - start)};
}

std::string ExtractMidi(const std::string& fileName, MidiState& state, const FileNames& names) {
    state.midiSettingsBlock.clear();
    const std::string bytes = fileBytes(fileName);
    const auto container = splitContainer(bytes);
    const std::string temporary = names.temporaryMidiFile();
    std::error_code error;
    // Who opens the temporary file itself keeps it; a player does not mind what stands behind a song.
    const bool isTemporary = fs::equivalent(toPath(fileName), toPath(temporary), error);
    if (container) {
        state.midiSettingsBlock = container->settings;
        if (!isTemporary) writeFile(temporary, container->song);
        return temporary;
    }
    if (!isTemporary) removeFile(temporary);
    return fileName;
}

void ReadMidi(std::string_view block, MidiState& state, MidiChannels& channels,
              const std::function<void(double)>& setTone) {
    try {
        const auto container = splitContainer(block);
        if (!container) return;
        for (std::string_view rest = container->settings; !rest.empty();) {
            const std::string_view line = rest.substr(0, rest.find(kLineEnd));
            rest = from(rest, line.size() + kLineEnd.size());
            if (!line.empty() && !line.starts_with(kMarkerLine)) readLine(line, state, channels, setTone);
        }
    } catch (const std::exception&) {
        // What the lines before set stays.
    }
}

}  // namespace melvane
