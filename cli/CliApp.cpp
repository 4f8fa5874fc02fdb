#include "cli/CliApp.h"
#include "cli/DeviceRows.h"
#include "scan/device/CombinedDeviceLayer.h"
#include "scan/device/DeviceLayer.h"

#include <QCommandLineParser>
#include <QJsonDocument>
#include <QJsonObject>
#include <cstdio>

namespace {
void out(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
}

void err(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
}

// --image FILE adds image files to the device list for any command.
bool addImages(const QStringList& images)
{
    for (const QString& path : images) {
        int error = 0;
        if (CombinedDeviceLayer::program().addImageFile(path, &error) < 0) {
            err(QStringLiteral("ostrel-cli: cannot open image %1: %2\n").arg(path, QString::fromLocal8Bit(strerror(error))));
            return false;
        }
    }
    return true;
}

int devicesCommand(const QStringList& args)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("List disks and partitions as the wizard's device page shows them."));
    parser.addHelpOption();
    parser.addOption({QStringLiteral("json"), QStringLiteral("Print one JSON document.")});
    parser.addOption({QStringLiteral("image"), QStringLiteral("Add an image file to the device list."), QStringLiteral("FILE")});
    parser.process(args);
    if (!addImages(parser.values(QStringLiteral("image"))))
        return CliApp::NoSource;
    const QList<DeviceRow> rows = DeviceRows::collect(DeviceLayer::instance());
    if (parser.isSet(QStringLiteral("json")))
        out(QString::fromUtf8(QJsonDocument(QJsonObject{{"disks", DeviceRows::json(rows)}}).toJson()));
    else
        out(DeviceRows::text(rows));
    return CliApp::Ok;
}

void usage()
{
    err(QStringLiteral("usage: ostrel-cli devices [--json] [--image FILE]...\n"
                       "       ostrel-cli scan [--mode file|format|partition] [--deep] [--types \".jpg;.png\"] [--json] SOURCE\n"
                       "       ostrel-cli restore [scan options] [--only PATH]... --to DIR SOURCE\n"
                       "SOURCE is a drive letter (E), a disk (disk:N), or an image file, optionally with a\n"
                       "1-based partition (card.img@1). Run a command with --help for its options.\n"));
}
} // namespace

int CliApp::run(const QStringList& arguments)
{
    if (arguments.size() < 2) {
        usage();
        return Usage;
    }
    const QString command = arguments.at(1);
    QStringList rest = arguments;
    rest.removeAt(1);
    if (command == QLatin1String("devices"))
        return devicesCommand(rest);
    if (command == QLatin1String("--help") || command == QLatin1String("-h") || command == QLatin1String("help")) {
        usage();
        return Ok;
    }
    err(QStringLiteral("ostrel-cli: unknown command %1\n").arg(command));
    usage();
    return Usage;
}
