#include "desktop/mix_journal.h"

#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/paths.h"
#include "desktop/random_name.h"

namespace melvane {

namespace fs = std::filesystem;

namespace {

constexpr const char* kExtension = ".mix";
constexpr std::string_view kNew("new\0", 4);
constexpr std::size_t kLongestPage = 1 << 16;
constexpr int kAttempts = 100;

// False when something is in it, or when it is a link to one.
bool removeEmpty(const fs::path& folder) {
    std::error_code error;
    return fs::is_directory(fs::symlink_status(folder, error)) && fs::remove(folder, error);
}

}  // namespace

JournalPage::~JournalPage() {
    std::error_code error;
    if (!isKept_) fs::remove(page_, error);
    const fs::path folder = page_.parent_path();
    if (!removeEmpty(folder) || !removeEmpty(folder.parent_path())) return;
    for (const fs::path& made : made_)
        if (!removeEmpty(made)) return;
}

// What lies above the program's own folders, and would be left behind empty.
void JournalPage::noteMissing() {
    std::error_code error;
    for (fs::path above = page_.parent_path().parent_path().parent_path();
         above.has_relative_path() && !fs::exists(above, error); above = above.parent_path())
        made_.push_back(above);
}

// Names may hold every byte but zero.
bool JournalPage::write(const MixPaths& paths) {
    const std::string text =
        toText(paths.file) + '\0' + toText(paths.privateFile) + '\0' + std::string(paths.isNew ? kNew : "");
    const fs::path folder = page_.parent_path();
    HoldResult result = HoldResult::missing;
    std::error_code error;
    paths_ = paths;
    noteMissing();
    // The last page of another run may just take the folder with it.
    for (int attempt = 0; attempt < kAttempts && result == HoldResult::missing; ++attempt) {
        if (fs::create_directories(folder, error)) fs::permissions(folder, fs::perms::owner_all, error);
        result = held_.create(page_, text);
    }
    if (result != HoldResult::held) return false;
    isKept_ = false;
    makeSafe(page_, page_);
    makeFolderSafe(folder);
    return true;
}

bool JournalPage::takeOver() {
    if (held_.open(page_) != HoldResult::held || !held_.isLocked()) return false;
    const auto text = held_.read(kLongestPage);
    if (!text) return false;
    isKept_ = false;
    const auto end = text->find('\0');
    const auto last = end == std::string::npos ? end : text->find('\0', end + 1);
    if (last == std::string::npos) return false;
    const std::string_view rest = std::string_view(*text).substr(last + 1);
    paths_ = {toPath(text->substr(0, end)), toPath(text->substr(end + 1, last - end - 1)), rest == kNew};
    return rest.empty() || paths_.isNew;
}

std::unique_ptr<JournalPage> MixJournal::newPage() const {
    return std::make_unique<JournalPage>(folder_ / (randomName() + kExtension));
}

std::vector<std::unique_ptr<JournalPage>> MixJournal::pagesOfNobody() const {
    std::vector<std::unique_ptr<JournalPage>> pages;
    std::error_code error;
    for (fs::directory_iterator entry(folder_, error), end; !error && entry != end; entry.increment(error)) {
        if (entry->path().extension() != kExtension) continue;
        auto page = std::make_unique<JournalPage>(entry->path());
        if (page->takeOver()) pages.push_back(std::move(page));
    }
    return pages;
}

}  // namespace melvane
