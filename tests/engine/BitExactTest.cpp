// The vectorised sample blocks against the plain formulas they stand for.
// The sine's reference is the library sine in double of the float phase,
// times the amplitude, rounded half to even; the blocks may use their own
// polynomial only because they recompute every sample it could round wrongly.
#include <algorithm>
#include <cfloat>
#include <cstring>
#include <optional>

#include "engine/SynthKernels.h"
#include "tests/engine/EngineFixture.h"

namespace engine_test {
namespace {

std::int16_t referenceSine(float phase, double amp)
{
    return static_cast<std::int16_t>(std::nearbyint(amp * std::sin(static_cast<double>(phase))));
}

// Phases over the whole cycle: a stride through every float in [0, 2pi),
// the floats around the quarter points, and the floats where amp x sin lies
// within a few units in the last place of a half (the samples the polynomial
// must hand back to the library sine).
std::vector<float> testPhases()
{
    std::vector<float> phases;
    auto fromBits = [](std::uint32_t bits) {
        float p;
        std::memcpy(&p, &bits, sizeof p);
        return p;
    };
    // Every 613th float from the smallest normal one up to 2pi.
    for (std::uint32_t bits = 0x00800000u;; bits += 613u) {
        const float p = fromBits(bits);
        if (p >= synth::kTwoPi) break;
        phases.push_back(p);
    }
    const float quarters[] = {0.0f, synth::kPi / 2, synth::kPi, 3 * synth::kPi / 2, synth::kTwoPi};
    for (const float quarter : quarters) {
        float p = quarter;
        for (int i = 0; i < 2000; ++i) p = std::nextafter(p, 0.0f);
        for (int i = 0; i < 4000; ++i, p = std::nextafter(p, 10.0f))
            if (p >= 0 && p < synth::kTwoPi) phases.push_back(p);
    }
    for (int k = -32767; k < 32767; ++k) {
        const double angle = std::asin((k + 0.5) / 32767.0);
        for (const double a : {angle, M_PI - angle, angle + 2 * M_PI}) {
            const float p = static_cast<float>(a);
            for (const float q : {std::nextafter(p, 0.0f), p, std::nextafter(p, 10.0f)})
                if (q >= 0 && q < synth::kTwoPi) phases.push_back(q);
        }
    }
    // Of all floats in [0, 2pi), the one whose sine x 32767 lies nearest a
    // half (0.5 - 4.85e-10): inside the margin, so its block is handed back.
    phases.push_back(fromBits(0x37800100u));
    return phases;
}

// Runs a block function over the phases in blocks of 256, the way the
// engine does, and returns the samples; a block that hands back is
// recomputed with the exact form.
template <class Block, class Exact>
std::vector<std::optional<std::int16_t>> blocks(const std::vector<float>& phases, Block block,
                                                Exact exact)
{
    std::vector<std::optional<std::int16_t>> out(phases.size());
    std::vector<std::int16_t> buffer(256);
    for (std::size_t first = 0; first < phases.size(); first += 256) {
        const std::size_t count = std::min<std::size_t>(256, phases.size() - first);
        if (block(phases.data() + first, buffer.data(), static_cast<std::int32_t>(count))) {
            for (std::size_t j = 0; j < count; ++j) out[first + j] = buffer[j];
            continue;
        }
        for (std::size_t j = 0; j < count; ++j) {
            try {
                out[first + j] = exact(phases[first + j]);
            } catch (const rt::RuntimeError&) {
                out[first + j] = std::nullopt;  // the exact form reports this sample
            }
        }
    }
    return out;
}

TEST(BitExact, PolynomialSineStaysFarWithinItsRoundingMargin)
{
    double largest = 0;
    for (const float p : testPhases())
        largest = std::max(largest, std::fabs(synth::fastSine(p) - std::sin(double{p})));
    EXPECT_LT(largest * 32767, synth::kSineRoundingMargin / 10);
}

TEST(BitExact, SineBlocksEqualTheLibrarySineRoundedHalfToEven)
{
    const std::vector<float> phases = testPhases();
    ASSERT_GT(phases.size(), 1000000u);
    for (const std::int16_t invert : {1, -1}) {
        const synth::ShapeParams params = synth::shapeParams(invert, 0);
        std::size_t handedBack = 0;
        const auto out = blocks(
            phases,
            [&](const float* p, std::int16_t* o, std::int32_t n) {
                const bool exact = synth::sineBlock(p, o, n, params);
                handedBack += exact ? 0 : 1;
                return exact;
            },
            [&](float p) { return synth::sineSample(p, params); });
        for (std::size_t i = 0; i < phases.size(); ++i)
            ASSERT_EQ(out[i], referenceSine(phases[i], invert * 32767.0)) << phases[i];
        EXPECT_GT(handedBack, 0u);  // the near-half phases were recognised
    }
}

TEST(BitExact, TriangleAndMarkSpaceBlocksEqualTheirFormulas)
{
    const std::vector<float> phases = testPhases();  // 0 among them: a sawtooth's jump
    for (const std::int16_t invert : {1, -1}) {
        for (const std::int32_t percent : {0, 1, 30, 50, 99, 100}) {
            SCOPED_TRACE(testing::Message() << invert << " " << percent);
            const synth::ShapeParams params = synth::shapeParams(invert, percent);
            const auto triangle = blocks(
                phases,
                [&](const float* p, std::int16_t* o, std::int32_t n) {
                    return synth::triangleBlock(p, o, n, params);
                },
                [&](float p) { return synth::triangleSample(p, params); });
            const auto markSpace = blocks(
                phases,
                [&](const float* p, std::int16_t* o, std::int32_t n) {
                    synth::markSpaceBlock(p, o, n, params);
                    return true;
                },
                [&](float p) { return synth::markSpaceSample(p, params); });
            // No phase fails, the sawtooth's 0 included.
            for (std::size_t i = 0; i < phases.size(); ++i) {
                ASSERT_EQ(triangle[i], synth::triangleSample(phases[i], params)) << phases[i];
                ASSERT_EQ(markSpace[i], synth::markSpaceSample(phases[i], params)) << phases[i];
            }
            if (percent == 0) {
                EXPECT_EQ(synth::triangleSample(0.0f, params), 0);
            }
        }
    }
}

TEST(BitExact, NoiseBlocksDrawWhatSingleDrawsDrawRejectionsIncluded)
{
    // 2^32 mod 60,000 = 47,296: about one draw in 90,000 is rejected and
    // shifts every later one.
    const synth::UniformRange range = synth::uniformRange(-30000, 29999);
    ASSERT_EQ(range.threshold, 47296u);
    std::uint64_t blockCounter = 12345;
    std::uint64_t singleCounter = 12345;
    std::vector<std::int16_t> block(262399);
    for (int round = 0; round < 4; ++round) {
        synth::randomBlock(blockCounter, range, block.data(),
                           static_cast<std::int32_t>(block.size()));
        for (const std::int16_t drawn : block)
            ASSERT_EQ(drawn, synth::randomInRange(singleCounter, range));
        ASSERT_EQ(blockCounter, singleCounter);
    }
    EXPECT_GT(blockCounter - 12345, 4u * 262399);  // some draws were rejected
}

class WholeBuffers : public EngineTest {
protected:
    // The made buffer with the blocks and with the plain formulas only.
    void expectSameBothWays()
    {
        gWaveOutUseExactSamplesForTests(kFalse);
        std::int32_t fastRate = 0;
        const auto fast = make(&fastRate);
        gWaveOutUseExactSamplesForTests(kTrue);
        std::int32_t exactRate = 0;
        const auto exact = make(&exactRate);
        gWaveOutUseExactSamplesForTests(kFalse);
        EXPECT_EQ(fastRate, exactRate);
        ASSERT_EQ(fast.size(), exact.size());
        const auto mismatch = std::mismatch(fast.begin(), fast.end(), exact.begin());
        EXPECT_TRUE(mismatch.first == fast.end())
            << "sample " << (mismatch.first - fast.begin()) + 1 << " of " << fast.size();
    }
};

TEST_F(WholeBuffers, PreciseLoopsOfEveryShapeAndBothAmplitudes)
{
    gWaveOutSetPreciseLoop(kTrue);
    for (const char* shape : {"Sine", "Triangle", "MarkSpace"}) {
        for (const std::int16_t percent : {0, 37}) {
            for (const Bool16 invert : {kFalse, kTrue}) {
                SCOPED_TRACE(testing::Message() << shape << " " << percent << " " << invert);
                gWaveOutSetShape(shape);
                gWaveOutSetPercent(percent);
                gWaveOutSetInvert(invert);
                // 24.971718 Hz has one of the longest loops: 821,189 samples.
                for (const float f : {10.0f, 24.971718f, 997.0f, 12345.6f, 20000.0f}) {
                    settings(f);
                    expectSameBothWays();
                }
            }
        }
    }
}

// FNV-1a over the samples of each buffer in turn, lengths included.
class Fingerprint {
public:
    void add(const std::vector<std::int16_t>& samples)
    {
        mix(samples.size());
        for (const std::int16_t s : samples) mix(static_cast<std::uint16_t>(s));
    }
    std::uint64_t value() const { return hash_; }

private:
    void mix(std::uint64_t word)
    {
        for (int byte = 0; byte < 8; ++byte, word >>= 8) {
            hash_ ^= word & 0xFF;
            hash_ *= 0x100000001B3ull;
        }
    }
    std::uint64_t hash_ = 0xCBF29CE484222325ull;
};

// A sample that lands exactly on a sawtooth's jump (phase 0) is 0, the
// jump's middle, where it once divided 0 by 0 and raised an error; every
// other sample is what it was. The fingerprints are of the buffers made
// before, with that one sample left at 0 by an Ignore answer.
TEST_F(WholeBuffers, SawtoothSampleOnItsJumpIsItsMiddle)
{
    gWaveOutSetShape("Triangle");
    gWaveOutSetPercent(0);

    // A quarter of the rate: the phase is 0 again at every 4th sample.
    settings(11025);
    auto x = make();
    ASSERT_EQ(x.size(), 4u);
    EXPECT_NEAR(x[0], 16383.5, 1);  // a falling ramp through 0 at half the cycle
    EXPECT_EQ(x[1], 0);
    EXPECT_NEAR(x[2], -16383.5, 1);
    EXPECT_EQ(x[3], 0);

    struct Case {
        std::int32_t rate;
        float f1, f2, duration;
        std::int16_t steps;
        std::size_t length, jump;
        std::uint64_t fingerprint;
    };
    const Case cases[] = {
        {96000, 228.3f, 0, 0, 0, 841, 841, 0x8F2C84738259B13Dull},
        {44100, 1000, 2000, 2, 30, 88232, 28293, 0xF31961062736E664ull},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.f1);
        useDevice(c.rate, c.rate * 0.45f);
        settings(c.f1, c.f2, c.duration, false, false, c.steps);
        x = make();
        ASSERT_EQ(x.size(), c.length);
        EXPECT_EQ(x[c.jump - 1], 0);
        EXPECT_LT(x[c.jump - 2], -30000);  // the bottom of the jump...
        EXPECT_GT(x[c.jump % c.length], 30000);  // ...and its top
        Fingerprint fingerprint;
        fingerprint.add(x);
        EXPECT_EQ(fingerprint.value(), c.fingerprint);
        expectSameBothWays();
    }
}

// The buffers of every shape, rate and mode as they have always been made:
// a change to the float arithmetic of the phase accumulator or a shape shows
// here even when the vectorised and plain forms change alike.
TEST_F(WholeBuffers, BuffersKeepTheirFingerprints)
{
    struct Case {
        std::int32_t rate;
        float maximum;
        const char* shape;
        std::int16_t percent;
        Bool16 invert;
        std::uint64_t fingerprint;
    };
    const Case cases[] = {
        {44100, 20000, "Sine", 0, kFalse, 0x7578B44F88BBB979ull},
        {44100, 20000, "Sine", 0, kTrue, 0x432C46397DE47A50ull},
        {44100, 20000, "Triangle", 37, kFalse, 0xD94BEE20E74CCB61ull},
        {44100, 20000, "Triangle", 100, kTrue, 0x1013818DC5CFB63Cull},
        {44100, 20000, "MarkSpace", 37, kFalse, 0x45AF82E054E2482Aull},
        {44100, 20000, "Triangle", 0, kFalse, 0x310B979763B57DE9ull},
        {48000, 22000, "Sine", 0, kFalse, 0x0601FF4E74611B9Aull},
        {48000, 22000, "Triangle", 50, kFalse, 0x3B370BB785BB67AAull},
        {48000, 22000, "MarkSpace", 50, kTrue, 0x3DC02660165F8F1Eull},
        {96000, 40000, "Sine", 0, kFalse, 0xED4361D5625229B9ull},
        {96000, 40000, "Triangle", 13, kFalse, 0xF68CD327248BF9EEull},
        {96000, 40000, "Triangle", 0, kTrue, 0xAB5FDD2691AAA1D1ull},
        {96000, 40000, "MarkSpace", 91, kFalse, 0x0466CDA1C6120846ull},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.rate << " " << c.shape << " " << c.percent << " "
                                        << c.invert);
        useDevice(c.rate, c.maximum);
        gWaveOutSetShape(c.shape);
        gWaveOutSetPercent(c.percent);
        gWaveOutSetInvert(c.invert);
        Fingerprint fingerprint;
        for (const float f : {10.0f, 20.0f, 99.9f, 440.0f, 997.0f, 1000.0f, 1234.5f, 6000.0f,
                              15432.1f, 19999.9f}) {
            settings(f);
            fingerprint.add(make());
        }
        settings(1000, 0, 0, false, false, 0, 10, 100);
        fingerprint.add(make());
        settings(20, 20000, 5, true, true, 600);
        fingerprint.add(make());
        settings(50, 15000, 3, false, false, 100);
        fingerprint.add(make());
        EXPECT_EQ(fingerprint.value(), c.fingerprint);
    }
}

}  // namespace
}  // namespace engine_test
