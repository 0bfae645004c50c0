#include "engine/decode/decoded_files.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <utility>

#include "base/paths.h"
#include "engine/decode/ffmpeg.h"
#include "engine/decode/sndfile_source.h"
#include "engine/process/find_program.h"

namespace melvane::decode {

namespace fs = std::filesystem;

namespace {

// A song, a voice, and what was chosen before.
constexpr int kKept = 3;
constexpr std::chrono::milliseconds kLook{10};

class DecodedSource : public SndfileSource {
public:
    DecodedSource(std::shared_ptr<const NamelessFile> sound, const CancelFlag& cancelled)
        : SndfileSource(sound->path(), cancelled), sound_(std::move(sound)) {}

private:
    const std::shared_ptr<const NamelessFile> sound_;
};

}  // namespace

struct DecodedFiles::Entry {
    explicit Entry(const std::string& utf8Path) : path(utf8Path) {
        std::error_code error;
        bytes = fs::file_size(toPath(path), error);
        changed = fs::last_write_time(toPath(path), error);
    }
    bool isSameAs(const Entry& other) const {
        return path == other.path && bytes == other.bytes && changed == other.changed;
    }

    std::string path;
    std::uintmax_t bytes = 0;
    fs::file_time_type changed;
    std::atomic<double> progress{0};
    // The owner's mutex keeps these.
    bool running = true;
    DecodingFailure failure = DecodingFailure::none;
    std::shared_ptr<const NamelessFile> sound;
};

DecodedFiles::DecodedFiles(std::string programDirectory) : programDirectory_(std::move(programDirectory)) {}
DecodedFiles::~DecodedFiles() = default;

std::unique_ptr<NativeSource> DecodedFiles::open(const std::string& utf8Path, const CancelFlag& cancelled) {
    if (!isFile(utf8Path) || (cancelled && *cancelled)) throw NotSound("not a file, or given up");
    const auto entry = claim(Entry(utf8Path), cancelled);
    std::unique_lock lock(mutex_);
    const auto sound = entry->sound;
    lock.unlock();
    if (!sound) throw NotSound("nothing that ffmpeg reads");
    return std::make_unique<DecodedSource>(sound, cancelled);
}

// The entry of the file, decoded here unless another thread has done so; that one may be given up meanwhile.
std::shared_ptr<DecodedFiles::Entry> DecodedFiles::claim(const Entry& wanted, const CancelFlag& cancelled) {
    std::unique_lock lock(mutex_);
    for (;;) {
        const auto found = std::ranges::find_if(entries_, [&](const auto& entry) { return entry->isSameAs(wanted); });
        if (found == entries_.end()) break;
        if ((*found)->sound) return *found;
        if (!(*found)->running) {
            entries_.erase(found);
            break;
        }
        changed_.wait_for(lock, kLook);
        if (cancelled && *cancelled) throw NotSound("given up");
    }
    const auto entry = std::make_shared<Entry>(wanted.path);
    entries_.push_front(entry);
    lock.unlock();
    decode(*entry, cancelled);
    return entry;
}

void DecodedFiles::decode(Entry& entry, const CancelFlag& cancelled) {
    std::shared_ptr<NamelessFile> sound;
    DecodingFailure failure = DecodingFailure::noRoom;
    try {
        sound = std::make_shared<NamelessFile>();
        failure = decodeWithFfmpeg(program(), entry.path, *sound, cancelled, entry.progress);
        if (failure == DecodingFailure::none) DecodedSource(sound, cancelled);
    } catch (const NotSound&) {
        failure = DecodingFailure::noSound;  // what it wrote is none
    } catch (const std::system_error&) {
        // There is no room for another file either.
    }
    const std::lock_guard lock(mutex_);
    entry.failure = failure;
    if (failure == DecodingFailure::none) entry.sound = std::move(sound);
    entry.running = false;
    forgetOld();
    changed_.notify_all();
}

std::optional<std::string> DecodedFiles::program() const {
    return engine::findProgram("ffmpeg", programDirectory_);
}

void DecodedFiles::forgetOld() {
    int ended = 0;
    std::erase_if(entries_, [&](const auto& entry) { return !entry->running && ++ended > kKept; });
}

Decoding DecodedFiles::state(const std::string& utf8Path) const {
    const std::lock_guard lock(mutex_);
    const auto found = std::ranges::find_if(entries_, [&](const auto& entry) { return entry->path == utf8Path; });
    if (found == entries_.end()) return {};
    return {(*found)->running, (*found)->progress, (*found)->failure};
}

}  // namespace melvane::decode
