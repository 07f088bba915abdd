// Device discovery from the virtual card's device lists, and the engine
// facing devices that are busy, refuse a rate, fail or vanish.
#include "services/modGeneral.h"
#include "tests/engine/WaveEngineFixture.h"
#include "tests/support/SignalMeasure.h"

namespace engine_test {
namespace {

using mm::loopback::DeviceTraits;

DeviceTraits device(const std::string& name, mm::DWORD formats = 0x000FFFFF)
{
    DeviceTraits layout;
    layout.name = name;
    layout.formats = formats;
    return layout;
}

class DiscoveryTest : public WaveEngineTest {
protected:
    void SetUp() override
    {
        WaveEngineTest::SetUp();
        gsProgNameVersion = "Wavelark v1.0.0";
    }
};

TEST_F(DiscoveryTest, TheFirstDeviceThatIsNotAModemIsChosen)
{
    mm::loopback::setOutputDevices({device("PCI Soft Modem Line"), device("Speakers"),
                                    device("Headphones")});
    mm::loopback::setInputDevices({device("USB modem"), device("Microphone")});
    ErrorFlag error = kFalse;
    EXPECT_EQ(gbWaveOutThere(error), kTrue);
    EXPECT_EQ(gbWaveInThere(error), kTrue);
    EXPECT_EQ(error, kFalse);
    EXPECT_TRUE(host.boxes.empty());
    EXPECT_EQ(gWaveIOStateForTests().waveOutDeviceId, 1);
    EXPECT_EQ(gWaveIOStateForTests().waveInDeviceId, 1);
    EXPECT_EQ(gWaveOutInfo().name, "Speakers");
    EXPECT_EQ(gWaveInInfo().name, "Microphone");
}

TEST_F(DiscoveryTest, OnlyAModemMeansNoDeviceAndNoMessage)
{
    mm::loopback::setOutputDevices({device("Modem #2 Line Playback", 0x10)});
    ErrorFlag error = kFalse;
    EXPECT_EQ(gbWaveOutThere(error), kFalse);
    EXPECT_EQ(error, kFalse);
    EXPECT_TRUE(host.boxes.empty());
    // The modem's capabilities were read into the record all the same.
    EXPECT_EQ(gWaveOutInfo().name, "Modem #2 Line Playback");
    EXPECT_EQ(gWaveOutInfo().sampleRate, 22050);
}

TEST_F(DiscoveryTest, NoDeviceAtAllIsSaidInACriticalBoxTitledWithTheProgram)
{
    mm::loopback::setOutputDevices({});
    mm::loopback::setInputDevices({});
    ErrorFlag error = kFalse;
    EXPECT_EQ(gbWaveOutThere(error), kFalse);
    EXPECT_EQ(gbWaveInThere(error), kFalse);
    EXPECT_EQ(error, kFalse);
    ASSERT_EQ(host.boxes.size(), 2u);
    EXPECT_EQ(host.boxes[0].text, "Wave device not found");
    EXPECT_EQ(host.boxes[1].text, "Wave Input device not found");
    for (const auto& box : host.boxes) {
        EXPECT_EQ(box.title, "Wavelark v1.0.0");
        EXPECT_EQ(box.style, host::kCritical);
    }
}

TEST_F(DiscoveryTest, AFailedCapabilityReadIsShownAndStopsTheChoice)
{
    DeviceTraits broken = device("Broken Card");
    broken.capsResult = mm::MMSYSERR_NOMEM;
    mm::loopback::setOutputDevices({broken, device("Speakers", 0x10)});
    ErrorFlag error = kFalse;
    EXPECT_EQ(gbWaveOutThere(error), kFalse);
    EXPECT_EQ(error, kTrue) << "the flag stays set for the caller";
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text,
              "There is not enough memory available for this task.  Quit one or more applications "
              "to increase available memory, and then try again.");
    EXPECT_EQ(host.boxes[0].style, host::kCritical);
    EXPECT_EQ(host.boxes[0].title, "Wavelark v1.0.0");
    // The later device was still read, but not chosen.
    EXPECT_EQ(gWaveOutInfo().name, "Speakers");
}

TEST_F(DiscoveryTest, TheFormatFollowsTheReportedFormats)
{
    struct Case {
        mm::DWORD formats;
        std::int32_t rate;
        std::int16_t bits;
        std::int16_t channels;
    };
    const Case cases[] = {
        {0x000FFFFF, 44100, 16, 2},  // everything
        {0x00000100, 44100, 8, 1},   // 44.1 kHz 8-bit mono only
        {0x00000200, 44100, 8, 2},   // 512 < 513: still 8 bits
        {0x00000201, 44100, 16, 2},
        {0x00000400, 44100, 16, 1},
        {0x00040000, 44100, 16, 1},  // 96 kHz only: counted as >= 256
        {0x00000010, 22050, 8, 1},
        {0x00000020, 22050, 8, 2},   // 32 < 33
        {0x00000021, 22050, 16, 2},
        {0x00000040, 22050, 16, 1},
        {0x00000001, 11025, 8, 1},
        {0x00000002, 11025, 8, 2},
        {0x00000003, 11025, 16, 2},
        {0x00000004, 11025, 16, 1},
        {0x00000008, 11025, 16, 2},
        {0x00000000, 44100, 16, 1},  // none reported
        {0x80000000, 44100, 16, 1},  // negative as a signed number: none reported
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << c.formats);
        mm::loopback::setOutputDevices({device("Out", c.formats)});
        mm::loopback::setInputDevices({device("In", c.formats)});
        ErrorFlag error = kFalse;
        ASSERT_EQ(gbWaveOutThere(error), kTrue);
        ASSERT_EQ(gbWaveInThere(error), kTrue);
        const WaveOutDeviceInfo& out = gWaveOutInfo();
        const WaveInDeviceInfo& in = gWaveInInfo();
        EXPECT_EQ(out.sampleRate, c.rate);
        EXPECT_EQ(out.bits, c.bits);
        EXPECT_EQ(out.channels, c.channels);
        EXPECT_EQ(in.sampleRate, c.rate);
        EXPECT_EQ(in.bits, c.bits);
        EXPECT_EQ(in.channels, c.channels);
        const Bool16 none = toBool16(c.formats == 0 || c.formats == 0x80000000);
        EXPECT_EQ(out.noFormats, none);
        EXPECT_EQ(in.noFormats, none);
        const float highest = c.rate == 44100 ? 20000.0f : c.rate == 22050 ? 10000.0f : 5000.0f;
        EXPECT_EQ(out.frequencyMax, highest);
        EXPECT_EQ(out.frequencyMaxNonSine, highest / 10);
    }
}

TEST_F(DiscoveryTest, AnAudigyPlaysAt96kHzUpTo40kHz)
{
    mm::loopback::setOutputDevices({device("SB Audigy 2 ZS Audio", 0x10)});
    mm::loopback::setInputDevices({device("SB Audigy 2 ZS Audio In", 0x10)});
    ErrorFlag error = kFalse;
    ASSERT_EQ(gbWaveOutThere(error), kTrue);
    ASSERT_EQ(gbWaveInThere(error), kTrue);
    EXPECT_EQ(gWaveOutInfo().sampleRate, 96000);
    EXPECT_EQ(gWaveOutInfo().bits, 24);
    EXPECT_EQ(gWaveOutInfo().channels, 2);
    EXPECT_EQ(gWaveOutInfo().frequencyMax, 40000.0f);
    EXPECT_EQ(gWaveOutInfo().frequencyMaxNonSine, 4000.0f);
    EXPECT_EQ(gWaveInInfo().sampleRate, 48000);
    EXPECT_EQ(gWaveInInfo().bits, 16);

    // It plays 16-bit mono at 96 kHz, a 40 kHz tone included.
    gWaveOutSetShape("Sine");
    tone(40000);
    mm::loopback::startTap();
    const auto made = change("Open");
    EXPECT_EQ(made.size(), 12u) << "five cycles of 2.4 samples";
    host.sleep(50);
    close(true);
    const auto segments = mm::loopback::takeTap();
    ASSERT_EQ(segments.size(), 1u);
    EXPECT_EQ(segments[0].rate, 96000u);
    EXPECT_TRUE(playsLooped(segments[0].samples, 0, 4800, made));
}

TEST_F(DiscoveryTest, IdsAndVersionAndSupportAreReadAsTheRecordHoldsThem)
{
    DeviceTraits pci = device("Speakers");
    pci.mid = 0x8086;  // above 32767: kept as a 16-bit Integer holds it
    pci.pid = 0x2668;
    pci.driverVersion = 0x050A;  // 1290: 1290 \ 255 = 5, 1290 mod 255 = 15
    pci.support = mm::WAVECAPS_VOLUME | mm::WAVECAPS_SYNC;
    DeviceTraits usb = device("Headset");
    usb.mid = 0x046D;
    usb.pid = 0xFFFF;
    usb.driverVersion = 0x0100;
    mm::loopback::setOutputDevices({pci});
    mm::loopback::setInputDevices({usb});
    ErrorFlag error = kFalse;
    ASSERT_EQ(gbWaveOutThere(error), kTrue);
    ASSERT_EQ(gbWaveInThere(error), kTrue);
    const WaveOutDeviceInfo& out = gWaveOutInfo();
    EXPECT_EQ(out.manufacturerId, -32634);
    EXPECT_EQ(out.productId, 0x2668);
    EXPECT_EQ(out.driverVersion, "5.15");
    EXPECT_EQ(out.supportsVolume, kTrue);
    EXPECT_EQ(out.supportsSync, kTrue);
    EXPECT_EQ(out.supportsLRVolume, kFalse);
    EXPECT_EQ(out.supportsPitch, kFalse);
    EXPECT_EQ(out.supportsPlaybackRate, kFalse);
    EXPECT_EQ(out.supportsSampleAccurate, kFalse);
    const WaveInDeviceInfo& in = gWaveInInfo();
    EXPECT_EQ(in.manufacturerId, 0x046D);
    EXPECT_EQ(in.productId, -1);
    EXPECT_EQ(in.driverVersion, "1.1");
}

// ---- faults ---------------------------------------------------------------------

class FaultTest : public WaveEngineTest {
protected:
    void SetUp() override
    {
        WaveEngineTest::SetUp();
        findDevices();
        gWaveOutSetShape("Sine");
        tone(1000);
    }

    // gWaveOutChange expected to fail with one warning box.
    // A 1 kHz signal is shown as 45 samples, 2 kHz as 23.
    void expectFailure(const std::string& action, const std::string& title,
                       const std::string& text, std::int32_t shown = 45)
    {
        rt::SampleArray samples;
        rt::SampleArray record;
        ErrorFlag error = kFalse;
        gWaveOutChange(action, 0, kFalse, kTrue, samples, record, error);
        EXPECT_EQ(error, kTrue);
        ASSERT_EQ(host.boxes.size(), 1u);
        EXPECT_EQ(host.boxes[0].title, title);
        EXPECT_EQ(host.boxes[0].text, text);
        EXPECT_EQ(host.boxes[0].style, host::kExclamation);
        EXPECT_EQ(samples.size(), shown) << "the made signal is still shown";
        host.boxes.clear();
    }
};

TEST_F(FaultTest, ABusyOutputIsReportedAndLeavesTheEngineClosed)
{
    mm::loopback::refuseOutputOpen(mm::MMSYSERR_ALLOCATED);
    expectFailure("Open", "modWaveInOut.mWaveOutOpenPrepare",
                  "The specified device is already in use.  Wait until it is free, and then try "
                  "again.");
    EXPECT_EQ(gWaveIOStateForTests().waveOutHandle, 0);
    mm::loopback::refuseOutputOpen(mm::MMSYSERR_NOERROR);
    change("Open");
    EXPECT_NE(gWaveIOStateForTests().waveOutHandle, 0);
}

TEST_F(FaultTest, ARateTheDeviceRefusesIsReported)
{
    mm::loopback::setRateRange(8000, 22050);
    expectFailure("Open", "modWaveInOut.mWaveOutOpenPrepare",
                  "The specified format is not supported or cannot be translated.  Use the "
                  "Capabilities function to determine the supported formats.");
    EXPECT_EQ(gWaveIOStateForTests().waveOutHandle, 0);
}

TEST_F(FaultTest, AFailedWriteIsTitledAsTheRecordingAndTheOutputStaysUsable)
{
    mm::loopback::failWrites(mm::MMSYSERR_ERROR);
    expectFailure("Open", "modWaveInOut.gWaveInRecordOpen", "Undefined external error.");
    mm::loopback::failWrites(mm::MMSYSERR_NOERROR);
    mm::loopback::startTap();
    tone(2000);
    change("");
    host.sleep(20);
    const auto heard = played();
    EXPECT_NEAR(testing_support::measureFrequency(heard.data(), heard.size(), 44100), 2000, 1);
}

TEST_F(FaultTest, ADeviceVanishingWhilePlayingIsToldAtOnceAndTheNextChangeOpensAnew)
{
    change("Open");
    host.sleep(10);
    mm::loopback::vanish();
    host.sleep(10);
    // The window's query tells the loss with nothing touched.
    std::string lost;
    EXPECT_EQ(gbWaveOutLost(lost), kTrue);
    EXPECT_EQ(lost, "There is no driver installed on your system.");
    // The next change closes the lost output without a wait and opens it
    // anew, which the missing device refuses.
    tone(2000);
    const std::uint64_t waited = sleptDuring([&] {
        expectFailure("", "modWaveInOut.mWaveOutOpenPrepare", "There is no driver installed on your system.", 23);
    });
    EXPECT_EQ(waited, 0u);
    EXPECT_EQ(gWaveIOStateForTests().waveOutHandle, 0);
    EXPECT_EQ(gbWaveOutLost(lost), kFalse) << "a closed output is not lost";
}

}  // namespace
}  // namespace engine_test
