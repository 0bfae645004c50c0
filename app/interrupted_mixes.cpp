#include "app/interrupted_mixes.h"

#include <algorithm>
#include <filesystem>

#include "base/paths.h"
#include "base/verdict.h"

namespace melvane {

namespace {

bool canBePlayed(AudioLibrary& library, const std::string& file) {
    const Handle stream = library.BASS_StreamCreateFile(false, file.c_str(), 0, 0, 0);
    const bool plays = stream != 0 && library.BASS_ChannelGetLength(stream) > 0;
    library.BASS_StreamFree(stream);
    return plays;
}

}  // namespace

std::vector<std::string> bringBackMixes(Destinations& destinations, AudioLibrary& library) {
    std::vector<std::string> files;
    for (const auto& mix : destinations.interrupted()) {
        const std::string& file = mix->privateFile();
        const Verdict verdict = judge(file, [&] { return canBePlayed(library, file); });
        if (verdict == Verdict::unknown) mix->leave();
        if (verdict != Verdict::good) continue;
        const std::string part = mix->putBeside();
        files.push_back(part.empty() ? file : part);
    }
    std::ranges::sort(files, {}, [](const std::string& file) {
        std::error_code error;
        return std::filesystem::last_write_time(toPath(file), error);
    });
    return files;
}

}  // namespace melvane
