#pragma once
// File-system faults that behave the same whoever runs the tests, root
// included: while a NoFileOverride lives, the calling thread cannot pass
// over file permissions (so a read-only folder refuses it too), and while a
// FileSizeLimit lives, no file of the process can grow past the limit (the
// write fails with EFBIG instead of raising SIGXFSZ), which stands in for
// a full disk.
#include <sys/resource.h>

#include <csignal>
#include <cstdint>
#include <string>

namespace testing_support {

class NoFileOverride {
public:
    NoFileOverride();
    ~NoFileOverride();
    NoFileOverride(const NoFileOverride&) = delete;
    NoFileOverride& operator=(const NoFileOverride&) = delete;

private:
    std::uint32_t effectiveBefore_ = 0;
};

class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes);
    ~FileSizeLimit();
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit before_{};
    void (*handlerBefore_)(int) = SIG_DFL;
};

// The whole content of a file ("" when it cannot be read).
std::string fileContent(const std::string& path);

}  // namespace testing_support
