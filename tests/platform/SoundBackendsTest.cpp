// Choosing the sound back end from WAVELARK_AUDIO over a table of stand-in
// back ends: a name chooses its entry, anything else takes the first that
// offers a device, and the last entry is the fallback.
#include <gtest/gtest.h>

#include "platform/MixerBackend.h"
#include "platform/SoundBackends.h"
#include "platform/WaveBackend.h"

namespace {

using namespace mm;
using backend::SoundBackend;

// A back end that lists as many devices as it is told and counts the looks.
class ListingBackend : public backend::WaveBackend {
public:
    UINT outputs = 0;
    UINT inputs = 0;
    int looks = 0;

    UINT outputCount() override { return ++looks, outputs; }
    UINT inputCount() override { return ++looks, inputs; }
    MMRESULT outputCaps(UINT, WAVEOUTCAPSA&) override { return MMSYSERR_NOTSUPPORTED; }
    MMRESULT inputCaps(UINT, WAVEINCAPSA&) override { return MMSYSERR_NOTSUPPORTED; }
    MMRESULT openOutput(UINT, const WAVEFORMATEX&, backend::PlayQueue&,
                        std::unique_ptr<backend::OutputStream>&) override
    {
        return MMSYSERR_NOTSUPPORTED;
    }
    MMRESULT openInput(UINT, const WAVEFORMATEX&, backend::CaptureQueue&,
                       std::unique_ptr<backend::InputStream>&) override
    {
        return MMSYSERR_NOTSUPPORTED;
    }
};

ListingBackend gFirst;
ListingBackend gSecond;
ListingBackend gLast;

backend::WaveBackend& first() { return gFirst; }
backend::WaveBackend& second() { return gSecond; }
backend::WaveBackend& last() { return gLast; }
backend::MixerBackend& noMixer() { std::abort(); }  // choosing never opens a mixer

const SoundBackend kTable[] = {
    {"first", &first, &noMixer},
    {"second", &second, &noMixer},
    {"last", &last, &noMixer},
};

class SoundBackendChoice : public ::testing::Test {
protected:
    SoundBackendChoice()
    {
        for (ListingBackend* b : {&gFirst, &gSecond, &gLast}) *b = ListingBackend{};
    }
    static const char* choose(const char* setting) { return backend::chooseSoundBackend(setting, kTable).name; }
};

TEST_F(SoundBackendChoice, ANameChoosesItsEntryWithoutLookingForDevices)
{
    EXPECT_STREQ(choose("second"), "second");
    EXPECT_STREQ(choose("LAST"), "last");
    EXPECT_EQ(gFirst.looks + gSecond.looks + gLast.looks, 0);
}

TEST_F(SoundBackendChoice, AutoTakesTheFirstThatOffersAnOutputOrAnInput)
{
    gSecond.inputs = 1;
    EXPECT_STREQ(choose("auto"), "second");
    gFirst.outputs = 2;
    EXPECT_STREQ(choose(""), "first");
    EXPECT_STREQ(choose("pulse"), "first") << "an unknown name counts as auto";
}

TEST_F(SoundBackendChoice, AutoFallsBackToTheLastWhenNothingOffersADevice)
{
    EXPECT_STREQ(choose("auto"), "last");
    EXPECT_GT(gSecond.looks, 0);
    EXPECT_EQ(gLast.looks, 0) << "the fallback serves whatever it lists";
}

TEST(SoundBackends, TheTableListsAlsaBeforeTheVirtualCard)
{
    ASSERT_EQ(backend::soundBackends().size(), 2u);
    EXPECT_STREQ(backend::soundBackends()[0].name, "alsa");
    EXPECT_STREQ(backend::soundBackends()[1].name, "loopback");
}

}  // namespace
