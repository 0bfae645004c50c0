#include "tags/cover.h"

#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/paths.h"

namespace melvane {

namespace {

constexpr struct {
    std::string_view start;
    const char* mime;
} kKinds[] = {{"\xFF\xD8\xFF", "image/jpeg"}, {"\x89PNG\r\n\x1A\n", "image/png"}};

}  // namespace

CoverRead takeCover(std::string bytes) {
    if (bytes.size() > kLargestCover) return {nullptr, TagFault::coverTooLarge};
    for (const auto& kind : kKinds)
        if (bytes.starts_with(kind.start)) return {std::make_shared<const Cover>(Cover{std::move(bytes), kind.mime})};
    return {nullptr, TagFault::coverNoPicture};
}

CoverRead readCover(const std::string& file) {
    std::error_code error;
    if (!isFile(file)) return {nullptr, TagFault::coverUnread};
    const auto size = std::filesystem::file_size(toPath(file), error);
    if (!error && size > kLargestCover) return {nullptr, TagFault::coverTooLarge};
    std::ifstream stream(toPath(file), std::ios::binary);
    std::string bytes(error ? 0 : size, '\0');
    if (error || !stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size())))
        return {nullptr, TagFault::coverUnread};
    return takeCover(std::move(bytes));
}

}  // namespace melvane
