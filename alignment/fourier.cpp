#include "alignment/fourier.h"

#include <fftw3.h>

#include <mutex>
#include <new>

namespace melvane {

namespace {

// The library's planner knows one thread only.
std::mutex& planner() {
    static std::mutex mutex;
    return mutex;
}

template <typename T>
T* allocate(std::size_t count) {
    void* const memory = fftwf_malloc(count * sizeof(T));
    if (!memory) throw std::bad_alloc();
    return static_cast<T*>(memory);
}

}  // namespace

struct Fourier::Plans {
    Plans(int frames, float* time, Bin* bins) {
        const std::lock_guard lock(planner());
        auto* const complex = reinterpret_cast<fftwf_complex*>(bins);
        forward = fftwf_plan_dft_r2c_1d(frames, time, complex, FFTW_ESTIMATE);
        backward = fftwf_plan_dft_c2r_1d(frames, complex, time, FFTW_ESTIMATE);
    }
    ~Plans() {
        const std::lock_guard lock(planner());
        fftwf_destroy_plan(forward);
        fftwf_destroy_plan(backward);
    }
    Plans(const Plans&) = delete;
    Plans& operator=(const Plans&) = delete;

    fftwf_plan forward;
    fftwf_plan backward;
};

template <typename T>
void Fourier::Free<T>::operator()(T* memory) const {
    fftwf_free(memory);
}

Fourier::Fourier(std::size_t frames)
    : frames_(frames),
      time_(allocate<float>(frames)),
      bins_(allocate<Bin>(frames / 2 + 1)),
      plans_(std::make_unique<Plans>(static_cast<int>(frames), time_.get(), bins_.get())) {}

Fourier::~Fourier() = default;

void Fourier::forward() {
    fftwf_execute(plans_->forward);
}

void Fourier::backward() {
    fftwf_execute(plans_->backward);
}

}  // namespace melvane
