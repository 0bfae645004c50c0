// A sound file as the decoders read it.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <memory>
#include <string>

namespace melvane::decode {

// Set on any thread; null where nobody will.
using CancelFlag = std::shared_ptr<const std::atomic<bool>>;

class InputFile {
public:
    // Throws NotSound when `utf8Path` is not a file with bytes in it that can be read; never waits for a
    // pipe or a device. Once `cancelled` is true, the file fails.
    explicit InputFile(const std::string& utf8Path, CancelFlag cancelled = {});

    std::int64_t size() const { return size_; }
    std::int64_t position() const { return position_; }
    // Returns the number of bytes read; fewer than `bytes` at the end, none when the file has failed.
    std::size_t read(void* out, std::size_t bytes);
    // True for good once bytes that were there when the file was opened could not be read.
    bool failed() const { return failed_; }
    // As std::fseek, also beyond the end, where there is nothing to read. The new position; -1 on failure.
    std::int64_t seek(std::int64_t offset, int whence);
    // From now on the file is `head` and behind it the `bytes` bytes that it holds at `from`. Once; back to the start.
    void present(std::string head, std::int64_t from, std::int64_t bytes);

private:
    std::size_t readBody(char* out, std::size_t bytes, std::int64_t at);

    const CancelFlag cancelled_;
    std::ifstream stream_;
    std::int64_t streamAt_ = 0;
    std::int64_t size_ = 0;
    std::int64_t position_ = 0;
    std::string head_;
    std::int64_t bodyAt_ = 0;  // in the file, what follows the head
    bool failed_ = false;
};

}  // namespace melvane::decode
