#include "measure/spectrum.h"

#include <gmock/gmock.h>

#include "measure/spectrum_figures.h"
#include "measure/transform.h"
#include "tests/measure/made_frames.h"

namespace tarno2::test {
namespace {

constexpr double kVoltsPerCode = 20.0 / 65535.0;

class SpectrumOf : public testing::Test {
protected:
    void SetUp() override {
        if (!RealTransform::available()) {
            GTEST_SKIP() << "built without FFTW";
        }
    }

    Spectrum of(const std::function<double(size_t, size_t)>& word, size_t frames, SpectrumWish wish,
                size_t channels = 1) {
        const SignalFormat format = madeFormat(channels);
        FramesInMemory source(madeFrames<int16_t>(channels, frames, word), format.frameBytes());
        for (size_t i = 0; i < channels; ++i) {
            wish.channels.push_back({i, {kVoltsPerCode, 0.0}});
        }
        WorkProgress progress;
        Spectrum out;
        EXPECT_EQ(spectrumOf(source, format, {0, frames}, wish, progress, out), SpectrumEnd::Whole);
        return out;
    }
};

// Between two bins each window loses as much as it is known to; the peak's place and power come out all the same.
TEST_F(SpectrumOf, SineIsMeasuredWithEveryWindow) {
    constexpr double kAmplitude = 16000.0 * kVoltsPerCode;
    for (const auto window :
         {SpectrumWindow::Hann, SpectrumWindow::FlatTop, SpectrumWindow::BlackmanHarris, SpectrumWindow::Rectangular}) {
        for (const double beside : {0.0, 0.37, -0.5}) {
            const double bin = 200.0 + beside;
            const Spectrum spectrum =
                of([bin](size_t, size_t i) { return 5000.0 + 16000.0 * std::sin(kTurn * bin * double(i) / 4096.0); },
                   4096, {.window = window, .length = 4096});
            EXPECT_EQ(spectrum.blocks, 1U);
            EXPECT_NEAR(std::sqrt(spectrum.powers[0][0]), 5000.0 * kVoltsPerCode, 0.03);
            const SpectrumFigures figures = figuresOf(spectrum, 0, 5);
            ASSERT_FALSE(figures.peaks.empty());
            EXPECT_NEAR(figures.peaks[0].frequency, bin * 48000.0 / 4096.0, 0.05);
            EXPECT_NEAR(std::sqrt(2.0 * figures.peaks[0].power), kAmplitude, kAmplitude * 0.005);
        }
    }
}

TEST_F(SpectrumOf, ScalesAgreeWithTheirDefinitions) {
    const Spectrum spectrum = of([](size_t, size_t i) { return -0.5 + 32767.5 * std::sin(kTurn * double(i) / 16.0); },
                                 65536, {.window = SpectrumWindow::FlatTop, .length = 1024});
    EXPECT_EQ(spectrum.blocks, 127U);
    const double power = spectrum.powers[0][64];
    EXPECT_NEAR(spectrumValue(power, SpectrumScale::DbFs, 10.0, spectrum), 0.0, 1e-3);
    EXPECT_NEAR(spectrumValue(power, SpectrumScale::Volts, 10.0, spectrum), 10.0 / std::sqrt(2.0), 1e-3);
    EXPECT_NEAR(spectrumValue(power, SpectrumScale::DbV, 10.0, spectrum), 20.0 * std::log10(10.0 / std::sqrt(2.0)),
                1e-3);
}

// White noise has the same density everywhere, whatever the window, and all of it is the variance.
TEST_F(SpectrumOf, DensityOfNoiseIsItsVariance) {
    for (const auto window : {SpectrumWindow::Hann, SpectrumWindow::BlackmanHarris, SpectrumWindow::Rectangular}) {
        Noise noise;
        const Spectrum spectrum = of([&noise](size_t, size_t) { return double(noise.next() >> 16) - 32768.0; }, 400000,
                                     {.window = window, .length = 1024});
        double variance = 0.0;
        for (size_t i = 1; i < 512; ++i) {
            variance += spectrumValue(spectrum.powers[0][i], SpectrumScale::VoltsSquaredPerHz, 10.0, spectrum) *
                        spectrum.binWidth;
        }
        EXPECT_NEAR(variance, 400.0 / 12.0, 0.4);
    }
}

TEST_F(SpectrumOf, DistortionNoiseAndSpuriousLines) {
    Noise noise;
    const auto signal = [&noise](size_t channel, size_t i) {
        const double turn = kTurn * 1003.0 * double(i) / 65536.0;
        const double line = 20000.0 * std::sin(turn) + 200.0 * std::sin(2.0 * turn) + 100.0 * std::sin(3.0 * turn);
        // Uniform noise of +-100 codes: a root mean square of 57.7.
        return channel == 1 ? 7.0 : line + double(noise.next() % 2001) / 10.0 - 100.0;
    };
    const Spectrum spectrum = of(signal, 65536, {.window = SpectrumWindow::BlackmanHarris, .length = 65536}, 2);
    const SpectrumFigures figures = figuresOf(spectrum, 0, 3);
    ASSERT_EQ(figures.peaks.size(), 3U);
    EXPECT_NEAR(figures.peaks[1].frequency, 2.0 * 1003.0 * 48000.0 / 65536.0, 0.05);
    EXPECT_NEAR(*figures.distortion, std::hypot(0.01, 0.005), 2e-4);
    EXPECT_NEAR(*figures.signalToNoiseDb, 20.0 * std::log10(20000.0 / std::sqrt(2.0) / 57.7), 0.1);
    EXPECT_NEAR(*figures.spuriousFreeDb, 40.0, 0.2);
    const SpectrumFigures constant = figuresOf(spectrum, 1, 3);
    EXPECT_TRUE(constant.peaks.empty());
    EXPECT_FALSE(constant.distortion);
}

TEST_F(SpectrumOf, SideLobesOfTheWindowAreNoNoise) {
    Noise noise;
    const auto signal = [&noise](size_t, size_t i) {
        return 20000.0 * std::sin(kTurn * 327.43 * double(i) / 65536.0) + double(noise.next() % 2001) / 100.0 - 10.0;
    };
    const SpectrumFigures figures = figuresOf(of(signal, 65536, {.length = 65536}), 0, 3);
    EXPECT_NEAR(*figures.signalToNoiseDb, 20.0 * std::log10(20000.0 / std::sqrt(2.0) / 5.77), 0.2);
    EXPECT_GT(*figures.spuriousFreeDb, 85.0);
}

TEST_F(SpectrumOf, FiguresAreMissingWhereTheLineIsNotToldFromTheConstantPart) {
    Noise noise;
    const auto slow = [&noise](size_t, size_t i) {
        return 20000.0 * std::sin(kTurn * double(i) / 10000.0) + 20.0 * std::sin(kTurn * double(i) / 50.0) +
               double(noise.next() % 3);
    };
    const SpectrumFigures figures = figuresOf(of(slow, 20000, {.length = 8192}), 0, 3);
    ASSERT_FALSE(figures.peaks.empty());
    EXPECT_FALSE(figures.distortion || figures.signalToNoiseDb || figures.spuriousFreeDb);
}

TEST_F(SpectrumOf, TooFewFramesAreTold) {
    const SignalFormat format = madeFormat(1);
    FramesInMemory source(std::vector<std::byte>(2000), 2);
    Spectrum out;
    WorkProgress progress;
    EXPECT_EQ(spectrumOf(source, format, {0, 200}, {{{0, {}}}}, progress, out), SpectrumEnd::TooShort);
    EXPECT_EQ(spectrumOf(source, format, {500, 1500}, {{{0, {}}}}, progress, out), SpectrumEnd::NotRead);
    progress.cancel();
    EXPECT_EQ(spectrumOf(source, format, {0, 1000}, {{{0, {}}}}, progress, out), SpectrumEnd::Cancelled);
    EXPECT_EQ(spectrumLength(size_t{1} << 30, uint64_t{1} << 40), kMostSpectrum);
    EXPECT_EQ(spectrumLength(5000, 3000), 2048U);
}

}  // namespace
}  // namespace tarno2::test
