#include "app/start_checks.h"

#include <string>

#include "audio/modAudio.h"

namespace melvane {

namespace {

constexpr std::uint32_t kNeededEffectInterface = 8;

// The program's own copy goes before one of the system.
std::string findLibrary(const AudioLibraryFile& file, const FileNames& names) {
    for (const std::string& directory : {names.programDirectory(), names.systemDirectory()}) {
        std::string path = directory + "/" + file.fileName();
        if (file.exists(path)) return path;
    }
    return "";
}

}  // namespace

StartResult startAudioLibrary(AudioLibraryFile& file, const FileNames& names, const AudioLibraryOptions& options,
                              const std::function<bool(const std::function<void()>& search)>& wait) {
    const std::string path = findLibrary(file, names);
    if (path.empty()) return {LangEntry::libraryMissing};
    if (!file.load(path) || file.BASS_GetVersion() != static_cast<std::uint32_t>(MakeLong(2, 2)))
        return {LangEntry::wrongVersion};
    auto library = file.create(options);
    if (library && !wait(library->inputSearch())) return {};
    if (!library || !library->BASS_RecordInit(-1) || !library->BASS_Init(-1, kSampleRate, 0, nullptr, nullptr))
        return {LangEntry::cannotInitialise};
    BASS_INFO info;
    library->BASS_GetInfo(info);
    if (info.dsver < kNeededEffectInterface) {
        library->BASS_Free();
        return {LangEntry::interfaceTooOld};
    }
    return {std::nullopt, std::move(library)};
}

}  // namespace melvane
