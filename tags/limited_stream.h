// A file to read tags from, of which only so much can be read: what a damaged file claims costs neither time nor
// memory.
#pragma once

#include <tiostream.h>

#include <cstdint>
#include <fstream>
#include <string>

namespace melvane {

// Behind its limits it is as if the file ended.
class LimitedStream : public TagLib::IOStream {
public:
    // `mostReads` is the number of pieces, `mostBytes` that of their bytes.
    LimitedStream(const std::string& file, std::int64_t mostReads, std::int64_t mostBytes);

    // More bytes were asked for than may be read.
    bool exhausted() const { return exhausted_; }

    TagLib::FileName name() const override { return ""; }
    TagLib::ByteVector readBlock(unsigned long length) override;
    void seek(long offset, Position origin = Beginning) override;
    long tell() const override { return static_cast<long>(place_); }
    long length() override { return static_cast<long>(size_); }
    bool readOnly() const override { return true; }
    bool isOpen() const override { return file_.is_open(); }
    void writeBlock(const TagLib::ByteVector&) override {}
    void insert(const TagLib::ByteVector&, unsigned long, unsigned long) override {}
    void removeBlock(unsigned long, unsigned long) override {}
    void truncate(long) override {}

private:
    std::ifstream file_;
    std::int64_t size_ = 0;
    std::int64_t place_ = 0;
    std::int64_t readsLeft_;
    std::int64_t bytesLeft_;
    bool exhausted_ = false;
};

}  // namespace melvane
