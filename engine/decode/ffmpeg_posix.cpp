#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <thread>
#include <vector>

#include "base/paths.h"
#include "engine/decode/ffmpeg.h"
#include "engine/decode/ffmpeg_log.h"
#include "engine/process/child_process.h"

namespace melvane::decode {

namespace {

using engine::ChildProcess;
using engine::ChildState;

constexpr int kLookMs = 10;

constexpr const char* kFormats = "mov,matroska,asf,ogg,flac,wv,wav,w64,aiff,caf,aac,ac3,eac3,amr,ape,tta,avi";
constexpr const char* kCodecs =
    "aac,aac_fixed,libfdk_aac,alac,opus,libopus,vorbis,libvorbis,flac,wavpack,wmav1,wmav2,wmapro,wmalossless,wmavoice,"
    "mp1,mp1float,mp2,mp2float,mp3,mp3float,ac3,ac3_fixed,eac3,dca,ape,tta,speex,libspeex,amrnb,amrwb,"
    "libopencore_amrnb,libopencore_amrwb,qdm2,gsm,gsm_ms,"
    "pcm_u8,pcm_s8,pcm_s16le,pcm_s16be,pcm_s24le,pcm_s24be,pcm_s32le,pcm_s32be,pcm_f32le,pcm_f32be,pcm_f64le,"
    "pcm_f64be,pcm_alaw,pcm_mulaw,adpcm_ms,adpcm_ima_wav,adpcm_ima_qt";

std::vector<std::string> commandFor(const std::string& program, const std::string& file) {
    return {program, "-nostdin", "-hide_banner", "-nostats", "-loglevel", "info", "-progress", "pipe:2",
            // The file: no name, whatever it looks like, is another protocol, a pattern or an option.
            "-protocol_whitelist", "file", "-format_whitelist", kFormats, "-codec_whitelist", kCodecs, "-vn", "-sn",
            "-dn", "-i", "file:" + file,
            // AU alone has a header that tells of floats and need not know the length.
            "-map", "0:a:0", "-c:a", "pcm_f32be", "-f", "au", "pipe:1"};
}

struct Pipe {
    Pipe() { ok = pipe2(ends.data(), O_CLOEXEC) == 0; }
    ~Pipe() {
        closeEnd(0);
        closeEnd(1);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void closeEnd(std::size_t end) {
        if (ends[end] >= 0) close(ends[end]);
        ends[end] = -1;
    }

    std::array<int, 2> ends{-1, -1};  // to be read and to be written
    bool ok = false;
};

// What the pipe holds, waited for a moment; false at its end.
bool readSome(int pipe, FfmpegLog& log) {
    pollfd ready{.fd = pipe, .events = POLLIN, .revents = 0};
    if (poll(&ready, 1, kLookMs) <= 0) return true;
    std::array<char, 4096> text;
    const ssize_t got = read(pipe, text.data(), text.size());
    if (got > 0) log.take({text.data(), static_cast<std::size_t>(got)});
    return got > 0 || (got < 0 && errno == EINTR);
}

// Until the child has ended.
ChildState follow(ChildProcess& child, int pipe, FfmpegLog& log, const CancelFlag& cancelled,
                  std::atomic<double>& progress) {
    bool more = true;
    while (child.state() == ChildState::running) {
        if (cancelled && *cancelled) child.kill();
        if (more)
            more = readSome(pipe, log);
        else
            std::this_thread::sleep_for(std::chrono::milliseconds(kLookMs));
        progress = log.progress();
    }
    while (more && child.state() == ChildState::done) more = readSome(pipe, log);
    return child.state();
}

// What ffmpeg calls an input error may be a file that was cut off.
bool systemReads(const std::string& utf8Path, const CancelFlag& cancelled) {
    std::ifstream file(toPath(utf8Path), std::ios::binary);
    std::vector<char> block(1 << 16);
    while (!(cancelled && *cancelled) && file.read(block.data(), static_cast<std::streamsize>(block.size()))) continue;
    return file.eof() && !file.bad();
}

}  // namespace

DecodingFailure decodeWithFfmpeg(const std::optional<std::string>& program, const std::string& utf8Path,
                                 const NamelessFile& sound, const CancelFlag& cancelled,
                                 std::atomic<double>& progress) {
    if (!program) return DecodingFailure::noDecoder;
    Pipe messages;
    ChildProcess child;
    if (!messages.ok ||
        !child.start(commandFor(*program, utf8Path), {.output = sound.descriptor(), .error = messages.ends[1]}))
        return DecodingFailure::notRun;
    messages.closeEnd(1);
    FfmpegLog log;
    const ChildState end = follow(child, messages.ends[0], log, cancelled, progress);
    if (log.readFailed() && !systemReads(utf8Path, cancelled)) return DecodingFailure::notRead;
    if (end == ChildState::done) return DecodingFailure::none;
    if (cancelled && *cancelled) return DecodingFailure::noSound;
    return sound.canGrow() ? DecodingFailure::noSound : DecodingFailure::noRoom;
}

}  // namespace melvane::decode
