#include "midi/karaoke_container.h"

#include <algorithm>

#include "state/errors.h"
#include "state/numbers.h"

namespace melvane {

namespace {

constexpr std::string_view kStart = "#VEXMidi";
constexpr std::string_view kEnd = "#End VEXMidi";
constexpr std::string_view kMarkerLine = "#VEX";
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::size_t kChannelAt = 2;
constexpr std::size_t kChannelDigits = 2;
constexpr std::size_t kValuesAt = 5;

std::string_view from(std::string_view text, std::size_t start) {
    return text.substr(std::min(start, text.size()));
}

std::int16_t integer(std::string_view text) {
    return roundedCast<std::int16_t>(leadingNumber(text));
}

StoredChannel storedChannel(std::string_view line) {
    const auto values = split(from(line, kValuesAt), ',');
    return {integer(from(line, kChannelAt).substr(0, kChannelDigits)),
            leadingNumber(values.at(0)) == 1,
            leadingNumber(values.at(1)),
            integer(values.at(2)),
            integer(values.at(3)),
            integer(values.at(4))};
}

}  // namespace

std::optional<KaraokeContainer> splitContainer(std::string_view bytes) {
    const std::size_t start = bytes.rfind(kStart);
    const std::size_t end = bytes.rfind(kEnd);
    if (start == std::string_view::npos || end == std::string_view::npos) return std::nullopt;
    if (end < start) throw InvalidArgumentError();
    return KaraokeContainer{bytes.substr(0, start), bytes.substr(start, end - start)};
}

void readStoredChannels(std::string_view block, const std::function<void(const StoredChannel&)>& take) {
    const auto container = splitContainer(block);
    if (!container) return;
    for (std::string_view rest = container->settings; !rest.empty();) {
        const std::string_view line = rest.substr(0, rest.find(kLineEnd));
        rest = from(rest, line.size() + kLineEnd.size());
        if (!line.empty() && !line.starts_with(kMarkerLine)) take(storedChannel(line));
    }
}

}  // namespace melvane
