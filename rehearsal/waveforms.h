// The outlines of song and voice, and what lining them up needs of them, each read once in a thread of its own;
// outlines are taken from where they are kept.
#pragma once

#include <atomic>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "alignment/imprint.h"
#include "platform/pcm_source.h"
#include "rehearsal/outline_cache.h"
#include "rehearsal/waveform_pyramid.h"

namespace melvane {

// One file's, while it is read and afterwards. Any thread may use it.
class Waveform {
public:
    // nullptr before anything is known.
    std::shared_ptr<const WaveformPyramid> outline() const;
    bool finished() const { return finished_; }
    bool failed() const { return failed_; }  // it can't be read, or not to its end
    // Waits until it is read, while `goOn`, which is told how much is done, says so. nullptr when there is none: of an
    // outline that was kept, of what can't be read, or is longer than kLongestImprint.
    std::shared_ptr<const Trace> imprint(const std::function<bool(double done)>& goOn) const;
    // It is not to be read any further, for whoever looks at it.
    void forget() { wanted_ = false; }
    bool forgotten() const { return !wanted_; }

private:
    friend class Waveforms;

    mutable std::mutex mutex_;
    std::shared_ptr<WaveformPyramid> outline_;
    std::shared_ptr<const Trace> imprint_;
    std::atomic<bool> wanted_{true};
    std::atomic<bool> finished_{false};
    std::atomic<bool> failed_{false};
};

// Used on the user-interface thread.
class Waveforms {
public:
    // The sound of a file, read while it is `wanted`; nullptr when there is none. Called on the threads.
    using OpenReader =
        std::function<std::unique_ptr<PcmSource>(const std::string& file, const std::function<bool()>& wanted)>;

    Waveforms(OpenReader open, OutlineCache cache) : open_(std::move(open)), cache_(std::move(cache)) {}
    // Gives up what is read; what a file keeps busy for longer than a second goes on by itself.
    ~Waveforms();
    Waveforms(const Waveforms&) = delete;
    Waveforms& operator=(const Waveforms&) = delete;

    // All who ask for a file while one of them looks at it share what is read, until that is forgotten.
    std::shared_ptr<Waveform> read(const std::string& file);

private:
    struct Reading {
        std::shared_ptr<Waveform> waveform;
        std::future<void> done;
        std::thread thread;
    };

    static void work(Waveform& waveform, const OpenReader& open, const OutlineCache& cache, const std::string& file);
    static bool fill(Waveform& waveform, PcmSource& source);

    OpenReader open_;
    OutlineCache cache_;
    std::vector<Reading> readings_;
    std::map<std::string, std::weak_ptr<Waveform>> shared_;
};

}  // namespace melvane
