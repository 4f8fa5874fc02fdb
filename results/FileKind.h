#pragma once
#include <QString>

// The broad kinds users sort found files by, from a name's extension: the
// groups of the result filters and of the summary after a scan.
class FileKind {
public:
    enum Kind { Picture, Video, Document, Audio, Archive, Other, KindCount };

    static Kind of(const QString& fileName);
    // "图片", "视频", "文档", "音频", "压缩包", "其他".
    static QString label(Kind kind);
    // The lower-case extension after the last dot, empty without one.
    static QString extension(const QString& fileName);
};
