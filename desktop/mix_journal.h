// Knows the private files of running mixes: one page per run, a file of its own that the run holds locked. A page that
// nobody holds is one whose run was cut off, by a kill or a power cut.
#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "desktop/held_file.h"

namespace melvane {

struct MixPaths {
    std::filesystem::path file;         // the destination
    std::filesystem::path privateFile;  // what is written for it
    bool isNew = false;                 // the run found no file there and makes a placeholder
};

// Gone with the object, unless it was kept for the next start; and with the last page its folder and the one around it,
// when nothing else is in them.
class JournalPage {
public:
    explicit JournalPage(std::filesystem::path page) : page_(std::move(page)) {}
    ~JournalPage();
    JournalPage(const JournalPage&) = delete;
    JournalPage& operator=(const JournalPage&) = delete;

    // False when it can't be written: then the run goes on without.
    bool write(const MixPaths& paths);
    // Takes over the page of a run that is no more; false when that one lives, or the page can't be used.
    bool takeOver();
    const MixPaths& paths() const { return paths_; }
    void keep() { isKept_ = true; }

private:
    void noteMissing();

    const std::filesystem::path page_;
    std::vector<std::filesystem::path> made_;  // the innermost first
    HeldFile held_;
    MixPaths paths_;
    bool isKept_ = true;
};

class MixJournal {
public:
    explicit MixJournal(std::filesystem::path folder) : folder_(std::move(folder)) {}

    std::unique_ptr<JournalPage> newPage() const;
    std::vector<std::unique_ptr<JournalPage>> pagesOfNobody() const;

private:
    const std::filesystem::path folder_;
};

}  // namespace melvane
