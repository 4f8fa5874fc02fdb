#include "dialogs/QqScript.h"

#include <QProcess>
#include <QStandardPaths>

void QqScript::run()
{
    const QString host = QStandardPaths::findExecutable(QStringLiteral("wscript.exe"));
    if (host.isEmpty())
        return;
    QProcess::execute(host, {QStringLiteral("//e:vbscript"), QStringLiteral("qq.vbs")});
}
