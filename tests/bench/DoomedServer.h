#pragma once
// For the bench tests: a bounded poll, and a second private sound server of
// a test's own, which the test may kill (the shared one of scripts/test
// stays up), stop or resume; playThrough() points the program's sound at
// it.
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/HostServices.h"
#include "tests/support/TestEnvironment.h"

extern char** environ;

namespace testing_support {

// Polls the condition every millisecond (through the host's sleep) until it
// holds or limitMs have passed; false on the limit.
inline bool waitFor(const std::function<bool()>& condition, std::uint32_t limitMs)
{
    const std::uint32_t start = host::tickCount();
    while (!condition()) {
        if (host::tickCount() - start > limitMs) return false;
        host::sleep(1);
    }
    return true;
}

// A second private server, of this test's own, that the test may kill.
class DoomedServer {
public:
    DoomedServer() : folder_(makeTempFolder("doomed-server"))
    {
        const std::string runtime = folder_ + "/runtime";
        std::filesystem::create_directories(runtime);
        std::filesystem::permissions(runtime, std::filesystem::perms::owner_all);
        socket_ = runtime + "/pulse/native";

        std::vector<std::string> environment;
        for (char** variable = environ; *variable != nullptr; ++variable) {
            if (std::strncmp(*variable, "XDG_RUNTIME_DIR=", 16) != 0 &&
                std::strncmp(*variable, "PULSE_SERVER=", 13) != 0) {
                environment.emplace_back(*variable);
            }
        }
        environment.push_back("XDG_RUNTIME_DIR=" + runtime);
        std::vector<std::string> arguments = {
            "pulseaudio", "--daemonize=no", "--exit-idle-time=-1", "--disallow-exit", "-n",
            "--load=module-native-protocol-unix",
            "--load=module-null-sink sink_name=doomed",
            "--log-target=file:" + folder_ + "/server.log"};
        auto pointers = [](std::vector<std::string>& strings) {
            std::vector<char*> list;
            for (auto& s : strings) list.push_back(s.data());
            list.push_back(nullptr);
            return list;
        };
        auto argv = pointers(arguments);
        auto envp = pointers(environment);
        if (posix_spawnp(&pid_, "pulseaudio", nullptr, nullptr, argv.data(), envp.data()) != 0) {
            pid_ = 0;
        }
    }
    ~DoomedServer()
    {
        kill();
        if (!redirected_) return;
        if (previous_) ::setenv("PULSE_SERVER", previous_->c_str(), 1);
        else ::unsetenv("PULSE_SERVER");
    }

    // Waits until the server listens; false when it did not start.
    bool ready()
    {
        if (pid_ == 0) return false;
        return waitFor([&] { return std::filesystem::exists(socket_); }, 10000);
    }
    std::string address() const { return "unix:" + socket_; }

    // Waits until the server listens and points PULSE_SERVER at it; the
    // address before comes back when the server goes. False when it did not
    // start.
    bool playThrough()
    {
        if (!ready()) return false;
        if (!redirected_) {
            if (const char* before = std::getenv("PULSE_SERVER")) previous_ = before;
            redirected_ = true;
        }
        ::setenv("PULSE_SERVER", address().c_str(), 1);
        return true;
    }

    // Holds the server as a hung or suspended one is held, and lets it go.
    void stop() { ::kill(pid_, SIGSTOP); }
    void resume() { ::kill(pid_, SIGCONT); }

    void kill()
    {
        if (pid_ == 0) return;
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        pid_ = 0;
    }

private:
    std::string folder_;
    std::string socket_;
    pid_t pid_ = 0;
    bool redirected_ = false;
    std::optional<std::string> previous_;
};

}  // namespace testing_support
