// The window under remote control: a TCP client on the loopback interface
// sends commands to the real window on the virtual card, and what the card
// plays, what the window shows and what comes back are checked.
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QNetworkInterface>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QThread>

#include "base/Trap.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "engine/modWaveInOut.h"
#include "entry/modGetLocaleInfo.h"
#include "entry/modInputNumber.h"
#include "platform/loopback/VirtualCardTesting.h"
#include "services/modErrorHandler.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/SignalMeasure.h"
#include "tests/support/VirtualCardSession.h"
#include "window/frmWavelark.h"

namespace {

constexpr double kRate = 44100;  // the virtual card's output rate

// Runs the event loop until done() or the time is up (real time: the card's
// clock is simulated and stands still here).
bool pumpUntil(const std::function<bool()>& done, int ms = 20000)
{
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.elapsed() > ms) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::usleep(200);
    }
    return true;
}

// A port nobody listens on just now.
std::uint16_t freePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

class Client {
public:
    bool connectTo(std::uint16_t port, const QHostAddress& address = QHostAddress::LocalHost,
                   int ms = 5000)
    {
        socket.connectToHost(address, port);
        return pumpUntil([&] { return socket.state() == QAbstractSocket::ConnectedState; }, ms);
    }
    void send(const QByteArray& bytes)
    {
        socket.write(bytes);
        pumpUntil([&] { return socket.bytesToWrite() == 0; });
    }
    std::optional<std::string> reply(int ms = 20000)
    {
        if (!pumpUntil([&] { return socket.canReadLine(); }, ms)) return std::nullopt;
        return socket.readLine().trimmed().toStdString();
    }
    std::string ask(const std::string& line)
    {
        send(QByteArray::fromStdString(line + "\n"));
        return reply().value_or("<no reply>");
    }

    QTcpSocket socket;
};

class RemoteWindow : public ::testing::Test {
protected:
    void SetUp() override
    {
        gInstallErrorHandler();
        port = freePort();
        auto batch = host.openSettings(kSettingsAppKey, kSettingsSection);
        batch->save("txtFrequency1", "1000");
        batch->save("txtBurstPeriod", "100");
        batch->save("RemotePort", std::to_string(port));
        batch->save("RemoteControl", "True");
        batch->commit();
        window.Form_Load();
        window.resize(900, 600);
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
        ASSERT_TRUE(window.remoteOn()) << boxTexts();
        ASSERT_TRUE(client.connectTo(port));
        mm::loopback::startTap();
    }
    void TearDown() override
    {
        ErrorFlag error = kFalse;
        gWaveOutClose(kTrue, error);
        gWaveInClose(error);
        gSetInputNumberDialog({});
        rt::setErrorReporter(nullptr);
    }

    // The frequency of the last 100 ms the card played.
    double playedFrequency()
    {
        const auto heard = testing_support::VirtualCardSession::takePlayed();
        const std::size_t tail = std::min<std::size_t>(heard.size(), 4410);
        return testing_support::measureFrequency(heard.data() + heard.size() - tail, tail, kRate);
    }
    QString remoteStatus() const { return window.findChild<QLabel*>("lblRemote")->text(); }

    std::string boxTexts() const { return host.boxTexts(); }

    testing_support::ScriptedHost host;
    testing_support::VirtualCardSession card{host};
    frmWavelark window;
    std::uint16_t port = 0;
    Client client;
};

// ---- Commands through the window's controls ------------------------------------------

TEST_F(RemoteWindow, ASquareOfTwoKilohertzIsPlayedAndMeasuredOnTheCard)
{
    EXPECT_EQ(client.ask("*IDN?"), "Marlo,Wavelark,0,1.0.0");
    EXPECT_EQ(client.ask("FUNC SQU;:FREQ 2 kHz;:OUTP ON;*OPC?"), "1");
    EXPECT_TRUE(window.optMarkSpace->value());
    EXPECT_EQ(window.txtPercent->text(), "50");
    EXPECT_EQ(window.txtFrequency1->text(), "2000.0") << "shown as the field shows it";
    EXPECT_EQ(window.chkMute->value(), 0);
    EXPECT_EQ(client.ask("FUNC?;FREQ?;OUTP?"), "SQU;2000;1");

    const double measured = std::stod(client.ask("MEAS:FREQ?"));
    EXPECT_NEAR(measured, 2000, 0.5);
    EXPECT_NEAR(playedFrequency(), 2000, 1);
    // A square is rich in odd harmonics, a sine is not.
    EXPECT_GT(std::stod(client.ask("MEAS:THDN?")), -15);
    EXPECT_EQ(client.ask("FUNC SIN;*OPC?"), "1");
    EXPECT_LT(std::stod(client.ask("MEAS:THDN?")), -60);
    EXPECT_EQ(client.ask("SYST:ERR?"), "0,\"No error\"");
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
    EXPECT_EQ(remoteStatus(), QString("Remote: port %1, 1 client").arg(port));
}

TEST_F(RemoteWindow, ARefusedValueIsAnErrorWithTheFieldsRangeAndChangesNothing)
{
    EXPECT_EQ(client.ask("OUTP ON;*OPC?"), "1");
    EXPECT_EQ(client.ask("FREQ 50000;*OPC?"), "1");
    const std::string error = client.ask("SYST:ERR?");
    EXPECT_EQ(error.rfind("-222,\"Data out of range;In the range ", 0), 0U) << error;
    EXPECT_NE(error.find("(Hz) please!"), std::string::npos) << error;
    EXPECT_EQ(client.ask("FREQ?"), "1000");
    host.sleep(200);
    EXPECT_NEAR(playedFrequency(), 1000, 1);

    EXPECT_EQ(client.ask("FUNC TRI;:FUNC:PERC 150;*OPC?"), "1");
    EXPECT_EQ(client.ask("SYST:ERR?"), "-222,\"Data out of range;In the range  0 to  100 (%) please!\"");
    EXPECT_EQ(client.ask("FUNC:PERC?"), "50");
    // A disabled field refuses every value.
    const QString frequency2 = window.txtFrequency2->text();
    EXPECT_EQ(client.ask("FREQ2 500;*OPC?"), "1");
    EXPECT_EQ(client.ask("SYST:ERR?").substr(0, 5), "-221,") << "the sweep is off";
    EXPECT_EQ(window.txtFrequency2->text(), frequency2);
    EXPECT_EQ(client.ask("VOLT:VRMS 1;*OPC?"), "1");
    EXPECT_EQ(client.ask("SYST:ERR?").substr(0, 5), "-221,") << "not calibrated";
    EXPECT_EQ(client.ask("SYST:ERR?"), "0,\"No error\"");
    EXPECT_TRUE(host.boxes.empty()) << "no box pops up for a remote command:\n" << boxTexts();
}

TEST_F(RemoteWindow, AMeasuredBurstAnswersItsVerdictAndLeavesMeasureAsItWas)
{
    ASSERT_EQ(window.chkBurstMeasure->value(), 0);
    const std::string verdict = client.ask("BURS:NCYC 4;FIRE:MEAS?");
    EXPECT_EQ(verdict.rfind("\"Polarity: normal\",", 0), 0U) << verdict;
    EXPECT_NE(verdict.find(",NORM"), std::string::npos) << verdict;
    EXPECT_EQ(client.ask("BURS:NCYC?"), "4");
    EXPECT_EQ(window.chkBurstMeasure->value(), 0);
    EXPECT_TRUE(window.isEnabled());
    // Muted, the figures are those of that recording.
    EXPECT_NEAR(std::stod(client.ask("MEAS:FREQ?")), 1000, 50);
    EXPECT_EQ(client.ask("SYST:ERR?"), "0,\"No error\"");

    // While bursts repeat, none is fired alone.
    EXPECT_EQ(client.ask("BURS:AUTO ON;FIRE;*OPC?"), "1");
    EXPECT_EQ(client.ask("SYST:ERR?").substr(0, 5), "-221,");
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
}

TEST_F(RemoteWindow, ResetBringsBackTheBuiltInValues)
{
    EXPECT_EQ(client.ask("FUNC SAW;:FREQ 3000;:OUTP ON;:SWE ON;:SWE:TIME 2;*OPC?"), "1");
    EXPECT_EQ(client.ask("*RST;*OPC?"), "1");
    EXPECT_EQ(client.ask("FUNC?;FREQ?;OUTP?;:SWE?;:SWE:TIME?"), "SIN;1000;0;0;5");
    EXPECT_EQ(client.ask("SYST:ERR?"), "0,\"No error\"");
}

// ---- What a client cannot break ----------------------------------------------------------

TEST_F(RemoteWindow, ASecondClientWaitsForTheFirstWhoseSilenceHoldsNothingElse)
{
    Client second;
    ASSERT_TRUE(second.connectTo(port));
    second.send("*IDN?\n");
    EXPECT_FALSE(second.reply(300)) << "the first client is still served";
    // The window still works for the user meanwhile.
    window.txtFrequency1->control().setText("1500");
    EXPECT_EQ(client.ask("FREQ?"), "1500");

    client.socket.disconnectFromHost();
    EXPECT_EQ(second.reply().value_or("<no reply>"), "Marlo,Wavelark,0,1.0.0");
    EXPECT_TRUE(pumpUntil([&] { return remoteStatus() == QString("Remote: port %1, 1 client").arg(port); }));
    second.socket.disconnectFromHost();
    EXPECT_TRUE(pumpUntil([&] { return remoteStatus() == QString("Remote: port %1, 0 clients").arg(port); }));
}

TEST_F(RemoteWindow, ALongLineIsRefusedAndTheRestOfItThrownAway)
{
    // Just over the limit, and a megabyte without a newline.
    client.send(QByteArray("FREQ 2000") + QByteArray(5000, ' ') + "\n");
    client.send(QByteArray(1 << 20, 'A'));
    client.send("\nFREQ?\n");
    EXPECT_EQ(client.reply().value_or("<no reply>"), "1000");
    EXPECT_EQ(client.ask("SYST:ERR?").substr(0, 5), "-363,");
    EXPECT_EQ(client.ask("SYST:ERR?").substr(0, 5), "-363,");
    EXPECT_EQ(client.ask("SYST:ERR?"), "0,\"No error\"");
    // A line of exactly the limit is still read.
    const std::string longest = "FREQ 1200" + std::string(4096 - 9, ' ');
    client.send(QByteArray::fromStdString(longest + "\n"));
    EXPECT_EQ(client.ask("FREQ?"), "1200");
}

TEST_F(RemoteWindow, AClientLeavingDuringItsCommandLosesOnlyTheReply)
{
    EXPECT_EQ(client.ask("OUTP ON;*OPC?"), "1");
    bool left = false;
    host.sleepListeners.push_back([&](std::uint32_t) {
        if (left) return;
        left = true;
        client.socket.abort();
    });
    client.socket.write("MEAS:FREQ?\n");
    ASSERT_TRUE(pumpUntil([&] { return left; }));
    EXPECT_TRUE(pumpUntil([&] { return remoteStatus() == QString("Remote: port %1, 0 clients").arg(port); }));

    Client next;
    ASSERT_TRUE(next.connectTo(port));
    EXPECT_EQ(next.ask("FREQ 1100;FREQ?"), "1100");
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
}

// ---- Turning it on and off ---------------------------------------------------------------

TEST_F(RemoteWindow, ItListensOnTheLoopbackAddressesOnly)
{
    Client ipv6;
    if (!QNetworkInterface::allAddresses().contains(QHostAddress::LocalHostIPv6))
        GTEST_SKIP() << "no IPv6 loopback here";
    ASSERT_TRUE(ipv6.connectTo(port, QHostAddress::LocalHostIPv6));
    for (const QHostAddress& address : QNetworkInterface::allAddresses()) {
        if (address.isLoopback() || address.isLinkLocal()) continue;
        Client outside;
        EXPECT_FALSE(outside.connectTo(port, address, 1000)) << address.toString().toStdString();
    }
}

TEST_F(RemoteWindow, APortInUseIsToldAndLeavesItOff)
{
    window.mnuFiRemote->trigger();
    EXPECT_FALSE(window.remoteOn());
    EXPECT_FALSE(window.mnuFiRemote->isChecked());
    EXPECT_TRUE(pumpUntil([&] { return client.socket.state() == QAbstractSocket::UnconnectedState; }));

    QTcpServer holder;
    ASSERT_TRUE(holder.listen(QHostAddress::LocalHost, 0));
    gSetInputNumberDialog([&](InputNumber& request) {
        EXPECT_EQ(request.ifValue, port) << "the last port is offered";
        return " " + std::to_string(holder.serverPort());
    });
    window.mnuFiRemote->trigger();
    EXPECT_FALSE(window.remoteOn());
    EXPECT_FALSE(window.mnuFiRemote->isChecked());
    EXPECT_FALSE(window.findChild<QLabel*>("lblRemote")->isVisible());
    ASSERT_EQ(host.boxes.size(), 1U);
    EXPECT_EQ(host.boxes[0].text.rfind("Remote control cannot listen on port " +
                                           std::to_string(holder.serverPort()), 0), 0U)
        << host.boxes[0].text;

    // A free port starts it.
    gSetInputNumberDialog([&](InputNumber&) { return " " + std::to_string(port); });
    window.mnuFiRemote->trigger();
    EXPECT_TRUE(window.remoteOn());
    EXPECT_TRUE(window.mnuFiRemote->isChecked());
    EXPECT_EQ(remoteStatus(), QString("Remote: port %1, 0 clients").arg(port));
}

}  // namespace
