// Regional settings: the decimal character, the region stored with the
// settings and the start-up check; and the seam through which the core asks
// for a number.
#include <gtest/gtest.h>

#include <string>

#include "entry/modGetLocaleInfo.h"
#include "entry/modInputNumber.h"
#include "services/modGeneral.h"
#include "tests/support/ScriptedHost.h"

namespace {

const char* const kResetMessage = "Your region setting has changed\r\n\r\nResetting start up defaults";

std::string storedRegion(testing_support::ScriptedHost& host)
{
    return host.getSetting("Marlo", "Wavelark", "UserRegion", "<none>");
}

TEST(Region, FirstRunIsQuietAndTheRegionIsStoredAtExit)
{
    testing_support::ScriptedHost host;
    ErrorFlag bError = kFalse;
    EXPECT_FALSE(gbGetLocaleInfoUserRegionChanged(bError));
    EXPECT_TRUE(host.boxes.empty());
    gGetLocaleInfoSaveUserRegion(bError);
    EXPECT_EQ(storedRegion(host), "44");
    EXPECT_FALSE(gbGetLocaleInfoUserRegionChanged(bError)) << "same region next run";
    EXPECT_TRUE(host.boxes.empty());
    EXPECT_FALSE(bError);
}

TEST(Region, AChangedRegionIsToldOnceAndTheNextRunIsQuiet)
{
    testing_support::ScriptedHost host;
    ErrorFlag titleError = kFalse;
    gGSetProgNameVersionUser(titleError);
    host.saveSetting("Marlo", "Wavelark", "UserRegion", "44");
    host.regionCode = "49";
    ErrorFlag bError = kFalse;
    EXPECT_TRUE(gbGetLocaleInfoUserRegionChanged(bError));
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, kResetMessage);
    EXPECT_EQ(host.boxes[0].style, 48);
    EXPECT_EQ(host.boxes[0].title, gsProgNameVersion);
    EXPECT_EQ(host.boxes[0].title.rfind("Wavelark v", 0), 0u);

    gGetLocaleInfoSaveUserRegion(bError);
    EXPECT_EQ(storedRegion(host), "49");
    EXPECT_FALSE(gbGetLocaleInfoUserRegionChanged(bError));
    EXPECT_EQ(host.boxes.size(), 1u);
}

TEST(Region, AFailingLocaleCallCountsAsAChangeAndStoresNothing)
{
    testing_support::ScriptedHost host;
    host.saveSetting("Marlo", "Wavelark", "UserRegion", "44");
    host.regionCode.reset();
    ErrorFlag bError = kFalse;
    EXPECT_TRUE(gbGetLocaleInfoUserRegionChanged(bError));
    ASSERT_EQ(host.boxes.size(), 2u);
    EXPECT_EQ(host.boxes[0].text, "Error occurred with GetLocaleInfo");
    EXPECT_EQ(host.boxes[0].title, "modGetLocaleInfo.msGetLocaleInfoUser");
    EXPECT_EQ(host.boxes[1].text, kResetMessage);
    EXPECT_FALSE(bError) << "a failing locale call is not an unexpected failure";

    gGetLocaleInfoSaveUserRegion(bError);
    EXPECT_EQ(storedRegion(host), "44");
}

TEST(Region, TheDecimalCharacterIsReadAfreshEachTime)
{
    testing_support::ScriptedHost host;
    ErrorFlag bError = kFalse;
    EXPECT_EQ(gsGetLocaleInfoUserDecimalChar(bError), ".");
    host.decimalChar = ",";
    EXPECT_EQ(gsGetLocaleInfoUserDecimalChar(bError), ",");
    host.decimalChar = std::string(",\0junk", 6);
    EXPECT_EQ(gsGetLocaleInfoUserDecimalChar(bError), ",") << "cut at the terminator";
    host.decimalChar.reset();
    EXPECT_EQ(gsGetLocaleInfoUserDecimalChar(bError), "");
    EXPECT_EQ(host.boxes.size(), 1u);
}

TEST(Region, StartUpKeepsTheCheckResult)
{
    testing_support::ScriptedHost host;
    host.saveSetting("Marlo", "Wavelark", "UserRegion", "33");
    ErrorFlag bError = kFalse;
    gbUserRegionChanged = kFalse;
    gGStartUpSetStuff(bError);
    EXPECT_TRUE(gbUserRegionChanged);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].title, gsProgNameVersion) << "the title is set before the check";

    host.regionCode = "33";
    gGStartUpSetStuff(bError);
    EXPECT_FALSE(gbUserRegionChanged);
    EXPECT_FALSE(bError);
}

TEST(InputNumberSeam, WithoutADialogOrWithAFailingOneTheAnswerIsEmpty)
{
    ErrorFlag bError = kFalse;
    gSetInputNumberDialog(nullptr);
    EXPECT_EQ(gsInputNumber("H", "P", 1, 2, 0, 0.1f, false, true, bError), "");
    EXPECT_FALSE(bError);

    gSetInputNumberDialog([](InputNumber& request) {
        request.obError = true;
        return std::string(" 3");
    });
    EXPECT_EQ(gsInputNumber("H", "", 1, 2, 0, 1, true, false, bError), "");
    EXPECT_TRUE(bError);
    gSetInputNumberDialog(nullptr);
}

}  // namespace
