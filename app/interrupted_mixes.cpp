#include "app/interrupted_mixes.h"

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
        if (!canBePlayed(library, mix->privateFile())) continue;
        const std::string part = mix->putBeside();
        files.push_back(part.empty() ? mix->privateFile() : part);
    }
    return files;
}

}  // namespace melvane
