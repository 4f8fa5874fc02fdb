#include "results/FileKind.h"

#include <QHash>
#include <QObject>
#include <QStringList>

namespace {
QHash<QString, FileKind::Kind> kindsByExtension()
{
    const struct {
        FileKind::Kind kind;
        const char* extensions;
    } groups[] = {
        {FileKind::Picture, "jpg jpeg png gif bmp tif tiff ico webp heic raw cr2 nef psd svg pbm pgm ppm xbm xpm"},
        {FileKind::Video, "mp4 avi mov mkv wmv flv mpg mpeg m4v 3gp rm rmvb webm ts"},
        {FileKind::Document, "txt doc docx xls xlsx ppt pptx pdf rtf odt ods odp csv htm html xml ini wps et dps md c cpp h hpp java"},
        {FileKind::Audio, "mp3 wav wma flac aac ogg m4a ape amr mid midi"},
        {FileKind::Archive, "zip rar 7z gz tgz bz2 xz tar cab iso"},
    };
    QHash<QString, FileKind::Kind> map;
    for (const auto& g : groups) {
        for (const QString& ext : QString::fromLatin1(g.extensions).split(QLatin1Char(' ')))
            map.insert(ext, g.kind);
    }
    return map;
}
} // namespace

QString FileKind::extension(const QString& fileName)
{
    const qsizetype dot = fileName.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QString() : fileName.mid(dot + 1).toLower();
}

FileKind::Kind FileKind::of(const QString& fileName)
{
    static const QHash<QString, Kind> kinds = kindsByExtension();
    return kinds.value(extension(fileName), Other);
}

QString FileKind::label(Kind kind)
{
    const char* const labels[] = {"图片", "视频", "文档", "音频", "压缩包", "其他"};
    return kind >= 0 && kind < KindCount ? QObject::tr(labels[kind]) : QString();
}
