#include "app/AppFont.h"
#include "app/MyProxyStyle.h"
#include "wizard/MainWidget.h"

#include <QApplication>
#include <QDir>
#include <QtTest>

class TestShell : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void screenshot();
};

void TestShell::initTestCase()
{
    QApplication::setStyle(new MyProxyStyle);
    AppFont::install();
}

// OSTREL_SCREENSHOT=path saves the main page as rendered here.
void TestShell::screenshot()
{
    const QString path = qEnvironmentVariable("OSTREL_SCREENSHOT");
    if (path.isEmpty())
        QSKIP("set OSTREL_SCREENSHOT to a file name to save the main page");
    MainWidget window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(window.grab().save(path));
}

QTEST_MAIN(TestShell)
#include "tst_shell.moc"
