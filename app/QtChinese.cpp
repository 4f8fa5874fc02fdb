#include "app/QtChinese.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

bool QtChinese::install()
{
    auto* translator = new QTranslator(QCoreApplication::instance());
    const QString folder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
    if (!translator->load(QLocale(QLocale::Chinese, QLocale::China), QStringLiteral("qt"), QStringLiteral("_"), folder)) {
        delete translator;
        return false;
    }
    return QCoreApplication::installTranslator(translator);
}
