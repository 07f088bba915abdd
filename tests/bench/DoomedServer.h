#pragma once
// For the bench tests: a bounded poll, and a second private sound server of
// a test's own, which the test may kill (the shared one of scripts/test
// stays up), stop or resume. Point PULSE_SERVER at address() to play
// through it.
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
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
    ~DoomedServer() { kill(); }

    // Waits until the server listens; false when it did not start.
    bool ready()
    {
        if (pid_ == 0) return false;
        return waitFor([&] { return std::filesystem::exists(socket_); }, 10000);
    }
    std::string address() const { return "unix:" + socket_; }

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
};

}  // namespace testing_support
