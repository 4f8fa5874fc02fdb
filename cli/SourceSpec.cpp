#include "cli/SourceSpec.h"

#include <QFileInfo>
#include <QRegularExpression>

bool SourceSpec::parse(const QString& text, SourceSpec* out, QString* error)
{
    SourceSpec s;
    static const QRegularExpression letterPattern(QStringLiteral("^([A-Za-z]):?$"));
    static const QRegularExpression diskPattern(QStringLiteral("^disk:(\\d+)$"));
    static const QRegularExpression partPattern(QStringLiteral("^(.*)@(\\d+)$"));
    QRegularExpressionMatch m = letterPattern.match(text);
    if (m.hasMatch() && !QFileInfo::exists(text)) {
        s.kind = Letter;
        s.letter = m.captured(1).at(0).toUpper();
        *out = s;
        return true;
    }
    m = diskPattern.match(text);
    if (m.hasMatch()) {
        s.kind = Disk;
        s.disk = m.captured(1).toInt();
        *out = s;
        return true;
    }
    s.kind = Image;
    s.imagePath = text;
    m = partPattern.match(text);
    if (m.hasMatch() && !QFileInfo::exists(text)) {
        s.imagePath = m.captured(1);
        s.partition = m.captured(2).toInt();
        if (s.partition < 1) {
            *error = QStringLiteral("partition numbers start at 1: %1").arg(text);
            return false;
        }
    }
    *out = s;
    return true;
}
