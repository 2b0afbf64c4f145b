#include <fftw3.h>
#include <mutex>

#include "measure/transform.h"

namespace tarno2 {

namespace {

// Plans are made and dropped by one thread at a time; running them needs no lock.
std::mutex& planning() {
    static std::mutex mutex;
    return mutex;
}

struct Freed {
    void operator()(void* memory) const { fftw_free(memory); }
};

struct Dropped {
    void operator()(fftw_plan plan) const {
        const std::lock_guard lock(planning());
        fftw_destroy_plan(plan);
    }
};

class Transform final : public RealTransform {
public:
    explicit Transform(size_t length)
        : length_(length),
          samples_(fftw_alloc_real(length)),
          // std::complex<double> and fftw_complex are the same two numbers.
          bins_(reinterpret_cast<std::complex<double>*>(fftw_alloc_complex(length / 2 + 1))) {
        if (samples_ && bins_) {
            const std::lock_guard lock(planning());
            // An estimated plan is ready at once, and the same on every machine.
            plan_.reset(fftw_plan_dft_r2c_1d(static_cast<int>(length), samples_.get(),
                                             reinterpret_cast<fftw_complex*>(bins_.get()), FFTW_ESTIMATE));
        }
    }

    [[nodiscard]] bool ready() const { return plan_ != nullptr; }
    [[nodiscard]] std::span<double> samples() override { return {samples_.get(), length_}; }
    [[nodiscard]] std::span<const std::complex<double>> run() override {
        fftw_execute(plan_.get());
        return {bins_.get(), length_ / 2 + 1};
    }

private:
    size_t length_;
    std::unique_ptr<double, Freed> samples_;
    std::unique_ptr<std::complex<double>, Freed> bins_;
    std::unique_ptr<fftw_plan_s, Dropped> plan_;
};

}  // namespace

bool RealTransform::available() {
    return true;
}

std::unique_ptr<RealTransform> RealTransform::create(size_t length) {
    auto transform = std::make_unique<Transform>(length);
    return transform->ready() ? std::move(transform) : nullptr;
}

}  // namespace tarno2
