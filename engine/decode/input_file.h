// A sound file as the decoders read it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace melvane::decode {

class InputFile {
public:
    // Throws NotSound when `utf8Path` is not a file with bytes in it that can be read; never waits for a
    // pipe or a device.
    explicit InputFile(const std::string& utf8Path);

    std::int64_t size() const { return size_; }
    std::int64_t position() const { return position_; }
    // Returns the number of bytes read; fewer than `bytes` at the end or when the file fails.
    std::size_t read(void* out, std::size_t bytes);
    // As std::fseek, also beyond the end, where there is nothing to read. The new position; -1 on failure.
    std::int64_t seek(std::int64_t offset, int whence);
    // From now on read() gives `bytes` in place of what the file holds at `offset`.
    void overlay(std::int64_t offset, std::string bytes);

private:
    struct Overlay {
        std::int64_t offset;
        std::string bytes;
    };

    std::ifstream stream_;
    std::int64_t size_ = 0;
    std::int64_t position_ = 0;
    std::vector<Overlay> overlays_;
};

}  // namespace melvane::decode
