// The library's recording inputs, captures and encoders.
#include "engine/capture/command_line.h"
#include "engine/library.h"
#include "engine/process/find_program.h"

namespace melvane::engine {

namespace {

// The words of a command line with its program as an absolute path; none when there is no such program.
std::vector<std::string> encoderWords(const std::string& commandLine, const std::string& programDirectory) {
    auto words = commandWords(commandLine);
    if (words.empty()) return {};
    const auto program = findProgram(words.front(), programDirectory);
    if (!program) return {};
    words.front() = *program;
    return words;
}

}  // namespace

// --- capture ---

std::shared_ptr<SoundServer> Library::recordingServer() const {
    return options_.clock == CardClock::device ? server_ : nullptr;
}

bool Library::BASS_RecordInit(int) {
    inputs_.list(recordingServer());
    return true;
}

const char* Library::BASS_RecordGetInputName(int input) const {
    const auto* found = inputs_.at(input);
    return found ? found->name.c_str() : nullptr;
}

Handle Library::BASS_RecordStart(std::uint32_t freq, std::uint32_t chans, std::uint32_t, RecordProc proc, void* user) {
    if (!initialised_ || freq != kSampleRate || chans != 2 || !proc) return 0;
    handles_.forgetFinishedCaptures();
    auto capture = std::make_shared<Capture>(proc, user, options_.clock != CardClock::stepped);
    std::unique_lock lock(givenUpMutex_);
    const std::stop_token givenUp = givenUp_.get_token();
    lock.unlock();
    return capture->open(inputs_, server_, givenUp) ? handles_.keep(std::move(capture)) : 0;
}

// --- encoder add-on ---

std::function<bool()> Library::encoderSearch(const std::string& commandLine) const {
    return [commandLine, folder = options_.programDirectory] { return !encoderWords(commandLine, folder).empty(); };
}

bool Library::BASS_Encode_Start(Handle handle, const char* commandLine, std::uint32_t, void*, void*) {
    const auto capture = handles_.find<Capture>(handle);
    const auto words = encoderWords(commandLine ? commandLine : "", options_.programDirectory);
    return capture && !words.empty() && capture->encoderState() == EncoderState::none && capture->startEncoder(words);
}

bool Library::BASS_Encode_Stop(Handle handle) {
    const auto capture = handles_.find<Capture>(handle);
    if (!capture) return false;
    card_.unlisten(capture);
    capture->endEncoding();
    return true;
}

void Library::hurryEncoder(Handle handle) {
    if (const auto capture = handles_.find<Capture>(handle)) capture->hurry();
}

double Library::encoderStalled(Handle handle) const {
    const auto capture = handles_.find<Capture>(handle);
    return capture ? capture->stalledSeconds() : 0;
}

EncoderState Library::encoderState(Handle handle) const {
    const auto capture = handles_.find<Capture>(handle);
    return capture ? capture->encoderState() : EncoderState::none;
}

std::int64_t Library::framesEncoded(Handle handle) const {
    const auto capture = handles_.find<Capture>(handle);
    return capture ? capture->framesEncoded() : 0;
}

}  // namespace melvane::engine
