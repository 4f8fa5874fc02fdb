#include "IcoWriter.h"

#include <QDataStream>
#include <QFile>

namespace {
constexpr int kDirSize = 6;
constexpr int kEntrySize = 16;
constexpr int kInfoHeaderSize = 40;

// A DIB as icons store it: the header claims twice the height, for the colour
// rows (bottom-up BGRA) followed by the 1-bit AND mask (all clear: alpha rules).
QByteArray dib(const QImage& source)
{
    const QImage image = source.convertToFormat(QImage::Format_ARGB32);
    const int w = image.width();
    const int h = image.height();
    const int maskStride = ((w + 31) / 32) * 4;
    QByteArray out;
    QDataStream s(&out, QIODevice::WriteOnly);
    s.setByteOrder(QDataStream::LittleEndian);
    s << quint32(kInfoHeaderSize) << qint32(w) << qint32(2 * h) << quint16(1) << quint16(32) << quint32(0)
      << quint32(w * h * 4 + maskStride * h) << qint32(0) << qint32(0) << quint32(0) << quint32(0);
    for (int y = h - 1; y >= 0; --y) {
        const QRgb* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < w; ++x)
            s << quint8(qBlue(line[x])) << quint8(qGreen(line[x])) << quint8(qRed(line[x])) << quint8(qAlpha(line[x]));
    }
    out.append(QByteArray(maskStride * h, '\0'));
    return out;
}
} // namespace

bool IcoWriter::write(const QString& path, const QList<QImage>& images)
{
    QList<QByteArray> bodies;
    for (const QImage& image : images)
        bodies.append(dib(image));
    QByteArray out;
    QDataStream s(&out, QIODevice::WriteOnly);
    s.setByteOrder(QDataStream::LittleEndian);
    s << quint16(0) << quint16(1) << quint16(images.size());
    quint32 offset = kDirSize + kEntrySize * images.size();
    for (int i = 0; i < images.size(); ++i) {
        const int w = images[i].width();
        const int h = images[i].height();
        s << quint8(w >= 256 ? 0 : w) << quint8(h >= 256 ? 0 : h) << quint8(0) << quint8(0) << quint16(1)
          << quint16(32) << quint32(bodies[i].size()) << offset;
        offset += bodies[i].size();
    }
    for (const QByteArray& body : bodies)
        out.append(body);
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(out) == out.size();
}
