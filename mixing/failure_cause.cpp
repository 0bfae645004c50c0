#include "mixing/failure_cause.h"

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

#include "base/paths.h"

namespace melvane {

namespace fs = std::filesystem;

namespace {
constexpr std::size_t kBlock = 1 << 20;
constexpr int kBlocks = 256;  // a long song; to read a whole film would take too long
}  // namespace

int readingError(const std::string& path) {
    std::error_code error;
    if (fs::exists(toPath(path), error) && !isFile(path)) return 0;
    errno = 0;
    std::ifstream file(toPath(path), std::ios::binary);
    if (!file.is_open()) return errno;
    std::vector<char> block(kBlock);
    for (int i = 0; i < kBlocks && file.read(block.data(), static_cast<std::streamsize>(block.size())); ++i) continue;
    return file.bad() ? EIO : 0;
}

int writingError(const std::string& path) {
    constexpr std::uintmax_t kLittle = 1 << 16;
    std::error_code error;
    const auto disk = fs::space(fs::absolute(toPath(path), error).parent_path(), error);
    return !error && disk.available < kLittle ? ENOSPC : 0;
}

}  // namespace melvane
