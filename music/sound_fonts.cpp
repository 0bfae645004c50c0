#include "music/sound_fonts.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "base/paths.h"
#include "platform/music_performance.h"

namespace melvane::music {

namespace {

namespace fs = std::filesystem;

// Best first.
constexpr const char* kKnownFonts[] = {"FluidR3_GM.sf2", "TimGM6mb.sf2"};

std::string variable(const char* name, const std::string& otherwise) {
    const char* value = std::getenv(name);
    return value && *value ? value : otherwise;
}

// The XDG base directories; what is not absolute is ignored.
std::vector<fs::path> fontDirectories() {
    std::vector<fs::path> directories{"/usr/share/sounds/sf2", "/usr/share/soundfonts"};
    std::istringstream shared(variable("XDG_DATA_HOME", variable("HOME", "") + "/.local/share") + ":" +
                              variable("XDG_DATA_DIRS", "/usr/local/share:/usr/share"));
    for (std::string data; std::getline(shared, data, ':');) {
        if (!fs::path(data).is_absolute()) continue;
        directories.push_back(fs::path(data) / "sounds/sf2");
        directories.push_back(fs::path(data) / "soundfonts");
    }
    return directories;
}

bool isNamedAsFont(const fs::path& path) {
    return path.extension() == ".sf2" || path.extension() == ".SF2";
}

}  // namespace

std::string findSoundFont() {
    std::vector<fs::path> fonts;
    for (const fs::path& directory : fontDirectories()) {
        std::error_code error;
        for (fs::directory_iterator i(directory, error), end; !error && i != end; i.increment(error))
            if (isNamedAsFont(i->path()) && isSoundFont(i->path().string())) fonts.push_back(i->path());
    }
    if (fonts.empty()) throw MusicError("There is no sound font for the synthesizer.");
    std::ranges::sort(fonts);
    for (const char* name : kKnownFonts) {
        const auto known =
            std::ranges::find(fonts, fs::path(name), [](const fs::path& font) { return font.filename(); });
        if (known != fonts.end()) return known->string();
    }
    return fonts.front().string();
}

bool isSoundFont(const std::string& fileName) {
    if (!isFile(fileName)) return false;
    std::string head(12, '\0');
    std::ifstream(fileName, std::ios::binary).read(head.data(), static_cast<std::streamsize>(head.size()));
    std::uintmax_t length = 0;
    for (const std::size_t i : {7U, 6U, 5U, 4U}) length = length << 8 | static_cast<unsigned char>(head[i]);
    std::error_code error;
    return head.starts_with("RIFF") && head.ends_with("sfbk") && length + 8 <= fs::file_size(toPath(fileName), error);
}

}  // namespace melvane::music
