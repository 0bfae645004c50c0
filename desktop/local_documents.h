// Documents in the file system.
#pragma once

#include "platform/documents.h"

namespace melvane {

class LocalDocuments : public Documents {
public:
    int read(const std::string& path, std::size_t most, std::string& bytes) override;
    int write(const std::string& path, std::string_view bytes) override;
};

}  // namespace melvane
