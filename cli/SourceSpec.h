#pragma once
#include <QChar>
#include <QString>

// What a command's SOURCE names: a drive letter ("E"), a disk ("disk:N"), or an
// image file with an optional 1-based partition of its layout ("card.img@1").
struct SourceSpec {
    enum Kind { Letter, Disk, Image };
    Kind kind = Letter;
    QChar letter;
    int disk = -1;
    QString imagePath;
    int partition = 0; // 1-based index into the image's layout; 0 for none given

    static bool parse(const QString& text, SourceSpec* out, QString* error);
};
