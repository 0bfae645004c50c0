#include "desktop/mix_journal.h"

#include <string>
#include <system_error>
#include <utility>

#include "base/paths.h"
#include "desktop/random_name.h"

namespace melvane {

namespace fs = std::filesystem;

namespace {

constexpr const char* kExtension = ".mix";
constexpr std::size_t kLongestPage = 1 << 16;

}  // namespace

JournalPage::~JournalPage() {
    std::error_code error;
    if (isKept_) return;
    fs::remove(page_, error);
    for (; !madeFolders_.empty() && fs::remove(madeFolders_.back(), error); madeFolders_.pop_back()) continue;
}

void JournalPage::makeFolders() {
    std::error_code error;
    for (fs::path folder = fs::absolute(page_.parent_path(), error); !fs::exists(folder, error);
         folder = folder.parent_path())
        madeFolders_.insert(madeFolders_.begin(), folder);
    for (const fs::path& folder : madeFolders_)
        if (fs::create_directory(folder, error)) fs::permissions(folder, fs::perms::owner_all, error);
}

// Names may hold every byte but zero.
bool JournalPage::write(const MixPaths& paths) {
    const std::string text = toText(paths.file) + '\0' + toText(paths.privateFile) + '\0';
    paths_ = paths;
    makeFolders();
    if (held_.create(page_, text) != HoldResult::held) return false;
    isKept_ = false;
    makeSafe(page_, page_);
    makeFolderSafe(page_.parent_path());
    return true;
}

bool JournalPage::takeOver() {
    if (held_.open(page_) != HoldResult::held || !held_.isLocked()) return false;
    isKept_ = false;
    const std::string text = held_.read(kLongestPage);
    const auto end = text.find('\0');
    if (end == std::string::npos || text.find('\0', end + 1) != text.size() - 1) return false;
    paths_ = {toPath(text.substr(0, end)), toPath(text.substr(end + 1, text.size() - end - 2))};
    return true;
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
