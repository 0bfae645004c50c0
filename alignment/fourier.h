// Real Fourier transforms in single precision.
#pragma once

#include <complex>
#include <cstddef>
#include <memory>
#include <span>

namespace melvane {

using Bin = std::complex<float>;

// One thread at a time; several may be used side by side.
class Fourier {
public:
    // A power of two.
    explicit Fourier(std::size_t frames);
    ~Fourier();
    Fourier(const Fourier&) = delete;
    Fourier& operator=(const Fourier&) = delete;

    std::span<float> time() { return {time_.get(), frames_}; }
    std::span<Bin> bins() { return {bins_.get(), frames_ / 2 + 1}; }
    void forward();
    // Not scaled: there and back multiplies by the number of frames. What is in bins() is lost.
    void backward();

private:
    struct Plans;
    template <typename T>
    struct Free {
        void operator()(T* memory) const;
    };

    std::size_t frames_;
    std::unique_ptr<float, Free<float>> time_;
    std::unique_ptr<Bin, Free<Bin>> bins_;
    std::unique_ptr<Plans> plans_;
};

}  // namespace melvane
