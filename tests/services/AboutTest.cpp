// The About box as a user meets it: its texts, OK, the System Info button
// with and without a system-information program on the PATH (through the
// program's own host, starting a real process), and the web-site label.
#define QTEST_QPA_MOUSE_HANDLING
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include "BuildInfo.h"
#include "controls/SimpleControls.h"
#include "platform/HostServices.h"
#include "platform/qt/QtHost.h"
#include "services/frmAbout.h"
#include "services/modFormPtr.h"
#include "services/modGeneral.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/TestEnvironment.h"

namespace {

struct ShownBox {
    QString text;
    QString title;
    QMessageBox::Icon icon;
    int buttons;
};

// Runs `action`, answering every message box it shows with its default
// button, and returns what the boxes said.
std::vector<ShownBox> boxesShownBy(const std::function<void()>& action)
{
    std::vector<ShownBox> shown;
    QTimer watcher;
    watcher.setInterval(10);
    QObject::connect(&watcher, &QTimer::timeout, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr) return;
        shown.push_back({box->text(), box->windowTitle(), box->icon(),
                         static_cast<int>(box->buttons().size())});
        box->defaultButton()->click();
    });
    watcher.start();
    action();
    watcher.stop();
    return shown;
}

// The lines of the description label.
QStringList descriptionLines(const frmAbout& form)
{
    return form.lblDescription->text().split('\n');
}

// A PATH of one fresh folder, holding the fake programs asked for; each
// appends its name to `ran` when started. The real PATH comes back after.
class FakePath {
public:
    explicit FakePath(const QStringList& programs)
        : saved_(qgetenv("PATH")),
          folder_(QString::fromStdString(testing_support::makeTempFolder("path"))),
          ran_(folder_ + "/ran")
    {
        for (const QString& name : programs) {
            QFile script(folder_ + "/" + name);
            EXPECT_TRUE(script.open(QIODevice::WriteOnly));
            script.write(QStringLiteral("#!/bin/sh\necho %1 >> '%2'\n").arg(name, ran_).toUtf8());
            script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        }
        qputenv("PATH", folder_.toUtf8());
    }
    ~FakePath() { qputenv("PATH", saved_); }

    // A file of that name that is not a program.
    void addPlainFile(const QString& name)
    {
        QFile file(folder_ + "/" + name);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    }

    // The programs that ran, waiting up to 10 s for the first to have
    // written its name (the shell makes the file before it writes to it).
    QStringList ran() const
    {
        QFile file(ran_);
        for (int i = 0; i < 500 && file.size() == 0; ++i) QTest::qWait(20);
        if (!file.open(QIODevice::ReadOnly)) return {};
        return QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
    }

private:
    QByteArray saved_;
    QString folder_;
    QString ran_;
};

class About : public ::testing::Test {
protected:
    void SetUp() override
    {
        ErrorFlag bError = kFalse;
        gGSetProgNameVersionUser(bError);
        form.Form_Load();
        form.show();
    }

    frmAbout form;
};

TEST_F(About, TheBoxNamesTheProgramItsMakerAndHowToReachThem)
{
    const QString product = buildinfo::kProductName;
    EXPECT_EQ(form.windowTitle(), "About '" + product + "'");
    EXPECT_EQ(form.lblNameVersion->text(), QStringLiteral("%1 v%2.%3.%4")
                                               .arg(product)
                                               .arg(buildinfo::kVersionMajor)
                                               .arg(buildinfo::kVersionMinor)
                                               .arg(buildinfo::kVersionRevision));
    EXPECT_EQ(form.lblCopyright->text(), QStringLiteral("(c) %1").arg(buildinfo::kLegalCopyright));

    const QStringList lines = descriptionLines(form);
    ASSERT_EQ(lines.size(), 5);
    EXPECT_EQ(lines[0], "Marlo");
    EXPECT_TRUE(lines[1].startsWith("Tel: +"));
    EXPECT_TRUE(lines[2].startsWith("Fax: +"));
    EXPECT_TRUE(lines[3].startsWith("EMail: ") && lines[3].contains('@'));
    ASSERT_TRUE(lines[4].startsWith("Web Site: https://"));
    const QString address = lines[4].mid(QString("Web Site: ").size());
    EXPECT_TRUE(form.lblWebSite->text().contains(">" + address + "<"));

    EXPECT_EQ(form.cmdOK->text(), "OK");
    EXPECT_EQ(form.cmdSysInfo->text(), "&System Info...");
}

TEST(AboutBox, ShowsModallyAndOKClosesIt)
{
    ErrorFlag bError = kFalse;
    std::string seen;
    QTimer::singleShot(0, [&] {
        auto* shown = qobject_cast<frmAbout*>(QApplication::activeModalWidget());
        ASSERT_NE(shown, nullptr);
        seen = shown->windowTitle().toStdString();
        EXPECT_EQ(gnFormPtr("frmAbout", bError), 0);
        QTest::mouseClick(shown->cmdOK, Qt::LeftButton);
    });
    gShowAbout(nullptr);
    EXPECT_EQ(seen, "About 'Wavelark'");
    EXPECT_EQ(gnFormPtr("frmAbout", bError), -1);
    EXPECT_FALSE(bError);
}

TEST_F(About, SystemInfoStartsTheFirstInstalledToolOfTheList)
{
    host::QtHost qtHost;
    host::install(&qtHost);
    FakePath path({"kinfocenter", "gnome-system-monitor"});
    path.addPlainFile("hardinfo");  // not executable: not a program

    const auto boxes = boxesShownBy([&] { QTest::mouseClick(form.cmdSysInfo, Qt::LeftButton); });

    EXPECT_TRUE(boxes.empty());
    EXPECT_EQ(path.ran(), QStringList{"kinfocenter"});
    host::install(nullptr);
}

TEST_F(About, WithoutAToolSystemInfoSaysSoInAPlainBox)
{
    host::QtHost qtHost;
    host::install(&qtHost);
    FakePath path({});
    path.addPlainFile("hardinfo2");

    const auto boxes = boxesShownBy([&] { QTest::mouseClick(form.cmdSysInfo, Qt::LeftButton); });

    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, "System Information Is Unavailable");
    EXPECT_EQ(boxes[0].title, "Wavelark");
    EXPECT_EQ(boxes[0].icon, QMessageBox::NoIcon);
    EXPECT_EQ(boxes[0].buttons, 1);
    host::install(nullptr);
}

TEST_F(About, TheWebSiteLabelOpensTheAddressAndSaysWhenItCannot)
{
    testing_support::ScriptedHost host;
    const QString address = descriptionLines(form)[4].mid(QString("Web Site: ").size());

    QTest::mouseClick(form.lblWebSite, Qt::LeftButton);
    EXPECT_TRUE(host.boxes.empty());

    // From the keyboard: Tab onto the link, Enter.
    host.openAddressResult = host::kOpenNoAssociation;
    form.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    form.cmdSysInfo->setFocus();
    QTest::keyClick(form.cmdSysInfo, Qt::Key_Tab);
    ASSERT_EQ(QApplication::focusWidget(), form.lblWebSite);
    QTest::keyClick(form.lblWebSite, Qt::Key_Return);
    EXPECT_TRUE(form.isVisible());  // Enter opened the address; it did not press OK

    const std::vector<std::string> opened(2, address.toStdString());
    EXPECT_EQ(host.openedAddresses, opened);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, "Error 31 has occurred with ShellExecute");
    EXPECT_EQ(host.boxes[0].title, "frmAbout.lblWebSite_Click");
    EXPECT_EQ(host.boxes[0].style, host::kExclamation);
}

}  // namespace
