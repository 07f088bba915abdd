// The files that put the program on a desktop, checked by the desktop's own
// validators, and the Debian package that the install rules make.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QStringList>

#include "tests/app/ProcessRun.h"
#include "tests/support/TestEnvironment.h"

namespace {

using testing_support::ProcessRun;
using testing_support::runProcess;

const QString kAppId = "io.github.marlo.Wavelark";

// The files a package lists, without its folders: "./usr/bin/wavelark" ...
QStringList packagedFiles(const QString& deb)
{
    const ProcessRun listing = runProcess("dpkg-deb", {"--contents", deb});
    QStringList files;
    for (const QString& line : listing.out.split('\n', Qt::SkipEmptyParts)) {
        const QString path = line.section(' ', -1);
        if (!path.endsWith('/')) files << path;
    }
    files.sort();
    return files;
}

// Width and height from a PNG's header chunk, which follows the signature.
std::pair<int, int> pngSize(const QString& file)
{
    QFile png(file);
    if (!png.open(QIODevice::ReadOnly)) return {0, 0};
    const QByteArray header = png.read(24);
    if (header.size() < 24 || header.mid(12, 4) != "IHDR") return {0, 0};
    const auto bigEndian = [&](int at) {
        return (uchar(header[at]) << 24) | (uchar(header[at + 1]) << 16) | (uchar(header[at + 2]) << 8) |
               uchar(header[at + 3]);
    };
    return {bigEndian(16), bigEndian(20)};
}

}  // namespace

TEST(DesktopFiles, EntryAndMetainfoPassTheirValidators)
{
    const ProcessRun entry = runProcess("desktop-file-validate", {WAVELARK_DATA_DIR "/" + kAppId + ".desktop"});
    ASSERT_TRUE(entry.finished) << "desktop-file-validate did not run";
    EXPECT_EQ(entry.status, 0);
    // Hints and warnings leave the status at 0; none are wanted either.
    EXPECT_EQ(entry.out + entry.err, "");

    const ProcessRun metainfo =
        runProcess("appstreamcli", {"validate", "--no-net", WAVELARK_DATA_DIR "/" + kAppId + ".metainfo.xml"});
    ASSERT_TRUE(metainfo.finished) << "appstreamcli did not run";
    EXPECT_EQ(metainfo.status, 0) << metainfo.out.toStdString() << metainfo.err.toStdString();
}

// One package build (the slow part) serves every check of what it holds.
TEST(DebianPackage, HoldsTheProgramAndItsDesktopFilesAndNamesItsDependencies)
{
    const QString folder = QString::fromStdString(testing_support::makeTempFolder("package"));
    const ProcessRun cpack =
        runProcess(WAVELARK_CPACK, {"-G", "DEB", "-B", folder, "--config", WAVELARK_CPACK_CONFIG},
                   QProcessEnvironment::systemEnvironment(), 240000);
    ASSERT_TRUE(cpack.finished && cpack.status == 0) << cpack.out.toStdString() << cpack.err.toStdString();
    const QStringList debs = QDir(folder).entryList({"wavelark_" WAVELARK_VERSION "_*.deb"}, QDir::Files);
    ASSERT_EQ(debs.size(), 1) << "no wavelark_" WAVELARK_VERSION "_<architecture>.deb in " << folder.toStdString();
    const QString deb = folder + "/" + debs.front();

    const QStringList expected = {
        "./usr/bin/wavelark",
        "./usr/share/applications/" + kAppId + ".desktop",
        "./usr/share/doc/wavelark/LICENSE",
        "./usr/share/doc/wavelark/copyright",
        "./usr/share/icons/hicolor/256x256/apps/" + kAppId + ".png",
        "./usr/share/icons/hicolor/48x48/apps/" + kAppId + ".png",
        "./usr/share/icons/hicolor/scalable/apps/" + kAppId + ".svg",
        "./usr/share/man/man1/wavelark.1.gz",
        "./usr/share/metainfo/" + kAppId + ".metainfo.xml",
    };
    EXPECT_EQ(packagedFiles(deb), expected);

    const ProcessRun depends = runProcess("dpkg-deb", {"--field", deb, "Depends"});
    // The first is ours; the Qt libraries come from the program's links.
    for (const char* dependency : {"libasound2-plugins | pipewire-alsa", "libqt6widgets6 (", "libqt6core6 ("}) {
        EXPECT_TRUE(depends.out.contains(dependency)) << "Depends lacks " << dependency << ": "
                                                       << depends.out.toStdString();
    }

    const QString root = folder + "/root";
    ASSERT_EQ(runProcess("dpkg-deb", {"--extract", deb, root}).status, 0);
    // The packaged program is stripped; it must still run.
    const ProcessRun version = runProcess(root + "/usr/bin/wavelark", {"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_TRUE(version.out.startsWith("Wavelark " WAVELARK_VERSION "\n")) << version.out.toStdString();
    // The metainfo finds the desktop entry it names as its launchable.
    const ProcessRun tree = runProcess("appstreamcli", {"validate-tree", "--no-net", root});
    EXPECT_EQ(tree.status, 0) << tree.out.toStdString() << tree.err.toStdString();
    for (int size : {48, 256}) {
        const QString png = QString("%1/usr/share/icons/hicolor/%2x%2/apps/%3.png").arg(root).arg(size).arg(kAppId);
        EXPECT_EQ(pngSize(png), std::make_pair(size, size)) << png.toStdString();
    }
}
