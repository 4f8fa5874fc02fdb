#include "app/AppFont.h"
#include "app/MyProxyStyle.h"
#include "app/QtChinese.h"
#include "wizard/MainWidget.h"

#include <QApplication>
#include <QFile>
#include <QTextStream>

namespace {
// Kept open for the whole run and created empty at each start; diagnostics go
// to the framework's default output, not here.
QFile logFile(QStringLiteral("datarecovery.log"));
QTextStream logStream(&logFile);
} // namespace

int main(int argc, char* argv[])
{
    logFile.open(QIODevice::WriteOnly);
    QApplication app(argc, argv);
    QApplication::setStyle(new MyProxyStyle);
    AppFont::install();
    QtChinese::install();
    MainWidget window;
    window.show();
    return app.exec();
}
