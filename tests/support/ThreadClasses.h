#pragma once
// The scheduling class of each thread of a process, read from /proc: what
// the tests and the measurement tool check the stream threads' raise by.
#include <sched.h>
#include <sys/types.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace testing_support {

struct ThreadClass {
    std::string name;
    int policy = SCHED_OTHER;  // SCHED_OTHER, SCHED_RR, SCHED_FIFO ...
    int nice = 0;

    bool realtime() const { return policy == SCHED_RR || policy == SCHED_FIFO; }
};

// Every thread of process `pid` (0: this process); empty once it is gone.
inline std::vector<ThreadClass> threadClasses(pid_t pid = 0)
{
    const std::filesystem::path tasks =
        "/proc/" + (pid == 0 ? std::string("self") : std::to_string(pid)) + "/task";
    std::vector<ThreadClass> classes;
    std::error_code error;
    for (const auto& task : std::filesystem::directory_iterator(tasks, error)) {
        ThreadClass thread;
        std::getline(std::ifstream(task.path() / "comm"), thread.name);
        std::string stat;
        std::getline(std::ifstream(task.path() / "stat"), stat);
        // Fields after the name (which may hold blanks) start after ") ":
        // the nice value is field 19, the policy field 41.
        std::istringstream fields(stat.substr(stat.rfind(')') + 2));
        std::string field;
        for (int i = 3; i <= 41 && fields >> field; ++i) {
            if (i == 19) thread.nice = std::stoi(field);
            if (i == 41) thread.policy = std::stoi(field);
        }
        classes.push_back(thread);
    }
    return classes;
}

}  // namespace testing_support
