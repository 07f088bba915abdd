#include "analysis/modFft.h"

#include <fftw3.h>

#include <algorithm>
#include <string>
#include <deque>
#include <memory>

#include "base/RuntimeError.h"

namespace {

// Enough for the sizes the window alternates between (a loop, a recording,
// a correlation) without holding on to many large buffers.
constexpr std::size_t kPlansKept = 4;

// One planned transform with the aligned buffers it runs on.
class Plan {
public:
    Plan(std::int32_t n, bool forward) : n_(n), forward_(forward)
    {
        real_ = fftwf_alloc_real(static_cast<std::size_t>(n));
        bins_ = fftwf_alloc_complex(static_cast<std::size_t>(binCount()));
        if (real_ != nullptr && bins_ != nullptr) {
            // Estimating picks a plan at once; measuring would run the
            // transform many times and hold the window up for seconds.
            plan_ = forward ? fftwf_plan_dft_r2c_1d(n, real_, bins_, FFTW_ESTIMATE)
                            : fftwf_plan_dft_c2r_1d(n, bins_, real_, FFTW_ESTIMATE);
        }
        if (plan_ == nullptr) {
            release();
            rt::raise(rt::kErrOutOfMemory);
        }
    }
    ~Plan() { release(); }
    Plan(const Plan&) = delete;
    Plan& operator=(const Plan&) = delete;

    bool fits(std::int32_t n, bool forward) const { return n == n_ && forward == forward_; }
    std::int32_t binCount() const { return n_ / 2 + 1; }
    float* real() { return real_; }
    std::complex<float>* bins() { return reinterpret_cast<std::complex<float>*>(bins_); }
    void run() { fftwf_execute(plan_); }

private:
    void release()
    {
        if (plan_ != nullptr) fftwf_destroy_plan(plan_);
        fftwf_free(bins_);
        fftwf_free(real_);
        plan_ = nullptr;
        bins_ = nullptr;
        real_ = nullptr;
    }

    std::int32_t n_;
    bool forward_;
    float* real_ = nullptr;
    fftwf_complex* bins_ = nullptr;
    fftwf_plan plan_ = nullptr;
};

// Most recently used first.
std::deque<std::unique_ptr<Plan>> gPlans;

Plan& planFor(std::int32_t n, bool forward)
{
    if (n < 1) rt::raise(rt::kErrInvalidCall, "FFT size " + std::to_string(n) + " < 1");
    const auto found = std::find_if(gPlans.begin(), gPlans.end(),
                                    [&](const auto& plan) { return plan->fits(n, forward); });
    if (found != gPlans.end()) {
        std::rotate(gPlans.begin(), found, found + 1);
    } else {
        if (gPlans.size() == kPlansKept) gPlans.pop_back();
        gPlans.push_front(std::make_unique<Plan>(n, forward));
    }
    return *gPlans.front();
}

}  // namespace

std::vector<std::complex<float>> gacFftForward(std::span<const float> afIn)
{
    Plan& plan = planFor(static_cast<std::int32_t>(afIn.size()), true);
    std::copy(afIn.begin(), afIn.end(), plan.real());
    plan.run();
    return {plan.bins(), plan.bins() + plan.binCount()};
}

std::vector<float> gafFftInverse(std::span<const std::complex<float>> acBins, std::int32_t n)
{
    Plan& plan = planFor(n, false);
    if (static_cast<std::int32_t>(acBins.size()) != plan.binCount())
        rt::raise(rt::kErrInvalidCall, "FFT of " + std::to_string(n) + " values needs " +
                                           std::to_string(plan.binCount()) + " bins");
    // The inverse transform overwrites its input, which is ours to lose.
    std::copy(acBins.begin(), acBins.end(), plan.bins());
    plan.run();
    return {plan.real(), plan.real() + n};
}
