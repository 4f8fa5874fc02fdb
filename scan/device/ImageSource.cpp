#include "scan/device/ImageSource.h"
#include "scan/LeReader.h"
#include "scan/device/EwfSource.h"
#include "scan/device/FileSource.h"
#include "scan/device/QcowSource.h"
#include "scan/device/SplitRawSource.h"
#include "scan/device/VhdiSource.h"
#include "scan/device/VmdkSource.h"

#include <QByteArray>
#include <QFileInfo>

namespace {
// Containers name themselves in their first bytes, except a fixed VHD, which
// is a raw disk with a footer in its last sector.
constexpr quint64 kHeadBytes = 512;
constexpr quint64 kVhdFooterBytes = 512;
// An E01 segment's number, 1 for the first, follows its signature.
constexpr int kEwfSegmentNumberOffset = 9;

struct Signature {
    ImageSource::Format format;
    bool inFooter;
    QByteArray magic;
};

const Signature kSignatures[] = {
    {ImageSource::Format::Ewf, false, QByteArray("EVF\x09\x0d\x0a\xff\x00", 8)},
    {ImageSource::Format::Vhdi, false, QByteArrayLiteral("vhdxfile")},
    {ImageSource::Format::Vhdi, false, QByteArrayLiteral("conectix")},
    {ImageSource::Format::Vhdi, true, QByteArrayLiteral("conectix")},
    {ImageSource::Format::Vmdk, false, QByteArrayLiteral("KDMV")},
    {ImageSource::Format::Vmdk, false, QByteArrayLiteral("COWD")},
    {ImageSource::Format::Vmdk, false, QByteArrayLiteral("# Disk DescriptorFile")},
    {ImageSource::Format::Qcow, false, QByteArray("QFI\xfb", 4)},
};

QByteArray readBytes(const ByteSource& file, quint64 position, quint64 bytes)
{
    QByteArray data(int(bytes), '\0');
    const qint64 n = file.readAt(data.data(), bytes, position);
    data.truncate(n > 0 ? int(n) : 0);
    return data;
}
} // namespace

ImageSource::Format ImageSource::formatOf(const ByteSource& file)
{
    const QByteArray head = readBytes(file, 0, kHeadBytes);
    const QByteArray footer = file.size() >= kVhdFooterBytes
        ? readBytes(file, file.size() - kVhdFooterBytes, kVhdFooterBytes) : QByteArray();
    for (const Signature& s : kSignatures) {
        if ((s.inFooter ? footer : head).startsWith(s.magic))
            return s.format;
    }
    return Format::Raw;
}

std::shared_ptr<ByteSource> ImageSource::open(const QString& path, int* error)
{
    std::shared_ptr<FileSource> file = FileSource::open(path, error);
    if (!file)
        return nullptr;
    switch (formatOf(*file)) {
    case Format::Ewf:
        return EwfSource::open(path, error);
    case Format::Vhdi:
        return VhdiSource::open(path, error);
    case Format::Vmdk:
        return VmdkSource::open(path, error);
    case Format::Qcow:
        return QcowSource::open(path, error);
    case Format::Raw:
        break;
    }
    const QStringList pieces = SplitRawSource::piecesFrom(path);
    if (pieces.size() > 1)
        return SplitRawSource::open(pieces, error);
    return file;
}

QString ImageSource::displayName(const QString& path)
{
    if (SplitRawSource::piecesFrom(path).size() > 1)
        return SplitRawSource::setName(path);
    return QFileInfo(path).fileName();
}

bool ImageSource::isContinuation(const QString& path)
{
    if (SplitRawSource::isLaterPiece(path))
        return true;
    int error = 0;
    std::shared_ptr<FileSource> file = FileSource::open(path, &error);
    if (!file || formatOf(*file) != Format::Ewf)
        return false;
    const QByteArray head = readBytes(*file, 0, kHeadBytes);
    return LeReader(head.constData(), size_t(head.size())).u16(kEwfSegmentNumberOffset) > 1;
}
