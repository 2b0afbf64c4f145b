#pragma once

#include <complex>
#include <cstddef>
#include <memory>
#include <span>

namespace tarno2 {

/// The discrete Fourier transform of real samples of one length. One thread at a time; several objects may be used by
/// several threads.
class RealTransform {
public:
    /// Whether this program has transforms: built without FFTW it has none.
    [[nodiscard]] static bool available();
    /// Null when there are no transforms, or no memory for one. `length` is even.
    [[nodiscard]] static std::unique_ptr<RealTransform> create(size_t length);
    virtual ~RealTransform() = default;
    RealTransform(const RealTransform&) = delete;
    RealTransform& operator=(const RealTransform&) = delete;

    /// Where the samples are put before each run.
    [[nodiscard]] virtual std::span<double> samples() = 0;
    /// Transforms them; their place is used for it. The result, from the constant part to half the rate, is valid until
    /// the next run. It is not scaled.
    [[nodiscard]] virtual std::span<const std::complex<double>> run() = 0;

protected:
    RealTransform() = default;
};

}  // namespace tarno2
