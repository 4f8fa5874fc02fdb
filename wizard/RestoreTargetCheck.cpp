#include "wizard/RestoreTargetCheck.h"
#include "wizard/SelectionSums.h"

#include <QFileInfo>
#include <QObject>
#include <QStorageInfo>
#include <QTemporaryFile>

namespace {
QString sizeText(quint64 bytes)
{
    return SelectionSums::sizeValue(bytes) + QLatin1Char(' ') + SelectionSums::sizeUnit(bytes);
}
} // namespace

// Permission bits say nothing of read-only mounts or pseudo file systems:
// the folder is tried with a real file.
QString RestoreTargetCheck::problem(const QString& dir, quint64 bytesNeeded)
{
    const QFileInfo info(dir);
    if (!info.exists() || !info.isDir())
        return QObject::tr("恢复文件夹不存在：%1").arg(dir);
    QTemporaryFile probe(dir + QStringLiteral("/.ostrel-probe-XXXXXX"));
    if (!probe.open() || probe.write("x", 1) != 1 || !probe.flush())
        return QObject::tr("无法写入恢复文件夹：%1\n请选择其他文件夹。").arg(dir);
    probe.close();
    const QStorageInfo storage(dir);
    const qint64 available = storage.bytesAvailable();
    if (available >= 0 && quint64(available) < bytesNeeded)
        return QObject::tr("恢复文件夹所在的磁盘空间不足：需要 %1，可用 %2。")
            .arg(sizeText(bytesNeeded), sizeText(quint64(available)));
    return QString();
}
