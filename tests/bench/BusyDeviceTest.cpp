// A default device that something else holds: ALSA's default PCM is our
// refusing plugin (RefusingPcm.cpp, configured by the test's own ALSA
// configuration). The device is still listed, "auto" keeps ALSA rather than
// falling back to the silent virtual card, and the start-up check says what
// the platform says about the device and goes the device-problem way.
#include <gtest/gtest.h>

#include "engine/modWaveInOut.h"
#include "engine/modWaveInOutMixer.h"
#include "platform/SoundBackends.h"
#include "platform/WaveApi.h"
#include "services/modGeneral.h"
#include "tests/support/ScriptedHost.h"

namespace {

using namespace mm;
using namespace testing_support;

// The test's ALSA configuration comes in ALSA_CONFIG_PATH (CMakeLists.txt).
class BusyDevice : public ::testing::Test {
protected:
    ScriptedHost host;
};

TEST_F(BusyDevice, AutoKeepsAlsaWhoseHeldDeviceIsListed)
{
    EXPECT_STREQ(backend::chooseSoundBackend("auto", backend::soundBackends()).name, "alsa");
    ASSERT_EQ(waveBackendName(), "alsa");
    EXPECT_GE(waveOutGetNumDevs(), 1u);
    WAVEOUTCAPSA caps;
    EXPECT_EQ(waveOutGetDevCapsA(0, &caps, sizeof caps), MMSYSERR_ALLOCATED);
}

TEST_F(BusyDevice, StartUpSaysTheDeviceIsInUseAndStops)
{
    std::string report;
    ErrorFlag error = kFalse;
    EXPECT_EQ(gbWaveInOutMixerThere(kFalse, report, error), kFalse);
    EXPECT_EQ(error, kTrue);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text,
              "The specified device is already in use.  Wait until it is free, and then try again.");
    EXPECT_EQ(host.boxes[0].style, host::kCritical);
    EXPECT_EQ(host.boxes[0].title, gsProgNameVersion);
}

}  // namespace
