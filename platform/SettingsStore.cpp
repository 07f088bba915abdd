#include "platform/SettingsStore.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <map>
#include <set>
#include <system_error>

#include <QSaveFile>
#include <QStandardPaths>

#include "base/RuntimeError.h"
#include "platform/IniText.h"

namespace host {

namespace {

// The whole file; "" when there is none yet. Any other failure to read it is
// raised as a file error.
std::string readFile(const std::string& path)
{
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        if (errno == ENOENT || errno == ENOTDIR) return {};
        rt::raiseFileError(errno);
    }
    std::string text;
    char chunk[4096];
    ssize_t got = 0;
    while ((got = ::read(fd, chunk, sizeof chunk)) > 0) text.append(chunk, static_cast<std::size_t>(got));
    const int readError = errno;
    ::close(fd);
    if (got < 0) rt::raiseFileError(readError);
    return text;
}

// Replaces the file whole: the text goes to a temporary file in the same
// folder, which is renamed over the old one only when every byte was
// written. Unbuffered, so that a short write (a full disk) is seen here.
void replaceFile(const std::string& path, const std::string& text)
{
    std::error_code folderError;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), folderError);
    if (folderError) rt::raiseFileError(folderError.value());

    QSaveFile file(QString::fromStdString(path));
    errno = 0;
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) rt::raiseFileError(errno != 0 ? errno : EACCES);
    errno = 0;
    if (file.write(text.data(), static_cast<qint64>(text.size())) != static_cast<qint64>(text.size())) {
        const int writeError = errno != 0 ? errno : EIO;
        file.cancelWriting();
        rt::raiseFileError(writeError);
    }
    errno = 0;
    if (!file.commit()) rt::raiseFileError(errno != 0 ? errno : EIO);
}

class FileBatch : public SettingsBatch {
public:
    FileBatch(std::string path, std::string section)
        : path_(std::move(path)), section_(std::move(section)), values_(ini::readSection(readFile(path_), section_))
    {
    }

    std::string get(const std::string& key, const std::string& defaultValue) override
    {
        const auto found = values_.find(key);
        return found != values_.end() ? found->second : defaultValue;
    }

    void save(const std::string& key, const std::string& value) override
    {
        values_[key] = value;
        unwritten_.insert(key);
    }

    void commit() override
    {
        if (unwritten_.empty()) return;
        std::map<std::string, std::string> changes;
        for (const std::string& key : unwritten_) changes[key] = values_[key];
        // Merged into the file as it is now: what others wrote since this
        // batch opened stays.
        replaceFile(path_, ini::withValues(readFile(path_), section_, changes));
        unwritten_.clear();
    }

private:
    std::string path_;
    std::string section_;
    std::map<std::string, std::string> values_;
    std::set<std::string> unwritten_;
};

}  // namespace

SettingsStore::SettingsStore()
    : folder_(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation).toStdString())
{
}

SettingsStore::SettingsStore(std::string folder) : folder_(std::move(folder)) {}

std::string SettingsStore::filePath(const std::string& appKey) const
{
    return folder_ + "/" + appKey + "/Wavelark.conf";
}

std::unique_ptr<SettingsBatch> SettingsStore::open(const std::string& appKey, const std::string& section) const
{
    return std::make_unique<FileBatch>(filePath(appKey), section);
}

}  // namespace host
