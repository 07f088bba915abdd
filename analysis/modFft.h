#pragma once
// Real fast Fourier transforms in single precision for the spectrum and the
// polarity correlation. Planning a size is slow next to running it, so the
// plan of each size is made on first use and kept for the next call (the few
// most recent sizes). Plans are made and run on the user-interface thread
// only: making one is not thread-safe.
#include <complex>
#include <cstdint>
#include <span>
#include <vector>

// The bins 0..n/2 of the transform of the n real values in afIn (n >= 1):
// bin k is the sum of afIn[i] * e^(-2*pi*j*k*i/n). Fails with error 7 "Out of
// memory" when no plan can be made.
std::vector<std::complex<float>> gacFftForward(std::span<const float> afIn);

// The n real values whose forward transform is acBins (n/2 + 1 bins), each
// n times too large (the transform pair is not scaled). Fails as above.
std::vector<float> gafFftInverse(std::span<const std::complex<float>> acBins, std::int32_t n);
