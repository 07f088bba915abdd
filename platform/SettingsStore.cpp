#include "platform/SettingsStore.h"

#include <QSettings>
#include <QStandardPaths>

namespace host {

namespace {

QString groupKey(const std::string& section, const std::string& key)
{
    return QString::fromStdString(section) + '/' + QString::fromStdString(key);
}

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

std::string SettingsStore::get(const std::string& appKey, const std::string& section,
                               const std::string& key, const std::string& defaultValue) const
{
    QSettings file(QString::fromStdString(filePath(appKey)), QSettings::IniFormat);
    const QVariant value = file.value(groupKey(section, key));
    return value.isValid() ? value.toString().toStdString() : defaultValue;
}

void SettingsStore::save(const std::string& appKey, const std::string& section,
                         const std::string& key, const std::string& value)
{
    QSettings file(QString::fromStdString(filePath(appKey)), QSettings::IniFormat);
    file.setValue(groupKey(section, key), QString::fromStdString(value));
    file.sync();
}

}  // namespace host
