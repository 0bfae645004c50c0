#include "platform/bass/graph/channel.h"

namespace melvane::bass {

Channel::Channel(std::shared_ptr<decode::PcmSource> source, bool loop)
    : source_(std::move(source)), length_(source_->frames()), loop_(loop) {}

void Channel::play(bool restart) {
    if (restart || position() >= length_) wantedSeek_ = 0;
    playing_ = true;
}

std::int64_t Channel::position() const {
    const std::int64_t wanted = wantedSeek_;
    return wanted == kNoSeek ? position_.load() : wanted;
}

bool Channel::seek(std::int64_t frame) {
    if (frame < 0 || frame > length_) return false;
    wantedSeek_ = frame;
    return true;
}

std::size_t Channel::mixInto(float* out, std::size_t frames) {
    if (const std::int64_t wanted = wantedSeek_.exchange(kNoSeek); wanted != kNoSeek) {
        source_->seek(wanted);
        position_ = wanted;
    }
    block_.resize(frames * 2);
    const std::size_t got = readLooping(block_.data(), frames);
    level_.mixInto(out, block_.data(), got);
    if (got < frames) playing_ = false;
    return got;
}

std::size_t Channel::readLooping(float* out, std::size_t frames) {
    std::size_t done = 0;
    std::int64_t place = position_;
    while (done < frames) {
        if (loop_ && place >= length_) {
            source_->seek(0);
            place = 0;
        }
        const std::size_t got = source_->read(out + done * 2, frames - done);
        if (got == 0) break;
        done += got;
        place += static_cast<std::int64_t>(got);
    }
    position_ = place;
    return done;
}

}  // namespace melvane::bass
