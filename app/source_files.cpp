#include "app/source_files.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

#include "audio/modAudio.h"
#include "base/paths.h"
#include "mixing/failure_cause.h"
#include "mixing/run_messages.h"
#include "state/window_patience.h"

namespace melvane {

namespace fs = std::filesystem;

namespace {

constexpr const char* kDialogTitle = "melvane";
constexpr const char* kBackgroundFilter = " (*mp3;*ogg;*mid;*midi;*kar)|**mp3;*ogg;*mid;*kar;*midi";
constexpr const char* kVocalFilter = " *wav;|*wav;";
constexpr const char* kDestinationFilter = " (*mp3;)|*mp3;";
constexpr const char* kMp3 = ".mp3";
// Files with sound in them, besides those of the filters above.
constexpr std::array<std::string_view, 27> kOtherSound{
    "m4a", "mp4", "m4b", "mov",  "3gp",  "aac", "opus", "oga", "webm", "mkv", "mka", "flac", "wma", "asf",
    "wmv", "wv",  "aif", "aiff", "aifc", "caf", "amr",  "ape", "tta",  "avi", "w64", "rf64", "ogv"};
constexpr std::size_t kExtensionLength = 4;

bool exists(const std::string& path) {
    std::error_code error;
    return fs::exists(toPath(path), error);
}

std::string folderOf(const std::string& file) {
    return toText(toPath(file).parent_path());
}

struct Opening {
    bool& going;
    ~Opening() { going = false; }
};

std::size_t nameStart(const std::string& path) {
    const auto folderEnd = path.rfind('/');
    return folderEnd == std::string::npos ? 0 : folderEnd + 1;
}

}  // namespace

// What owns all it uses is left behind by who gives up.
template <typename Question>
auto SourceFiles::ask(Question question) {
    const auto wanted = [this] { return !givenUp_; };
    return whileWanted(doEvents_, wanted, std::move(question)).value_or(decltype(question()){});
}

bool SourceFiles::isThere(const std::string& path) {
    return ask([path] { return exists(path); });
}

void SourceFiles::giveUp() {
    givenUp_ = true;
    midi_.giveUpOpening();
}

void SourceFiles::BR_Click(int index) {
    if (index == 0) browseBackground();
    if (index == 1) browseVocal();
    if (index == 2) browseDestination();
}

void SourceFiles::browseBackground() {
    const std::string path = dialogs_.openFile(
        {kDialogTitle, language_.lang(LangEntry::audioFiles) + kBackgroundFilter, startFolder(0, fields_.background),
         language_.ownText(OwnText::openSong), language_.ownText(OwnText::allFiles), soundFilter(true)});
    if (!path.empty()) chooseBackground(path);
}

std::string SourceFiles::soundFilter(bool song) const {
    std::string filter = language_.ownText(OwnText::anySound) + "|";
    for (const std::string_view ending : soundEndings(song)) filter += "*." + std::string(ending) + ";";
    return filter;
}

void SourceFiles::chooseBackground(const std::string& path) {
    if (path != fields_.background) tags_.clear();
    fields_.background = path;
    fields_.destination.clear();
    if (!path.empty()) lastFolder[0] = folderOf(path);
    taken(0, path);
    if (run_.isMidiBackground) midi_.close();
    run_.isMidiBackground = isMidiFile(path);
    if (run_.isMidiBackground) openMidi();
    if (!settings_.recDirectory.empty() && !path.empty()) {
        const std::string vocal = settings_.recDirectory + "/" + GetFileTitle(path) + ".wav";
        if (isThere(vocal)) chooseVocal(vocal);
    }
}

bool SourceFiles::take(const std::string& path, std::optional<int> pointedAt) {
    std::optional<int> field = ask([path, pointedAt, chosen = fields_] { return fieldFor(path, pointedAt, chosen); });
    if (!field) return false;
    if (*field == kSongOrVoice) field = askForField(path);
    if (!field) return true;
    if (*field == kBackgroundField) {
        chooseBackground(path);
    } else if (*field == kVocalField) {
        // Another voice makes another mix.
        if (path != fields_.vocal && fields_.destination == run_.lastMixPath) fields_.destination.clear();
        chooseVocal(path);
    } else if (ask([path] { return isFile(path); })) {
        if (sourcesChosen()) offerDestination(path);
    } else {
        if (fields_.background.empty()) return BR_Click(kDestinationField), true;
        proposeDestination(path + "/" + fileName(fields_.background));
    }
    if (fields_.destination.empty() && !fields_.background.empty() && !fields_.vocal.empty())
        proposeDestination(fields_.background);
    return true;
}

void SourceFiles::putInOrder(std::vector<std::string>& paths, std::optional<int> pointedAt) {
    paths = ask([paths, pointedAt, chosen = fields_]() mutable {
        std::vector<std::pair<int, std::string>> ranked;
        for (std::string& path : paths) {
            const int field = fieldFor(path, pointedAt, chosen).value_or(kDestinationField);
            ranked.emplace_back(field == kDestinationField ? kSongOrVoice + 1 : field, std::move(path));
        }
        std::ranges::stable_sort(ranked, {}, &std::pair<int, std::string>::first);
        std::ranges::transform(ranked, paths.begin(), [](auto& one) { return std::move(one.second); });
        return paths;
    });
}

std::optional<int> SourceFiles::askForField(const std::string& path) {
    const auto answer =
        dialogs_.choose(language_.ownText(OwnText::songOrVoice, fileName(path)), kProductCaption,
                        {language_.ownText(OwnText::karaokeBackground), language_.ownText(OwnText::vocalRecording)});
    if (!answer) return std::nullopt;
    return *answer == 0 ? kBackgroundField : kVocalField;
}

void SourceFiles::restore(const PathFields& files) {
    chooseBackground(files.background);
    chooseVocal(files.vocal);
    fields_.destination = agreedPath_ = files.destination;
    agreedStanding_.reset();
    taken(kDestinationField, files.destination);
}

void SourceFiles::openMidi() {
    std::string song = fields_.background;
    whileOpening([&] { midi_.OpenMidi(song); });
}

void SourceFiles::reopenMidi() {
    if (run_.isMidiBackground) whileOpening([this] { midi_.reopen(); });
}

// What was given up, as by closing the program, has not failed.
void SourceFiles::whileOpening(const std::function<void()>& action) {
    {
        const Opening opening{opening_ = true};
        action();
    }
    if (midi_.loaded() || midi_.failure() == MidiFailure::none) return;
    const int cause = ask([song = fields_.background] { return readingError(song); });
    dialogs_.tell(midiMessage(language_, midi_.failure(), cause), kProductCaption, BoxIcon::critical);
}

void SourceFiles::browseVocal() {
    const std::string start = settings_.recDirectory.empty() ? startFolder(1, fields_.vocal) : settings_.recDirectory;
    const std::string path = dialogs_.openFile({kDialogTitle, language_.lang(LangEntry::audioFiles) + kVocalFilter,
                                                start, language_.ownText(OwnText::openVoice),
                                                language_.ownText(OwnText::allFiles), soundFilter(false)});
    if (!path.empty()) chooseVocal(path);
}

// Another voice has a place and a trim of its own.
void SourceFiles::chooseVocal(const std::string& path) {
    if (path != fields_.vocal) run_.voicePlace = {};
    if (path != fields_.vocal) run_.voiceTrim = 0;
    fields_.vocal = path;
    if (!path.empty()) lastFolder[1] = folderOf(path);
    taken(1, path);
}

// A folder that has gone is none to start in.
std::string SourceFiles::startFolder(std::size_t kind, const std::string& file) {
    return ask([folders = std::array{folderOf(file), lastFolder.at(kind)}] {
        std::error_code error;
        const auto isThere = [&](const std::string& folder) { return fs::is_directory(toPath(folder), error); };
        const auto* const found = std::ranges::find_if(folders, isThere);
        return found == folders.end() ? std::string() : *found;
    });
}

bool SourceFiles::sourcesChosen() {
    if (!fields_.background.empty() && !fields_.vocal.empty()) return true;
    dialogs_.tell(language_.lang(LangEntry::sourcesFirst), kProductCaption, BoxIcon::information);
    return false;
}

void SourceFiles::browseDestination() {
    if (!sourcesChosen()) return;
    const std::string chosen =
        dialogs_.saveFile({kDialogTitle, language_.lang(LangEntry::compressedAudio) + kDestinationFilter,
                           ask([song = fields_.background] { return proposedDestination(song); }),
                           language_.ownText(OwnText::saveMix), language_.ownText(OwnText::allFiles)});
    if (!chosen.empty()) offerDestination(chosen);
}

void SourceFiles::offerDestination(const std::string& chosen) {
    const std::string path = withMp3Extension(chosen);
    if (!isThere(path) || agreesToOverwrite()) chooseDestination(path);
}

bool SourceFiles::agreesToOverwrite() {
    return dialogs_.messageBox(language_.lang(LangEntry::overwrite), kProductCaption, BoxIcon::question,
                               BoxButtons::yesNoCancel) == BoxAnswer::yes;
}

SourceFiles::Standing SourceFiles::standingAt(const std::string& path) {
    return ask([path]() -> Standing {
        std::error_code error;
        const auto size = fs::file_size(toPath(path), error);
        if (error) return std::nullopt;
        return std::pair(size, fs::last_write_time(toPath(path), error));
    });
}

void SourceFiles::proposeDestination(const std::string& background) {
    chooseDestination(ask([background] { return proposedDestination(background); }));
}

void SourceFiles::chooseDestination(const std::string& path) {
    fields_.destination = path;
    agreedPath_ = path;
    agreedStanding_ = standingAt(path);
    taken(2, path);
}

bool SourceFiles::mayReplaceDestination() {
    const std::string path = fields_.destination;
    const Standing standing = standingAt(path);
    const bool known = path != agreedPath_ || !standing || standing == agreedStanding_;
    if (!known && !agreesToOverwrite()) return false;
    agreedPath_ = path;
    agreedStanding_ = standing;
    return true;
}

std::vector<std::string_view> soundEndings(bool song) {
    std::vector<std::string_view> endings;
    for (const char* ending : {"mp3", "ogg", "wav"}) endings.emplace_back(ending);
    for (const char* ending : {"mid", "midi", "kar"})
        if (song) endings.emplace_back(ending);
    for (const std::string_view ending : kOtherSound) endings.push_back(ending);
    return endings;
}

std::optional<int> fieldFor(const std::string& path, std::optional<int> pointedAt, const PathFields& chosen) {
    std::error_code error;
    if (fs::is_directory(toPath(path), error)) return kDestinationField;
    if (!isFile(path)) return std::nullopt;
    const std::string extension = lowerCase(GetFileExtension(path));
    const bool usualSong = extension == "mp3" || extension == "ogg";
    const bool usualVoice = extension == "wav";
    if (isMidiFile(path)) return kBackgroundField;
    if (!usualSong && !usualVoice && std::ranges::find(kOtherSound, extension) == kOtherSound.end())
        return std::nullopt;
    if (extension == "mp3" && pointedAt == kDestinationField) return kDestinationField;
    if (pointedAt == kBackgroundField || pointedAt == kVocalField) return pointedAt;
    if (usualSong || usualVoice) return usualSong ? kBackgroundField : kVocalField;
    if (chosen.background.empty() == chosen.vocal.empty()) return kSongOrVoice;
    return chosen.background.empty() ? kBackgroundField : kVocalField;
}

std::string proposedDestination(const std::string& background) {
    const auto point = background.rfind('.');
    const bool hasExtension = point != std::string::npos && point >= nameStart(background);
    const std::string stem = hasExtension ? background.substr(0, point) : background;
    std::string name = stem + kMp3;
    for (int number = 2; exists(name); ++number) name = stem + std::to_string(number) + kMp3;
    return name;
}

std::string withMp3Extension(const std::string& path) {
    if (path.find('.', nameStart(path)) == std::string::npos) return path + kMp3;
    if (path.ends_with(kMp3)) return path;
    std::size_t end = path.size();
    for (std::size_t cut = 0; cut < kExtensionLength && end > nameStart(path); ++cut) do
            --end;
        while (end > nameStart(path) && (path[end] & 0xC0) == 0x80);  // a character may be several bytes
    return path.substr(0, end) + kMp3;
}

}  // namespace melvane
