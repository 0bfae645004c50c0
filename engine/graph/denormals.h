// Numbers too small to hear are slow to compute with: while one of these lives they count as 0 on this thread.
#pragma once

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

namespace melvane::engine {

class DenormalsOff {
#if defined(__SSE2__)
public:
    DenormalsOff() : before_(_mm_getcsr()) {
        _mm_setcsr(before_ | kFlushToZero | kDenormalsAreZero);
    }
    ~DenormalsOff() {
        _mm_setcsr(before_);
    }
    DenormalsOff(const DenormalsOff&) = delete;
    DenormalsOff& operator=(const DenormalsOff&) = delete;

private:
    static constexpr unsigned kFlushToZero = 0x8000;
    static constexpr unsigned kDenormalsAreZero = 0x0040;
    const unsigned before_;
#else
public:
    DenormalsOff() {}
#endif
};

}  // namespace melvane::engine
