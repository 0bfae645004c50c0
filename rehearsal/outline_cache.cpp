#include "rehearsal/outline_cache.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>
#include <vector>

#include "base/paths.h"

namespace melvane {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t kMark = 0x31656E696C74754FULL;  // of the format, and of the order of its bytes
constexpr const char* kEnding = ".outline";
constexpr const char* kUnfinished = ".part";
constexpr std::int64_t kMostFrames = std::int64_t{1} << 40;

// FNV-1a.
std::uint64_t sumOf(std::string_view bytes) {
    std::uint64_t sum = 0xCBF29CE484222325ULL;
    for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001B3ULL;
    return sum;
}

template <typename T>
void append(std::string& bytes, const T& value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

template <typename T>
bool take(std::string_view& bytes, T& value) {
    if (bytes.size() < sizeof value) return false;
    std::memcpy(&value, bytes.data(), sizeof value);
    bytes.remove_prefix(sizeof value);
    return true;
}

std::string wordsOf(const OutlineCache::Key& key) {
    std::string words;
    append(words, kMark);
    append(words, key.size);
    append(words, key.changed);
    append(words, std::uint64_t{key.path.size()});
    return words + key.path;
}

std::string hex(std::uint64_t number) {
    std::string digits;
    for (int shift = 60; shift >= 0; shift -= 4) digits += "0123456789abcdef"[number >> shift & 15];
    return digits;
}

std::string readAll(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace

OutlineCache::Key OutlineCache::keyOf(const std::string& path) {
    std::error_code error;
    const fs::path whole = fs::absolute(toPath(path), error);
    const auto size = fs::file_size(whole, error);
    if (error) return {};
    return {toText(whole), size, fs::last_write_time(whole, error).time_since_epoch().count()};
}

std::string OutlineCache::placeOf(const Key& key) const {
    return folder_ + "/" + hex(sumOf(wordsOf(key))) + kEnding;
}

std::shared_ptr<WaveformPyramid> OutlineCache::find(const Key& key) const {
    if (folder_.empty() || key.path.empty()) return nullptr;
    const fs::path place = toPath(placeOf(key));
    const std::string all = readAll(place);
    std::string_view bytes = all;
    std::uint64_t sum = 0;
    std::int64_t frames = 0;
    const std::string words = wordsOf(key);
    if (!take(bytes, sum) || sum != sumOf(bytes) || !bytes.starts_with(words)) return nullptr;
    bytes.remove_prefix(words.size());
    if (!take(bytes, frames) || frames < 0 || frames > kMostFrames) return nullptr;
    std::vector<Extremes> bins(bytes.size() / sizeof(Extremes));
    if (static_cast<std::int64_t>(bins.size()) !=
        (frames + WaveformPyramid::kBinFrames - 1) / WaveformPyramid::kBinFrames)
        return nullptr;
    if (!bins.empty()) std::memcpy(bins.data(), bytes.data(), bins.size() * sizeof(Extremes));
    std::error_code error;
    fs::last_write_time(place, fs::file_time_type::clock::now(), error);  // it is looked at
    return std::make_shared<WaveformPyramid>(frames, bins);
}

void OutlineCache::keep(const Key& key, const WaveformPyramid& outline) const {
    if (folder_.empty() || key.path.empty()) return;
    std::string bytes = wordsOf(key);
    append(bytes, outline.frames());
    const auto bins = outline.bins();
    bytes.append(reinterpret_cast<const char*>(bins.data()), bins.size_bytes());
    std::string sum;
    append(sum, sumOf(bytes));

    std::error_code error;
    fs::create_directories(toPath(folder_), error);
    const fs::path place = toPath(placeOf(key));
    fs::path part = place;
    part += hex(std::random_device{}()) + kUnfinished;
    std::ofstream out(part, std::ios::binary);
    out << sum << bytes;
    out.close();
    if (out) fs::rename(part, place, error);
    if (!out || error) fs::remove(part, error);
    makeRoom();
}

void OutlineCache::makeRoom() const {
    struct Kept {
        fs::file_time_type lookedAt;
        std::uintmax_t size;
        fs::path place;
    };
    std::error_code error;
    std::vector<Kept> all;
    std::uintmax_t bytes = 0;
    for (fs::directory_iterator at(toPath(folder_), error), end; !error && at != end; at.increment(error)) {
        const std::string name = toText(at->path());
        if (!name.ends_with(kEnding) && !name.ends_with(kUnfinished)) continue;
        std::error_code gone;
        all.push_back({at->last_write_time(gone), at->file_size(gone), at->path()});
        if (gone)
            all.pop_back();
        else
            bytes += all.back().size;
    }
    std::ranges::sort(all, {}, &Kept::lookedAt);
    for (const Kept& kept : all) {
        if (bytes <= mostBytes_) break;
        if (fs::remove(kept.place, error)) bytes -= kept.size;
    }
}

}  // namespace melvane
