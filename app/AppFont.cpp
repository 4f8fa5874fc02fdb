#include "app/AppFont.h"

#include <QApplication>
#include <QFont>
#include <QFontDatabase>

namespace {
constexpr int kPointSize = 11;
// Installed CJK families, in order of preference (fonts-noto-cjk first).
const char* const kFallbacks[] = {"Noto Sans CJK SC", "Noto Sans SC", "WenQuanYi Micro Hei", "Droid Sans Fallback"};
} // namespace

QString AppFont::family()
{
    const int id = QFontDatabase::addApplicationFont(QCoreApplication::applicationDirPath() + "/MSYH.TTC");
    if (id >= 0) {
        const QStringList families = QFontDatabase::applicationFontFamilies(id);
        if (!families.isEmpty())
            return families.first();
    }
    const QStringList installed = QFontDatabase::families(QFontDatabase::SimplifiedChinese);
    for (const char* name : kFallbacks) {
        if (installed.contains(QLatin1String(name)))
            return QLatin1String(name);
    }
    return installed.isEmpty() ? QString() : installed.first();
}

void AppFont::install()
{
    QFont font(family());
    font.setPointSize(kPointSize);
    QApplication::setFont(font);
}
