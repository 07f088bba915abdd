// The settings store: a batch reads the file once and writes its saves in
// one go; a write that fails (a read-only folder, a full disk) leaves the
// previous file as it was, raises the matching run-time error and keeps the
// saves for a retry.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <QSettings>

#include "base/RuntimeError.h"
#include "platform/SettingsStore.h"
#include "tests/support/FileFaults.h"
#include "tests/support/TestEnvironment.h"

namespace {

using host::SettingsBatch;
using testing_support::fileContent;

class SettingsStoreTest : public ::testing::Test {
protected:
    SettingsStoreTest() : folder(testing_support::makeTempFolder("store")), store(folder) {}

    std::unique_ptr<SettingsBatch> open(const std::string& section = "Wavelark")
    {
        return store.open("Marlo", section);
    }
    // Stores the values through a batch of their own.
    void storeValues(std::initializer_list<std::pair<std::string, std::string>> values)
    {
        auto batch = open();
        for (const auto& [key, value] : values) batch->save(key, value);
        batch->commit();
    }
    // The run-time error a commit raises; 0 when it raises none.
    static rt::RuntimeError commitFailure(SettingsBatch& batch)
    {
        try {
            batch.commit();
        } catch (const rt::RuntimeError& error) {
            return error;
        }
        return rt::RuntimeError(0, "");
    }
    std::string file() const { return store.filePath("Marlo"); }
    std::string appFolder() const { return folder + "/Marlo"; }

    std::string folder;
    host::SettingsStore store;
};

TEST_F(SettingsStoreTest, ValuesComeBackAsStoredAndOtherKeysAndSectionsSurvive)
{
    auto other = open("Other");
    other->save("kept", "yes");
    other->commit();
    storeValues({{"txtFrequency1", "440,5"}, {"txtVOutIdent", "Meter=A; 100% \"true\" µV"}, {"empty", ""}});
    storeValues({{"txtPercent", "37.6"}});

    auto batch = open();
    EXPECT_EQ(batch->get("txtFrequency1", "-"), "440,5") << "a decimal comma is not a list";
    EXPECT_EQ(batch->get("txtVOutIdent", "-"), "Meter=A; 100% \"true\" µV");
    EXPECT_EQ(batch->get("empty", "-"), "");
    EXPECT_EQ(batch->get("txtPercent", "-"), "37.6");
    EXPECT_EQ(batch->get("absent", "default"), "default");
    EXPECT_EQ(open("Other")->get("kept", "-"), "yes");
}

// Values that need escapes, quotes or more than ASCII; the file must read
// the same through Qt's settings class, which wrote the files of earlier
// versions, as through the store.
const std::vector<std::string> kAwkwardValues = {
    "",       " lead",      "trail ",     "440,5",        "x;y",     "k=v",         "say \"hi\"",
    "a\\b", "tab\there", "two\nlines", "\x01\x1f" "7", "@at", "@@two",
    "@Invalid()", "µV at 20 °C", "日本語", "#hash", "[x]",
};

TEST_F(SettingsStoreTest, TheFileReadsTheSameThroughQtsSettingsClassBothWays)
{
    auto batch = open();
    for (std::size_t i = 0; i < kAwkwardValues.size(); ++i) batch->save("key" + std::to_string(i), kAwkwardValues[i]);
    batch->save("odd key/é", "v");
    batch->commit();
    {
        QSettings qt(QString::fromStdString(file()), QSettings::IniFormat);
        for (std::size_t i = 0; i < kAwkwardValues.size(); ++i) {
            EXPECT_EQ(qt.value("Wavelark/key" + QString::number(i)).toString().toStdString(), kAwkwardValues[i])
                << "value " << i;
        }
        EXPECT_EQ(qt.value("Wavelark/odd key/é").toString(), "v");
    }

    const std::string qtFile = folder + "/written-by-qt.conf";
    {
        QSettings qt(QString::fromStdString(qtFile), QSettings::IniFormat);
        for (std::size_t i = 0; i < kAwkwardValues.size(); ++i) {
            qt.setValue("Wavelark/key" + QString::number(i), QString::fromStdString(kAwkwardValues[i]));
        }
        qt.setValue("General/kept", "1");
        qt.setValue("rootKey", "2");
    }
    host::SettingsStore qtStore(folder);
    std::filesystem::create_directories(folder + "/Qt");
    std::filesystem::rename(qtFile, qtStore.filePath("Qt"));
    auto read = qtStore.open("Qt", "Wavelark");
    for (std::size_t i = 0; i < kAwkwardValues.size(); ++i) {
        EXPECT_EQ(read->get("key" + std::to_string(i), "-"), kAwkwardValues[i]) << "value " << i;
    }
    EXPECT_EQ(qtStore.open("Qt", "General")->get("kept", "-"), "1");
    EXPECT_EQ(qtStore.open("Qt", "General")->get("rootKey", "-"), "-") << "[General] holds the keys of no section";
}

TEST_F(SettingsStoreTest, ACommitRewritesOnlyItsOwnKeysLines)
{
    std::filesystem::create_directories(appFolder());
    std::ofstream(file()) << "; written by hand\n[Other]\nx = 1\n\n[Wavelark]\ntxtPercent = \"50\"\nlist = a, b\n\n[Last]\ny=2\n";
    auto batch = open();
    EXPECT_EQ(batch->get("txtPercent", "-"), "50");
    EXPECT_EQ(batch->get("list", "-"), "a,b") << "a list reads as its items";
    batch->save("txtPercent", "60");
    batch->save("chkSweep", "1");
    batch->commit();
    EXPECT_EQ(fileContent(file()),
              "; written by hand\n[Other]\nx = 1\n\n[Wavelark]\ntxtPercent=60\nlist = a, b\nchkSweep=1\n\n[Last]\ny=2\n");
}

TEST_F(SettingsStoreTest, ABatchReadsTheFileOnceAndWritesOnlyWhenCommitted)
{
    storeValues({{"txtPercent", "50"}});
    const std::string before = fileContent(file());
    {
        auto batch = open();
        std::ofstream(file(), std::ios::trunc) << "[Wavelark]\ntxtPercent=99\n";
        EXPECT_EQ(batch->get("txtPercent", "-"), "50") << "read when the batch opened";
        batch->save("txtPercent", "60");
        EXPECT_EQ(batch->get("txtPercent", "-"), "60") << "its own save";
        std::ofstream(file(), std::ios::trunc) << before;
    }
    EXPECT_EQ(fileContent(file()), before) << "a batch that goes uncommitted writes nothing";
}

TEST_F(SettingsStoreTest, AReadOnlyFolderKeepsTheFileRaisesAndARetryWritesLater)
{
    storeValues({{"txtPercent", "50"}, {"txtFrequency1", "440"}});
    const std::string before = fileContent(file());
    auto batch = open();
    batch->save("txtPercent", "60");
    {
        ::chmod(appFolder().c_str(), 0555);
        testing_support::NoFileOverride asAUser;
        const rt::RuntimeError failure = commitFailure(*batch);
        EXPECT_EQ(failure.number(), rt::kErrPathFileAccess);
        EXPECT_EQ(failure.description(), "Path/File access error");
        EXPECT_EQ(failure.osError(), EACCES);
        ::chmod(appFolder().c_str(), 0755);
    }
    EXPECT_EQ(fileContent(file()), before);

    batch->commit();  // the retry, once the folder is writable
    EXPECT_EQ(open()->get("txtPercent", "-"), "60");
    EXPECT_NE(fileContent(file()).find("txtFrequency1=440"), std::string::npos);
}

TEST_F(SettingsStoreTest, AFullDiskKeepsTheFileRaisesDiskFullAndARetryWritesLater)
{
    storeValues({{"txtPercent", "50"}});
    const std::string before = fileContent(file());
    auto batch = open();
    batch->save("txtVOutIdent", std::string(8192, 'v'));  // more than the disk has room for
    {
        testing_support::FileSizeLimit fullDisk(4096);
        const rt::RuntimeError failure = commitFailure(*batch);
        EXPECT_EQ(failure.number(), rt::kErrDiskFull);
        EXPECT_EQ(failure.description(), "Disk full");
    }
    EXPECT_EQ(fileContent(file()), before);

    batch->commit();
    EXPECT_EQ(open()->get("txtVOutIdent", "-").size(), 8192u);
}

TEST_F(SettingsStoreTest, AnUnreadableFileRaisesWhenTheBatchOpens)
{
    storeValues({{"txtPercent", "50"}});
    ::chmod(file().c_str(), 0);
    testing_support::NoFileOverride asAUser;
    try {
        open();
        ADD_FAILURE() << "the batch opened";
    } catch (const rt::RuntimeError& error) {
        EXPECT_EQ(error.number(), rt::kErrPathFileAccess);
    }
}

}  // namespace
