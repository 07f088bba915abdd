#include "tests/support/FileFaults.h"

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace testing_support {

namespace {

// The capabilities that let a thread pass over file permissions.
constexpr std::uint32_t kOverrides =
    (1u << CAP_DAC_OVERRIDE) | (1u << CAP_DAC_READ_SEARCH) | (1u << CAP_FOWNER);

struct ThreadCapabilities {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2]{};
};

ThreadCapabilities readCapabilities()
{
    ThreadCapabilities caps;
    if (::syscall(SYS_capget, &caps.header, caps.data) != 0) throw std::runtime_error("capget failed");
    return caps;
}

void setEffective(std::uint32_t effective)
{
    ThreadCapabilities caps = readCapabilities();
    caps.data[0].effective = effective;
    if (::syscall(SYS_capset, &caps.header, caps.data) != 0) throw std::runtime_error("capset failed");
}

}  // namespace

NoFileOverride::NoFileOverride() : effectiveBefore_(readCapabilities().data[0].effective)
{
    setEffective(effectiveBefore_ & ~kOverrides);
}

NoFileOverride::~NoFileOverride() { setEffective(effectiveBefore_); }

FileSizeLimit::FileSizeLimit(rlim_t bytes)
{
    handlerBefore_ = std::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limited{bytes, before_.rlim_max};
    if (::setrlimit(RLIMIT_FSIZE, &limited) != 0) throw std::runtime_error("setrlimit failed");
}

FileSizeLimit::~FileSizeLimit()
{
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handlerBefore_);
}

std::string fileContent(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::stringstream content;
    content << file.rdbuf();
    return content.str();
}

}  // namespace testing_support
