#include "calibration/modVOut.h"

#include <cmath>
#include <limits>
#include <optional>

#include <QDate>

#include "base/Array.h"
#include "base/Convert.h"
#include "base/NumberText.h"
#include "base/Trap.h"
#include "engine/modLog10.h"
#include "engine/modWaveInOut.h"
#include "entry/modControl.h"
#include "entry/modInputNumber.h"
#include "entry/modKeyDown.h"
#include "mixer/modMixer.h"
#include "platform/HostServices.h"
#include "services/modGeneral.h"

namespace {

constexpr const char* kModule = "modVOut";
constexpr const char* kDialogTitle = "Calibrating Output Voltage";
constexpr const char* kMeterNeeded =
    "You will need a meter to measure AC Volts.  Disconnect any load or test unit and connect "
    "the meter across the output.";
constexpr const char* kNotSuitable = "Sorry - your soundboard is not suitable for calibration";

// The rule of the calibration boxes and of the readings.
constexpr float kVOutMaxLimit = 99;
constexpr float kVOutResolution = 0.01f;
// Reading 2 must lie more than this below reading 1 for the output to be
// taken as following the master level (half the readings' resolution).
constexpr float kFallNeeded = 0.005f;
constexpr float kMeasuringFrequency = 1000;
// The output level bar runs 0 (loudest) to this; a bar step is two level steps.

// A calibration text as volts: the user's form, else the locale-independent
// form; 0 when it is neither or beyond a 32-bit float.
float mfVolts(const std::string& sText)
{
    std::optional<double> value = rt::parseUserNumber(sText);
    if (!value) value = rt::parseNumber(sText, ".");
    if (!value || std::abs(*value) > std::numeric_limits<float>::max()) return 0;
    return static_cast<float>(*value);
}

// Plays the measuring sine and sets the master level for the first reading.
void mVOutCalibrateSetUpVMax(std::int32_t lLevel, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mVOutCalibrateSetUpVMax", bError);
    trap.step([&] { gWaveOutSetShape("Sine"); });
    trap.step([&] {
        gWaveOutSetFrequency1SweepBurst(kMeasuringFrequency, 0, 0, kFalse, kFalse, 0, 0, 0, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        rt::SampleArray samples;
        rt::SampleArray noRecording;
        glWaveOutOpenPrepMakeUpdate(0, samples, noRecording, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] { gMixerOutMasterSetLevel(lLevel, bError); });
}

// Asks for the meter's reading; no value when the answer was empty or 0.
std::optional<float> mfAskReading(int nReading, float fStart, float fMax, float fMin,
                                  ErrorFlag& bError)
{
    const std::string prompt = std::to_string(nReading) + ". " + " Voltmeter reading (Vrms)";
    const std::string answer = gsInputNumber(kDialogTitle, prompt, fStart, fMax, fMin,
                                             kVOutResolution, false, true, bError);
    const float reading = mfVolts(answer);
    if (bError || reading == 0) return std::nullopt;
    return reading;
}

struct Readings {
    float first = 0;  // at the reference level
    float check = 0;  // 255 steps below it
    float low = 0;    // 16383 steps below it; 0 when not asked for
};

// Readings 1 to 3 on the playing sine; no value when the user ended the
// dialogue or a step failed.
std::optional<Readings> mVOutReadings(float fVOutMaxNow, bool bFallKnown, ErrorFlag& bError)
{
    Readings readings;
    mVOutCalibrateSetUpVMax(kVOutReferenceLevel, bError);
    if (bError) return std::nullopt;
    const auto first = mfAskReading(1, fVOutMaxNow, kVOutMaxLimit, 0, bError);
    if (!first) return std::nullopt;
    readings.first = *first;

    gMixerOutMasterSetLevel(kVOutReferenceLevel - kVOutCheckStep, bError);
    if (bError) return std::nullopt;
    const auto check = mfAskReading(2, readings.first, kVOutMaxLimit, 0, bError);
    if (!check) return std::nullopt;
    readings.check = *check;

    if (readings.first - readings.check > kFallNeeded && !bFallKnown) {
        gMixerOutMasterSetLevel(kVOutReferenceLevel - kVOutInterval, bError);
        if (bError) return std::nullopt;
        const auto low = mfAskReading(3, readings.check / 2, readings.first, kVOutResolution, bError);
        if (!low) return std::nullopt;
        readings.low = *low;
    }
    return readings;
}

}  // namespace

void gVOutCalibrate(std::string& sVOutMax, std::string& sVOut2, std::int32_t& lState,
                    ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gVOutCalibrate", bError);
    bool playing = false;
    std::optional<Readings> readings;
    trap.step([&] {
        if (host::msgBox(kMeterNeeded, host::kOkCancel, kDialogTitle) != host::kResultOk)
            trap.leave();
    });
    trap.step([&] {
        const float voutMax = mfVolts(sVOutMax);
        const float vout2 = mfVolts(sVOut2);
        const bool fallKnown = lState == kVOutInterval && gbVOutMaxValidActive(voutMax, vout2, bError);
        playing = true;
        readings = mVOutReadings(voutMax, fallKnown, bError);
        if (!readings || readings->low != 0) return;
        if (fallKnown) readings->low = readings->first * (vout2 / voutMax);
    });
    trap.step([&] {
        if (!readings) return;
        if (!(readings->first - readings->check > kFallNeeded)) {
            host::msgBox(kNotSuitable, host::kExclamation, "Calibration");
            sVOutMax = "0";
            sVOut2 = "0";
            return;
        }
        sVOutMax = rt::strNumber(readings->first);
        sVOut2 = rt::strNumber(readings->low);
        lState = kVOutInterval;
    });
    // The measuring sine stops however the dialogue ended.
    if (playing) {
        ErrorFlag closeError = kFalse;
        gWaveOutClose(kTrue, closeError);
        if (closeError) bError = kTrue;
    }
}

float gfStep2VOut(std::int32_t lStep, float fVOutMax, float fVOut2, ErrorFlag& bError)
{
    float volts = 0;
    rt::Trap trap(kModule, "gfStep2VOut", bError);
    trap.step([&] {
        if (lStep == 0) return;
        const float intervals = static_cast<float>(kVOutReferenceLevel - lStep) / kVOutInterval;
        const float logRatio = gfLog10(fVOut2 / fVOutMax, bError);
        volts = rt::toSingle(fVOutMax * std::pow(10.0, static_cast<double>(intervals * logRatio)));
    });
    return volts;
}

Bool16 gbVOutMaxValidActive(float fVOutMax, float fVOut2, ErrorFlag& bError)
{
    Bool16 usable = kFalse;
    rt::Trap trap(kModule, "gbVOutMaxValidActive", bError);
    trap.step([&] {
        // VOut2 must be above 0, not merely other than 0: a negative one (a
        // hand-edited settings file) has no logarithm to scale with.
        usable = toBool16(fVOutMax > 0 && fVOutMax <= kVOutMaxLimit && fVOut2 > 0 &&
                          fVOutMax > fVOut2);
    });
    return usable;
}

std::string gsVOutLevelVolts(std::int32_t lOutLevelBar, const std::string& sVOutMax,
                             const std::string& sVOut2, ErrorFlag& bError)
{
    std::string volts;
    rt::Trap trap(kModule, "gsVOutLevelVolts", bError);
    trap.step([&] {
        if (!gbVOutMaxValidActive(mfVolts(sVOutMax), mfVolts(sVOut2), bError)) return;
        const float value = gfVOutFullScale(lOutLevelBar, sVOutMax, sVOut2, bError);
        if (bError) return;
        volts = rt::formatNumber(value, gsGFormat(value, bError));
    });
    return volts;
}

std::string gsVOutLevelCaption(std::int32_t lOutLevelBar, const std::string& sVOutMax,
                               const std::string& sVOut2, ErrorFlag& bError)
{
    std::string caption = kVOutPlainCaption;
    rt::Trap trap(kModule, "gsVOutLevelCaption", bError);
    trap.step([&] {
        const std::string volts = gsVOutLevelVolts(lOutLevelBar, sVOutMax, sVOut2, bError);
        if (!volts.empty()) caption += "  " + volts + " (V) ";
    });
    return caption;
}

float gfVOutFullScale(std::int32_t lOutLevelBar, const std::string& sVOutMax,
                      const std::string& sVOut2, ErrorFlag& bError)
{
    float volts = 0;
    rt::Trap trap(kModule, "gfVOutFullScale", bError);
    trap.step([&] {
        const float voutMax = mfVolts(sVOutMax);
        const float vout2 = mfVolts(sVOut2);
        if (!gbVOutMaxValidActive(voutMax, vout2, bError)) return;
        volts = gfStep2VOut(glMixerLevelOfBar(lOutLevelBar), voutMax, vout2, bError);
    });
    return volts;
}

std::string gsVOutIdent(ErrorFlag& bError)
{
    std::string ident;
    rt::Trap trap(kModule, "gsVOutIdent", bError);
    trap.step([&] {
        const std::string today = QDate::currentDate().toString(Qt::ISODate).toStdString();
        const std::string& device = gWaveOutInfo().name;
        ident = device.empty() ? today : device + " " + today;
    });
    return ident;
}

std::string gVOutMaxKeyDown(std::int16_t KeyCode, std::int16_t Shift, const std::string& Text,
                            ErrorFlag& bError)
{
    std::string text = Text;
    rt::Trap trap(kModule, "gVOutMaxKeyDown", bError);
    trap.step([&] { text = gsKeyDown(KeyCode, Shift, Text, kVOutMaxLimit, 0, kVOutResolution, bError); });
    return text;
}

std::string gVOut2KeyDown(std::int16_t KeyCode, std::int16_t Shift, const std::string& Text,
                          const std::string& sVOutMax, ErrorFlag& bError)
{
    std::string text = Text;
    rt::Trap trap(kModule, "gVOut2KeyDown", bError);
    trap.step([&] {
        text = gsKeyDown(KeyCode, Shift, Text, mfVolts(sVOutMax), 0, kVOutResolution, bError);
    });
    return text;
}

Bool16 gbVOutMaxValidate(Bool16 bZeroRefused, const std::string& Title, ui::Control& TextBox,
                         ErrorFlag& bError)
{
    Bool16 inError = kFalse;
    rt::Trap trap(kModule, "gbVOutMaxValidate", bError);
    trap.step([&] {
        inError = gbCtrlTxtError(kVOutMaxLimit, 0, kVOutResolution, bZeroRefused, "", Title,
                                 TextBox, bError);
    });
    return inError;
}

Bool16 gbVOut2Validate(const std::string& sVOutMax, const std::string& Title,
                       ui::Control& TextBox, ErrorFlag& bError)
{
    Bool16 inError = kFalse;
    rt::Trap trap(kModule, "gbVOut2Validate", bError);
    trap.step([&] {
        inError = gbCtrlTxtError(mfVolts(sVOutMax), 0, kVOutResolution, kFalse, "", Title,
                                 TextBox, bError);
    });
    return inError;
}
