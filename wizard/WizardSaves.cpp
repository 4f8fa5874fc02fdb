#include "wizard/WizardSaves.h"
#include "scan/PartScan.h"
#include "scan/ScanSaver.h"
#include "scan/device/DeviceLayer.h"
#include "scan/device/SourceGuard.h"

#include <QCryptographicHash>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QStandardPaths>

QString WizardSaves::folder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + QStringLiteral("/saved-scans");
}

QString WizardSaves::pathFor(const SavedScan::Fingerprint& f)
{
    const QByteArray key = QByteArray::number(f.size) + f.head + f.tail;
    return folder() + QLatin1Char('/') + QString::fromLatin1(QCryptographicHash::hash(key, QCryptographicHash::Sha256).toHex().left(32))
           + QStringLiteral(".scan");
}

DeviceHandle WizardSaves::openSource(int disk, char letter)
{
    int error = 0;
    return letter == '@' ? DeviceLayer::instance().openDisk(disk, &error)
                         : DeviceLayer::instance().openVolume(QChar::fromLatin1(letter), &error);
}

std::optional<SavedScan> WizardSaves::find(const DeviceHandle& source, const QString& mode)
{
    if (!source.isValid())
        return std::nullopt;
    const SavedScan::Fingerprint fingerprint = SavedScan::fingerprintOf(source);
    const QString path = pathFor(fingerprint);
    SavedScan saved;
    QString why;
    if (!QFile::exists(path) || !SavedScan::read(path, &saved, &why) || saved.fingerprint != fingerprint || saved.mode != mode) {
        if (!why.isEmpty())
            qCritical("%s: %s", qUtf8Printable(path), qUtf8Printable(why));
        return std::nullopt;
    }
    return saved;
}

ScanSaver* WizardSaves::saverFor(PartScan* scanner, int disk, const QString& mode)
{
    const QString refusal = SourceGuard::refusalForDisk(folder(), disk);
    if (!refusal.isEmpty() || !QDir().mkpath(folder())) {
        qCritical("the scan is not saved: %s", qUtf8Printable(refusal.isEmpty() ? folder() : refusal));
        return nullptr;
    }
    SavedScan header;
    header.mode = mode;
    header.fileFilter = scanner->fileFilter;
    header.doExtra = scanner->doExtra;
    header.fingerprint = SavedScan::fingerprintOf(scanner->handle);
    auto* saver = new ScanSaver(pathFor(header.fingerprint), header);
    saver->attach(scanner);
    return saver;
}
