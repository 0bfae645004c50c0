#include "desktop/local_destinations.h"

#include <charconv>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <random>
#include <system_error>

#include "base/paths.h"
#include "desktop/held_file.h"

namespace melvane {

namespace fs = std::filesystem;

namespace {

constexpr const char* kEmptyLine = "\r\n";

std::string randomName() {
    std::random_device random;
    const std::uint64_t number = std::uint64_t{random()} << 32 | random();
    char digits[16];
    return {digits, std::to_chars(digits, digits + sizeof digits, number, 16).ptr};
}

// Where the file is or is to be: behind links to one, and without links on the way. None where there can't be one.
std::optional<fs::path> resolved(const fs::path& path) {
    std::error_code error;
    if (fs::exists(fs::symlink_status(path, error))) {
        const fs::path file = fs::canonical(path, error);
        return error || !fs::is_regular_file(file, error) ? std::nullopt : std::optional(file);
    }
    const fs::path folder = fs::canonical(fs::absolute(path, error).parent_path(), error);
    return error || !path.has_filename() ? std::nullopt : std::optional(folder / path.filename());
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

class LocalDestination : public Destination {
public:
    explicit LocalDestination(fs::path file)
        : file_(std::move(file)), privateFile_(file_.parent_path() / (".melvane-" + randomName() + ".mp3")) {}
    LocalDestination(const LocalDestination&) = delete;
    LocalDestination& operator=(const LocalDestination&) = delete;

    ~LocalDestination() override {
        std::error_code error;
        if (ownsPrivateFile_) fs::remove(privateFile_, error);
        if (isPlaceholder_ && held_.standsAt(file_)) fs::remove(file_, error);
    }

    ClaimFailure hold(bool mayReplace) {
        HoldResult result = mayReplace ? held_.open(file_) : HoldResult::missing;
        if (result == HoldResult::missing) {
            result = held_.create(file_, kEmptyLine);
            isPlaceholder_ = result == HoldResult::held;
        }
        // Another run was quicker.
        if (result == HoldResult::exists && mayReplace) result = HoldResult::busy;
        if (result == HoldResult::held && !(ownsPrivateFile_ = createPrivateFile(privateFile_)))
            result = HoldResult::failed;
        return failureOf(result);
    }

    const std::string& privateFile() const override { return privateName_; }

    bool replace() override {
        if (!makeSafe(privateFile_, file_)) return false;
        std::error_code error;
        fs::rename(privateFile_, file_, error);
        if (error) return false;
        ownsPrivateFile_ = isPlaceholder_ = false;
        makeFolderSafe(file_.parent_path());
        return true;
    }

private:
    const fs::path file_;
    const fs::path privateFile_;
    const std::string privateName_ = toText(privateFile_);
    HeldFile held_;
    bool isPlaceholder_ = false;
    bool ownsPrivateFile_ = false;
};

}  // namespace

DestinationClaim LocalDestinations::claim(const std::string& path, bool mayReplace) {
    const auto file = resolved(toPath(path));
    if (!file) return {nullptr, ClaimFailure::notWritable};
    auto destination = std::make_unique<LocalDestination>(*file);
    const ClaimFailure failure = destination->hold(mayReplace);
    if (failure != ClaimFailure::none) destination.reset();
    return {std::move(destination), failure};
}

}  // namespace melvane
