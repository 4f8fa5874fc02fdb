#include "WizardTestKit.h"
#include "app/AppFont.h"
#include "app/MyButton.h"
#include "app/MyProxyStyle.h"
#include "wizard/MainPage.h"
#include "wizard/MainWidget.h"
#include "wizard/Step1Page.h"

#include <QLabel>
#include <QMouseEvent>
#include <QtTest>

#include <memory>

namespace {
void mouse(QWidget* target, QEvent::Type type, const QPoint& global, Qt::MouseButton button,
           Qt::MouseButtons buttons)
{
    QMouseEvent event(type, target->mapFromGlobal(global), global, button, buttons, Qt::NoModifier);
    QApplication::sendEvent(target, &event);
}
} // namespace

class TestShell : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();
    void myButtonFiresOnPressWithAnyButton();
    void doubleClickOnTitleIsSwallowed();
    void dragMovesOnlyWithTheLeftButton();
    void footerButtonsOpenTheirDialogs_data();
    void footerButtonsOpenTheirDialogs();

private:
    std::unique_ptr<MainWidget> window;
};

void TestShell::initTestCase()
{
    QApplication::setStyle(new MyProxyStyle);
    AppFont::install();
}

void TestShell::init()
{
    window = std::make_unique<MainWidget>();
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
}

void TestShell::cleanup()
{
    window.reset();
}

void TestShell::myButtonFiresOnPressWithAnyButton()
{
    MyButton button(true);
    button.resize(16, 16);
    QSignalSpy clicked(&button, &QPushButton::clicked);
    QTest::mousePress(&button, Qt::RightButton);
    QCOMPARE(clicked.count(), 1);
    QVERIFY(button.isDown());
    QVERIFY(!button.toggleFlag);
    QTest::mouseRelease(&button, Qt::RightButton);
    QCOMPARE(clicked.count(), 1); // nothing more on release
    QVERIFY(!button.isDown());
    QTest::mouseClick(&button, Qt::LeftButton);
    QCOMPARE(clicked.count(), 2);
    QVERIFY(button.toggleFlag);
}

void TestShell::doubleClickOnTitleIsSwallowed()
{
    QWidget* label = window->titleLabel();
    QObject* filter = window.get();
    QMouseEvent doubleClick(QEvent::MouseButtonDblClick, QPointF(5, 5), label->mapToGlobal(QPointF(5, 5)),
                            Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QVERIFY(filter->eventFilter(label, &doubleClick));
    QMouseEvent press(QEvent::MouseButtonPress, QPointF(5, 5), label->mapToGlobal(QPointF(5, 5)), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QVERIFY(!filter->eventFilter(label, &press));
    QTest::mouseDClick(label, Qt::LeftButton);
    QVERIFY(!window->isMaximized());
}

void TestShell::dragMovesOnlyWithTheLeftButton()
{
    QWidget* w = window.get();
    window->move(100, 100);
    const QPoint start = window->pos();
    const QPoint grip = w->mapToGlobal(QPoint(300, 400));

    mouse(w, QEvent::MouseButtonPress, grip, Qt::RightButton, Qt::RightButton);
    mouse(w, QEvent::MouseMove, grip + QPoint(40, 10), Qt::NoButton, Qt::RightButton);
    QCOMPARE(window->pos(), start);
    mouse(w, QEvent::MouseButtonRelease, grip + QPoint(40, 10), Qt::RightButton, Qt::NoButton);

    mouse(w, QEvent::MouseButtonPress, grip, Qt::LeftButton, Qt::LeftButton);
    mouse(w, QEvent::MouseMove, grip + QPoint(50, 20), Qt::NoButton, Qt::LeftButton);
    QCOMPARE(window->pos(), start + QPoint(50, 20));
    // A release of any button ends the drag.
    mouse(w, QEvent::MouseButtonRelease, grip + QPoint(50, 20), Qt::RightButton, Qt::LeftButton);
    mouse(w, QEvent::MouseMove, grip + QPoint(90, 90), Qt::NoButton, Qt::LeftButton);
    QCOMPARE(window->pos(), start + QPoint(50, 20));
}

void TestShell::footerButtonsOpenTheirDialogs_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("dialog");
    QTest::newRow("about") << "pushButtonAbout" << "DialogAbout";
    QTest::newRow("contact") << "pushButtonContactUs" << "DialogContactUs";
}

void TestShell::footerButtonsOpenTheirDialogs()
{
    QFETCH(QString, button);
    QFETCH(QString, dialog);
    MessageRecorder answer;
    answer.rejectDialogs = true;
    QTest::mouseClick(window->findChild<QWidget*>(button), Qt::LeftButton);
    QCOMPARE(answer.dialogs, QStringList{dialog});
}

QTEST_MAIN(TestShell)
#include "tst_shell.moc"
