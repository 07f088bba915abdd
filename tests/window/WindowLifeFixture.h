#pragma once
// The main window on the virtual card and the scripted host, with its
// settings in a real file: store values, start the window, read back what
// it stored.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <memory>
#include <string>

#include <QApplication>
#include <QTest>

#include "controls/PictureBox.h"
#include "controls/TextBox.h"
#include "entry/modGetLocaleInfo.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/VirtualCardSession.h"
#include "window/frmWavelark.h"

class WindowLife : public ::testing::Test {
protected:
    void store(const std::map<std::string, std::string>& values)
    {
        auto batch = host.openSettings(kSettingsAppKey, kSettingsSection);
        for (const auto& [key, value] : values) batch->save(key, value);
        batch->commit();
    }

    std::string stored(const std::string& key)
    {
        return host.getSetting(kSettingsAppKey, kSettingsSection, key, "<none>");
    }

    void writeFile(const std::string& content)
    {
        std::ofstream(host.settingsFile(), std::ios::binary | std::ios::trunc) << content;
    }

    void start()
    {
        window = std::make_unique<frmWavelark>();
        window->Form_Load();
    }

    void showWindow()
    {
        window->show();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        QApplication::processEvents();
    }

    // How many columns of the plot hold a red (made, silent) trace.
    int redColumns() const
    {
        const QImage& image = window->picPolarity->image();
        int columns = 0;
        for (int x = 0; x < image.width(); ++x) {
            for (int y = 0; y < image.height(); ++y) {
                if (image.pixelColor(x, y) == QColor(Qt::red)) {
                    ++columns;
                    break;
                }
            }
        }
        return columns;
    }

    static std::string text(ui::TextBox* box) { return box->control().text(); }
    static std::string text(ui::MultiLineTextBox* box) { return box->control().text(); }

    testing_support::ScriptedHost host;
    testing_support::VirtualCardSession card{host};
    std::unique_ptr<frmWavelark> window;
};

