// The files that another program decodes before they can be read.
#pragma once

#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "engine/decode/input_file.h"
#include "engine/decode/nameless_file.h"
#include "engine/decode/native_source.h"
#include "platform/audio_library.h"

namespace melvane::decode {

// Any thread.
class DecodedFiles {
public:
    // ffmpeg is looked for in `programDirectory` first, then in the search path.
    explicit DecodedFiles(std::string programDirectory);
    ~DecodedFiles();

    // Whether ffmpeg is there.
    bool canDecode() const { return program().has_value(); }
    // The sound of the file. It is decoded once for all who read it at the same time; the last ones stay decoded, for
    // as long as the file stays as it is. Waits for it, unless `cancelled` becomes true. Throws NotSound.
    std::unique_ptr<NativeSource> open(const std::string& utf8Path, const CancelFlag& cancelled);
    // How a file of that name stands that was opened lately.
    Decoding state(const std::string& utf8Path) const;

private:
    struct Entry;

    std::shared_ptr<Entry> claim(const Entry& wanted, const CancelFlag& cancelled);
    void decode(Entry& entry, const CancelFlag& cancelled);
    void forgetOld();
    std::optional<std::string> program() const;

    const std::string programDirectory_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::list<std::shared_ptr<Entry>> entries_;  // the newest first
};

}  // namespace melvane::decode
