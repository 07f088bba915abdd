// WAV export: what is written reads back sample for sample at its rate, and
// every way the write can fail leaves the folder as it was, with a reason the
// user can act on.
#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "analysis/modWavExport.h"
#include "tests/support/TestEnvironment.h"

namespace {

namespace fs = std::filesystem;

// Every 16-bit value from -32768 to 32767 once, then a short ramp.
rt::SampleArray everyValue()
{
    rt::SampleArray samples(1, 65536 + 100);
    for (std::int32_t i = 1; i <= samples.ubound(); ++i)
        samples(i) = static_cast<std::int16_t>(i <= 65536 ? i - 32769 : (i - 65536) * 300);
    return samples;
}

struct ReadBack {
    SF_INFO info{};
    std::vector<std::int16_t> samples;
};

ReadBack readBack(const fs::path& path)
{
    ReadBack file;
    SNDFILE* sound = sf_open(path.c_str(), SFM_READ, &file.info);
    if (sound == nullptr) {
        ADD_FAILURE() << "libsndfile cannot read " << path << ": " << sf_strerror(nullptr);
        return file;
    }
    file.samples.resize(static_cast<std::size_t>(file.info.frames));
    EXPECT_EQ(sf_read_short(sound, file.samples.data(), file.info.frames), file.info.frames);
    sf_close(sound);
    return file;
}

std::string contentsOf(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::set<std::string> namesIn(const fs::path& folder)
{
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename());
    return names;
}

std::string exportTo(const fs::path& path, const rt::SampleArray& samples, std::int32_t rate)
{
    ErrorFlag error = kFalse;
    const std::string reason = gsWavExport(path.string(), samples, rate, error);
    EXPECT_FALSE(error);
    return reason;
}

// Runs the export in a child process that first applies `restrict` (which
// may drop privileges or limit file sizes: neither can be undone in this
// process) and returns the reason the child got.
std::string exportInChild(const std::function<void()>& restrict, const fs::path& path,
                          const rt::SampleArray& samples)
{
    int pipeEnds[2];
    if (::pipe(pipeEnds) != 0) return "no pipe";
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(pipeEnds[0]);
        restrict();
        ErrorFlag error = kFalse;
        const std::string reason = gsWavExport(path.string(), samples, 44100, error);
        const ssize_t ignored = ::write(pipeEnds[1], reason.data(), reason.size());
        (void)ignored;
        ::_exit(error ? 2 : 0);
    }
    ::close(pipeEnds[1]);
    std::string reason;
    char buffer[512];
    for (ssize_t got; (got = ::read(pipeEnds[0], buffer, sizeof buffer)) > 0;) reason.append(buffer, got);
    ::close(pipeEnds[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the child's export trapped";
    return reason;
}

// Write permission means nothing to root: the child becomes nobody first.
void becomeUnprivileged()
{
    if (::geteuid() != 0) return;
    if (::setgid(65534) != 0 || ::setuid(65534) != 0) ::_exit(3);
}

TEST(WavExport, ReadsBackSampleForSampleAtItsRate)
{
    const fs::path folder = testing_support::makeTempFolder("wav");
    const rt::SampleArray samples = everyValue();
    for (std::int32_t rate : {44100, 96000, 8000}) {
        SCOPED_TRACE(rate);
        const fs::path path = folder / "signal.wav";
        ASSERT_EQ(exportTo(path, samples, rate), "");
        const ReadBack file = readBack(path);
        EXPECT_EQ(file.info.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
        EXPECT_EQ(file.info.channels, 1);
        EXPECT_EQ(file.info.samplerate, rate);
        EXPECT_EQ(file.samples, samples.items());
        // Replaced in place, no temporary file left beside it.
        EXPECT_EQ(namesIn(folder), std::set<std::string>{"signal.wav"});
    }
    // A new file gets the usual permissions; a replaced one keeps its own.
    const mode_t mask = ::umask(022);
    ASSERT_EQ(exportTo(folder / "new.wav", samples, 44100), "");
    fs::permissions(folder / "signal.wav", fs::perms::owner_read | fs::perms::owner_write |
                                               fs::perms::group_read);
    ASSERT_EQ(exportTo(folder / "signal.wav", samples, 44100), "");
    ::umask(mask);
    EXPECT_EQ(fs::status(folder / "new.wav").permissions(),
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read |
                  fs::perms::others_read);
    EXPECT_EQ(fs::status(folder / "signal.wav").permissions(),
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);

    const rt::SampleArray one(1, 1);
    ASSERT_EQ(exportTo(folder / "one.wav", one, 48000), "");
    EXPECT_EQ(readBack(folder / "one.wav").samples, std::vector<std::int16_t>{0});
}

TEST(WavExport, FailedWriteLeavesTheFolderAsItWasAndSaysWhy)
{
    const fs::path home = std::getenv("HOME");
    fs::permissions(home, fs::perms::owner_all | fs::perms::others_exec | fs::perms::group_exec);
    const fs::path folder = testing_support::makeTempFolder("wav-fail");
    fs::permissions(folder, fs::perms::owner_all | fs::perms::others_exec | fs::perms::group_exec);
    const fs::path kept = folder / "kept.wav";
    std::ofstream(kept) << "the earlier export";
    fs::permissions(kept, fs::perms::all);
    const rt::SampleArray samples = everyValue();

    struct Failure {
        std::string name;
        fs::path target;
        std::function<void()> restrict;
        std::string expected;  // part of the reason
    };
    const std::vector<Failure> failures = {
        {"read-only folder", kept,
         [&] {
             fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec |
                                         fs::perms::others_read | fs::perms::others_exec);
             becomeUnprivileged();
         },
         "you may not write in the folder \"" + folder.string() + "\""},
        {"file too large midway", kept,
         [] {
             std::signal(SIGXFSZ, SIG_IGN);
             const rlimit limit{4096, 4096};
             ::setrlimit(RLIMIT_FSIZE, &limit);
         },
         "too large"},
        {"missing folder", folder / "gone" / "x.wav", [] {}, "does not exist"},
        {"a folder as the file", folder, [] {}, "is a folder"},
    };
    for (const Failure& f : failures) {
        SCOPED_TRACE(f.name);
        const std::string reason = exportInChild(f.restrict, f.target, samples);
        fs::permissions(folder, fs::perms::owner_all | fs::perms::others_exec);
        EXPECT_NE(reason.find(f.expected), std::string::npos) << reason;
        EXPECT_EQ(reason.find('\"' + f.target.string() + "\" was not written"), 0u) << reason;
        EXPECT_EQ(namesIn(folder), std::set<std::string>{"kept.wav"});
        EXPECT_EQ(contentsOf(kept), "the earlier export");
    }
}

TEST(WavExport, RefusesBadInputWithoutTouchingAnything)
{
    const fs::path folder = testing_support::makeTempFolder("wav-refused");
    const rt::SampleArray samples = everyValue();
    EXPECT_EQ(exportTo(folder / "empty.wav", rt::SampleArray(), 44100),
              "There is no signal to export.");
    EXPECT_NE(exportTo("", samples, 44100), "");
    EXPECT_NE(exportTo(folder / "", samples, 44100), "");
    EXPECT_NE(exportTo(folder / "rate.wav", samples, 0), "");
    EXPECT_TRUE(namesIn(folder).empty());
}

}  // namespace
