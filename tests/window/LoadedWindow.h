#pragma once
// The main window loaded on the virtual card in simulated time and shown,
// with the number-entry dialog answered by the test from a queue of texts
// (an empty queue answers as a dialog left without OK).
#include <gtest/gtest.h>

#include <deque>
#include <string>

#include <QApplication>
#include <QTest>

#include "base/Trap.h"
#include "engine/modWaveInOut.h"
#include "entry/modGetLocaleInfo.h"
#include "entry/modInputNumber.h"
#include "services/modErrorHandler.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/VirtualCardSession.h"
#include "window/frmWavelark.h"

class LoadedWindow : public ::testing::Test {
protected:
    void SetUp() override
    {
        gInstallErrorHandler();
        gSetInputNumberDialog([this](InputNumber& request) {
            asked.push_back(request);
            if (answers.empty()) return std::string();
            const std::string answer = answers.front();
            answers.pop_front();
            return answer;
        });
        auto batch = host.openSettings(kSettingsAppKey, kSettingsSection);
        for (const auto& [key, value] : stored) batch->save(key, value);
        batch->commit();
        window.Form_Load();
        window.resize(900, 600);
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        settle();
        ASSERT_TRUE(host.boxes.empty()) << boxTexts();
    }
    void TearDown() override
    {
        gSetInputNumberDialog(nullptr);
        ErrorFlag error = kFalse;
        gWaveOutClose(kTrue, error);
        rt::setErrorReporter(nullptr);
    }

    static void settle()
    {
        for (int i = 0; i < 5; ++i) QCoreApplication::processEvents();
    }

    std::string boxTexts() const { return host.boxTexts(); }

    // Settings the window starts from.
    std::vector<std::pair<std::string, std::string>> stored{
        {"txtFrequency1", "1000"}, {"vsbOutLevel", "8192"}};
    std::deque<std::string> answers;
    std::vector<InputNumber> asked;
    testing_support::ScriptedHost host;
    testing_support::VirtualCardSession card{host};
    frmWavelark window;
};
