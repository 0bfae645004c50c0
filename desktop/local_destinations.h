// Destinations in the file system. The private file is hidden, has a short name of its own and lies in the folder of
// the destination, or of the file that this leads to.
#pragma once

#include "platform/destinations.h"

namespace melvane {

class LocalDestinations : public Destinations {
public:
    DestinationClaim claim(const std::string& path, bool mayReplace) override;
};

}  // namespace melvane
