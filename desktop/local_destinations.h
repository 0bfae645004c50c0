// Destinations in the file system. The private file is hidden, has a short name of its own and lies in the folder of
// the destination, or of the file that this leads to.
#pragma once

#include <string>

#include "base/paths.h"
#include "desktop/mix_journal.h"
#include "platform/destinations.h"

namespace melvane {

class LocalDestinations : public Destinations {
public:
    // The folder (UTF-8) that tells the programs of one user what is being mixed; made when it is needed.
    explicit LocalDestinations(const std::string& journal) : journal_(toPath(journal)) {}
    static std::string usualJournal();

    DestinationClaim claim(const std::string& path, bool mayReplace) override;
    std::vector<std::unique_ptr<Destination>> interrupted() override;

private:
    const MixJournal journal_;
};

}  // namespace melvane
