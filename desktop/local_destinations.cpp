#include "desktop/local_destinations.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include "base/paths.h"
#include "desktop/held_file.h"
#include "desktop/random_name.h"

namespace melvane {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kEmptyLine = "\r\n";
constexpr std::string_view kPrivateStart = ".melvane-";
constexpr std::string_view kPrivateEnd = ".mp3";
constexpr std::size_t kLongestName = 255;       // bytes, in most file systems
constexpr std::size_t kLongestExtension = 100;  // what is longer is the name's end
constexpr int kMostParts = 1000;

// "name (part).mp3" and so on; a name that is near its longest loses its end.
fs::path partOf(const fs::path& file, int number) {
    const bool plain = file.extension().native().size() <= kLongestExtension;
    const std::string extension = plain ? toText(file.extension()) : std::string(kPrivateEnd);
    const std::string end =
        (number == 1 ? std::string(" (part)") : " (part " + std::to_string(number) + ")") + extension;
    std::string stem = toText(plain ? file.stem() : file.filename());
    if (stem.size() + end.size() > kLongestName) {
        std::size_t length = kLongestName - end.size();
        while (length > 0 && (stem[length] & 0xC0) == 0x80) --length;  // no part of a character
        stem.resize(length);
    }
    return file.parent_path() / toPath(stem + end);
}

// Where the file is or is to be: behind links to one, and without links on the way. None where there can't be one:
// ELOOP tells of a link that leads nowhere, EISDIR of a folder, a device and the like.
std::optional<fs::path> resolved(const fs::path& path, std::error_code& error) {
    if (fs::exists(fs::symlink_status(path, error))) {
        const fs::path file = fs::canonical(path, error);
        if (error == std::errc::no_such_file_or_directory)
            error = make_error_code(std::errc::too_many_symbolic_link_levels);
        if (!error && !fs::is_regular_file(file, error)) error = make_error_code(std::errc::is_a_directory);
        return error ? std::nullopt : std::optional(file);
    }
    const fs::path folder = fs::canonical(fs::absolute(path, error).parent_path(), error);
    if (!error && !path.has_filename()) error = make_error_code(std::errc::is_a_directory);
    return error ? std::nullopt : std::optional(folder / path.filename());
}

ClaimFailure failureOf(HoldResult result) {
    switch (result) {
        case HoldResult::held:
            return ClaimFailure::none;
        case HoldResult::exists:
            return ClaimFailure::exists;
        case HoldResult::busy:
            return ClaimFailure::busy;
        case HoldResult::missing:
        case HoldResult::failed:
            break;
    }
    return ClaimFailure::notWritable;
}

// What a private file is made of that gets something in front: beside it, and private too.
fs::path joinedFor(const fs::path& privateFile) {
    return fs::path(privateFile) += ".new";
}

class LocalDestination : public Destination {
public:
    LocalDestination(MixPaths paths, std::unique_ptr<JournalPage> page)
        : file_(std::move(paths.file)), privateFile_(std::move(paths.privateFile)), page_(std::move(page)) {}
    LocalDestination(const LocalDestination&) = delete;
    LocalDestination& operator=(const LocalDestination&) = delete;

    ~LocalDestination() override {
        std::error_code error;
        removeJoined();
        if (ownsPrivateFile_) fs::remove(privateFile_, error);
        // What can't be removed now is found again.
        if ((isPlaceholder_ && !held_.removeFrom(file_)) || error) page_->keep();
    }

    ClaimFailure hold(bool mayReplace) {
        HoldResult result = mayReplace ? held_.open(file_) : HoldResult::missing;
        if (std::error_code error; !mayReplace && fs::exists(fs::symlink_status(file_, error)))
            result = HoldResult::exists;
        if (result == HoldResult::missing) {
            page_->write({file_, privateFile_, true});
            result = held_.create(file_, kEmptyLine);
            isPlaceholder_ = result == HoldResult::held;
        } else if (result == HoldResult::held) {
            page_->write({file_, privateFile_});
        }
        // Another run was quicker.
        if (result == HoldResult::exists && mayReplace) result = HoldResult::busy;
        if (result == HoldResult::held && !(ownsPrivateFile_ = createPrivateFile(privateFile_)))
            result = HoldResult::failed;
        return failureOf(result);
    }

    // What a run left that is no more. False when that was nothing to listen to.
    bool takeOver() {
        const HoldResult there = held_.open(file_);
        const auto content = there == HoldResult::held ? held_.read(kEmptyLine.size() + 1) : std::nullopt;
        isPlaceholder_ = page_->paths().isNew && content == kEmptyLine;
        std::error_code error;
        const fs::file_type type = fs::symlink_status(privateFile_, error).type();
        ownsPrivateFile_ = type == fs::file_type::regular;
        // Another start may tell what they are.
        const bool mayBePlaceholder = page_->paths().isNew && !content && there != HoldResult::busy &&
                                      fs::file_size(file_, error) == kEmptyLine.size();
        if (mayBePlaceholder || type == fs::file_type::none) page_->keep();
        return ownsPrivateFile_;
    }

    const std::string& privateFile() const override { return privateName_; }
    const std::string& file() const override { return name_; }

    int prepend(const std::string& bytes) override {
        const fs::path joined = joinedFor(privateFile_);
        if (!joinFiles(joined, bytes, privateFile_)) return errno;
        std::error_code error;
        fs::rename(joined, privateFile_, error);
        return error.value();
    }

    int replace() override {
        if (!makeSafe(privateFile_, file_)) return errno;
        std::error_code error;
        fs::rename(privateFile_, file_, error);
        if (error) return error.value();
        ownsPrivateFile_ = isPlaceholder_ = false;
        makeFolderSafe(file_.parent_path());
        return 0;
    }

    std::string putBeside() override {
        makeSafe(privateFile_, file_);
        HoldResult result = HoldResult::exists;
        fs::path part;
        for (int number = 1; number <= kMostParts && result == HoldResult::exists; ++number) {
            part = partOf(file_, number);
            result = renameToFree(privateFile_, part);
        }
        if (result != HoldResult::held) {
            leave();
            return "";
        }
        ownsPrivateFile_ = false;
        makeFolderSafe(file_.parent_path());
        return toText(part);
    }

    void leave() override {
        ownsPrivateFile_ = false;
        page_->keep();
    }

private:
    void removeJoined() const {
        std::error_code error;
        const fs::path joined = joinedFor(privateFile_);
        if (fs::is_regular_file(fs::symlink_status(joined, error))) fs::remove(joined, error);
    }

    const fs::path file_;
    const fs::path privateFile_;
    const std::string name_ = toText(file_);
    const std::string privateName_ = toText(privateFile_);
    const std::unique_ptr<JournalPage> page_;  // goes last
    HeldFile held_;
    bool isPlaceholder_ = false;
    bool ownsPrivateFile_ = false;
};

fs::path privateFileFor(const fs::path& file) {
    return file.parent_path() / toPath(std::string(kPrivateStart) + randomName() + std::string(kPrivateEnd));
}

// Whatever a page says, nothing else is touched.
bool isPrivate(const MixPaths& paths) {
    const std::string name = toText(paths.privateFile.filename());
    return paths.file.is_absolute() && paths.file.has_filename() && name.starts_with(kPrivateStart) &&
           name.ends_with(kPrivateEnd) && paths.privateFile.parent_path() == paths.file.parent_path();
}

}  // namespace

DestinationClaim LocalDestinations::claim(const std::string& path, bool mayReplace) {
    std::error_code error;
    const auto file = resolved(toPath(path), error);
    if (!file) return {nullptr, ClaimFailure::notWritable, error.value()};
    auto destination = std::make_unique<LocalDestination>(MixPaths{*file, privateFileFor(*file)}, journal_.newPage());
    const ClaimFailure failure = destination->hold(mayReplace);
    const int cause = failure == ClaimFailure::notWritable ? errno : 0;
    if (failure != ClaimFailure::none) destination.reset();
    return {std::move(destination), failure, cause};
}

std::vector<std::unique_ptr<Destination>> LocalDestinations::interrupted() {
    std::vector<std::unique_ptr<Destination>> found;
    for (auto& page : journal_.pagesOfNobody()) {
        const MixPaths paths = page->paths();
        std::error_code error;
        if (!isPrivate(paths)) continue;
        // On a drive that is away.
        if (!fs::exists(paths.file.parent_path(), error)) {
            page->keep();
            continue;
        }
        auto destination = std::make_unique<LocalDestination>(paths, std::move(page));
        if (destination->takeOver()) found.push_back(std::move(destination));
    }
    return found;
}

std::string LocalDestinations::usualJournal() {
    const char* const state = std::getenv("XDG_STATE_HOME");
    const char* const home = std::getenv("HOME");
    const auto usable = [](const char* folder) { return folder && fs::path(folder).is_absolute(); };
    const fs::path base = usable(state) ? fs::path(state) : fs::path(usable(home) ? home : "/") / ".local" / "state";
    return toText(base / "Tessaro" / "unfinished mixes");
}

}  // namespace melvane
