#include "analysis/modWavExport.h"

#include <fcntl.h>
#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <vector>

#include "base/RuntimeError.h"
#include "base/Trap.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kModule = "modWavExport";
// Tries at a temporary name before giving up (another export may hold one).
constexpr int kTemporaryNameTries = 100;

// ---- the WAV image, made by libsndfile in memory --------------------------
// The file itself is written by our own code below, so that every failure
// keeps the system's reason for it.

struct MemoryFile {
    std::vector<char> bytes;
    sf_count_t position = 0;
};

MemoryFile& memoryOf(void* user) { return *static_cast<MemoryFile*>(user); }

sf_count_t memoryLength(void* user) { return static_cast<sf_count_t>(memoryOf(user).bytes.size()); }

sf_count_t memorySeek(sf_count_t offset, int whence, void* user)
{
    MemoryFile& file = memoryOf(user);
    const sf_count_t base = whence == SEEK_SET   ? 0
                            : whence == SEEK_CUR ? file.position
                                                 : memoryLength(user);
    file.position = std::max<sf_count_t>(0, base + offset);
    return file.position;
}

sf_count_t memoryRead(void* destination, sf_count_t count, void* user)
{
    MemoryFile& file = memoryOf(user);
    const sf_count_t available = std::max<sf_count_t>(0, memoryLength(user) - file.position);
    const sf_count_t taken = std::min(count, available);
    std::memcpy(destination, file.bytes.data() + file.position, static_cast<std::size_t>(taken));
    file.position += taken;
    return taken;
}

sf_count_t memoryWrite(const void* source, sf_count_t count, void* user)
{
    MemoryFile& file = memoryOf(user);
    const auto end = static_cast<std::size_t>(file.position + count);
    if (end > file.bytes.size()) file.bytes.resize(end);
    std::memcpy(file.bytes.data() + file.position, source, static_cast<std::size_t>(count));
    file.position += count;
    return count;
}

sf_count_t memoryTell(void* user) { return memoryOf(user).position; }

std::vector<char> wavImage(const std::vector<std::int16_t>& samples, std::int32_t sampleRate)
{
    MemoryFile file;
    SF_VIRTUAL_IO io{&memoryLength, &memorySeek, &memoryRead, &memoryWrite, &memoryTell};
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* sound = sf_open_virtual(&io, SFM_WRITE, &info, &file);
    if (sound == nullptr)
        rt::raise(rt::kErrDeviceIO, std::string("WAV writer: ") + sf_strerror(nullptr));
    const auto count = static_cast<sf_count_t>(samples.size());
    const sf_count_t written = sf_write_short(sound, samples.data(), count);
    const std::string failure = written == count ? "" : sf_strerror(sound);
    const int closed = sf_close(sound);
    if (!failure.empty() || closed != 0)
        rt::raise(rt::kErrDeviceIO,
                  "WAV writer: " + (failure.empty() ? sf_error_number(closed) : failure));
    return std::move(file.bytes);
}

// ---- the file -------------------------------------------------------------

std::string quoted(const fs::path& path)
{
    std::string text(1, '"');
    text += path.string();
    text += '"';
    return text;
}

fs::path folderOf(const fs::path& target)
{
    return target.has_parent_path() ? target.parent_path() : fs::path(".");
}

// What went wrong, from the system's error number, and what to do about it.
std::string causeOf(int error, const fs::path& target)
{
    const std::string folder = quoted(folderOf(target));
    switch (error) {
    case EACCES:
    case EPERM: return "you may not write in the folder " + folder + ". Choose another folder.";
    case EROFS: return "the folder " + folder + " is on a read-only disk. Choose another folder.";
    case ENOSPC:
    case EDQUOT:
        return "the disk holding " + folder + " is full. Free some space or choose another folder.";
    case EFBIG:
        return "the file is too large for the disk holding " + folder + ". Choose another folder.";
    case ENOENT:
    case ENOTDIR: return "the folder " + folder + " does not exist. Choose an existing folder.";
    case ENAMETOOLONG: return "the name is too long. Choose a shorter name.";
    case EISDIR: return "that is a folder. Choose a file name.";
    default: return std::string(std::strerror(error)) + ". Choose another folder or try again.";
    }
}

std::string notWritten(const fs::path& target, const std::string& cause)
{
    return quoted(target) + " was not written: " + cause;
}

// A file being written under a temporary name beside its target; removed
// unless it was renamed into place.
class TemporaryFile {
public:
    explicit TemporaryFile(const fs::path& target)
    {
        std::string stem(1, '.');
        stem += target.filename().string();
        stem += ".part-";
        stem += std::to_string(::getpid());
        stem += '-';
        for (int attempt = 0; attempt < kTemporaryNameTries && descriptor_ < 0; ++attempt) {
            path_ = folderOf(target) / (stem + std::to_string(attempt));
            // 0666 less the user's umask: the permissions any new file gets.
            descriptor_ = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
            if (descriptor_ < 0 && errno != EEXIST) break;
        }
        if (descriptor_ < 0) error_ = errno;
        created_ = descriptor_ >= 0;
    }
    ~TemporaryFile()
    {
        if (descriptor_ >= 0) ::close(descriptor_);
        if (created_ && !placed_) ::unlink(path_.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    // The system's error number of the first failure; 0 while all went well.
    int error() const { return error_; }

    void write(const std::vector<char>& bytes)
    {
        std::size_t done = 0;
        while (error_ == 0 && done < bytes.size()) {
            const ssize_t wrote = ::write(descriptor_, bytes.data() + done, bytes.size() - done);
            if (wrote < 0 && errno != EINTR) error_ = errno;
            if (wrote > 0) done += static_cast<std::size_t>(wrote);
        }
    }

    // Takes the mode of the file it replaces.
    void keepModeOf(const fs::path& target)
    {
        struct stat existing {};
        if (error_ == 0 && ::stat(target.c_str(), &existing) == 0 &&
            ::fchmod(descriptor_, existing.st_mode & 07777) != 0)
            error_ = errno;
    }

    // Makes the data durable, then renames the file onto the target.
    void place(const fs::path& target)
    {
        if (error_ == 0 && ::fsync(descriptor_) != 0) error_ = errno;
        if (::close(descriptor_) != 0 && error_ == 0) error_ = errno;
        descriptor_ = -1;
        if (error_ == 0 && ::rename(path_.c_str(), target.c_str()) != 0) error_ = errno;
        placed_ = error_ == 0;
    }

private:
    fs::path path_;
    int descriptor_ = -1;
    int error_ = 0;
    bool created_ = false;
    bool placed_ = false;
};

// "" when the image is now the file at target, else why not.
std::string writeFile(const fs::path& target, const std::vector<char>& image)
{
    std::error_code ignored;
    if (fs::is_directory(target, ignored)) return notWritten(target, causeOf(EISDIR, target));
    TemporaryFile file(target);
    file.write(image);
    file.keepModeOf(target);
    file.place(target);
    return file.error() == 0 ? "" : notWritten(target, causeOf(file.error(), target));
}

// Why the input cannot be exported; "" when it can.
std::string refusalOf(const std::string& path, const rt::SampleArray& samples,
                      std::int32_t sampleRate)
{
    if (path.empty() || fs::path(path).filename().empty())
        return "No file name was given. Choose a file name to export to.";
    if (samples.empty()) return "There is no signal to export.";
    if (sampleRate < 1)
        return "The sample rate " + std::to_string(sampleRate) + " cannot be written to a WAV file.";
    return "";
}

}  // namespace

std::string gsWavExport(const std::string& sPath, const rt::SampleArray& anSamples,
                        std::int32_t lSampleRate, ErrorFlag& bError)
{
    std::string reason;
    std::vector<char> image;
    bool written = false;
    rt::Trap trap(kModule, "gsWavExport", bError);
    trap.step([&] {
        reason = refusalOf(sPath, anSamples, lSampleRate);
        if (!reason.empty()) trap.leave();
    });
    trap.step([&] { image = wavImage(anSamples.items(), lSampleRate); });
    trap.step([&] {
        if (image.empty()) return;
        reason = writeFile(sPath, image);
        written = reason.empty();
    });
    if (!written && reason.empty())
        reason = notWritten(sPath, "an unexpected error occurred (" + rt::currentError().description +
                                       "). Try again.");
    return reason;
}
