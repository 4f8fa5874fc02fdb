#include "WizardTestKit.h"
#include "app/AppFont.h"
#include "app/MyButton.h"
#include "app/MyProxyStyle.h"
#include "dialogs/DialogAbout.h"
#include "dialogs/DialogContactUs.h"
#include "wizard/MainPage.h"
#include "wizard/MainWidget.h"
#include "wizard/Step1Page.h"

#include <QLabel>
#include <QMouseEvent>
#include <QToolButton>
#include <QtTest>

#include <memory>

namespace {
QImage picture(const char* path)
{
    return QPixmap(QLatin1String(path)).toImage();
}

void send(QObject* target, QEvent::Type type)
{
    QEvent event(type);
    QApplication::sendEvent(target, &event);
}

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
    void myButtonTogglesItsPicture();
    void pressedButtonSinksByOnePixel();
    void doubleClickOnTitleIsSwallowed();
    void hoverFillsAndCursors_data();
    void hoverFillsAndCursors();
    void dragMovesOnlyWithTheLeftButton();
    void titleButtonsSitInTheCorner();
    void footerButtonsOpenTheirDialogs_data();
    void footerButtonsOpenTheirDialogs();
    void dialogsCloseOnEscapeAndLightTheirCloseButton();
    void screenshot();

private:
    QToolButton* titleButton(const QString& tip) const;
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

QToolButton* TestShell::titleButton(const QString& tip) const
{
    for (QToolButton* button : window->findChildren<QToolButton*>()) {
        if (button->toolTip() == tip)
            return button;
    }
    return nullptr;
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

void TestShell::myButtonTogglesItsPicture()
{
    MyButton pause(true);
    QCOMPARE(pause.currentPixmap(false).toImage(), picture(":./pause1.png"));
    QTest::mouseClick(&pause, Qt::LeftButton);
    QCOMPARE(pause.currentPixmap(false).toImage(), picture(":./resume1.png"));
    QCOMPARE(pause.currentPixmap(true).toImage(), picture(":./resume1.png"));
    pause.toggleFlag = true; // as a new scan sets it
    QCOMPARE(pause.currentPixmap(true).toImage(), picture(":./pause1.png"));

    MyButton stop(false);
    QTest::mouseClick(&stop, Qt::LeftButton);
    QVERIFY(!stop.toggleFlag);
    QCOMPARE(stop.currentPixmap(false).toImage(), picture(":./stop1.png"));
}

void TestShell::pressedButtonSinksByOnePixel()
{
    MyButton stop(false);
    stop.resize(24, 24);
    const QImage up = stop.grab().toImage();
    stop.setDown(true);
    const QImage down = stop.grab().toImage();
    QVERIFY(up != down);
    QCOMPARE(down.pixel(12, 12), up.pixel(11, 11));
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
    QCOMPARE(window->size(), QSize(884, 667));
}

void TestShell::hoverFillsAndCursors_data()
{
    QTest::addColumn<QString>("widget");
    QTest::addColumn<QColor>("fill"); // invalid: no fill
    QTest::addColumn<bool>("hand");
    QTest::newRow("minimise") << "最小化" << QColor(66, 138, 221) << false;
    QTest::newRow("maximise") << "最大化" << QColor(66, 138, 221) << false;
    QTest::newRow("close") << "关闭" << QColor(216, 70, 71) << false;
    QTest::newRow("step 1 next") << "step1.next" << QColor(166, 244, 255) << true;
    QTest::newRow("mode button") << "pushButtonPartitionRecovery" << QColor() << true;
    QTest::newRow("about") << "pushButtonAbout" << QColor() << true;
}

void TestShell::hoverFillsAndCursors()
{
    QFETCH(QString, widget);
    QFETCH(QColor, fill);
    QFETCH(bool, hand);
    QWidget* target = titleButton(widget);
    if (widget == QLatin1String("step1.next")) {
        QTest::mouseClick(window->mainPage()->pushButtonFileRecovery, Qt::LeftButton);
        target = window->step1()->nextButton;
    } else if (!target) {
        target = window->findChild<QWidget*>(widget);
    }
    QVERIFY(target);
    const QString before = target->styleSheet();

    send(target, QEvent::Enter);
    if (fill.isValid()) {
        QCOMPARE(target->palette().color(QPalette::Active, QPalette::Button), fill);
        QVERIFY(target->styleSheet().contains(fill.name()));
    } else {
        QCOMPARE(target->styleSheet(), before);
    }
    QCOMPARE(window->cursor().shape(), hand ? Qt::PointingHandCursor : Qt::ArrowCursor);

    send(target, QEvent::Leave);
    QCOMPARE(window->cursor().shape(), Qt::ArrowCursor);
    if (fill.isValid())
        QVERIFY(target->styleSheet().contains(QLatin1String("transparent")));
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

void TestShell::titleButtonsSitInTheCorner()
{
    QVERIFY(window->windowFlags().testFlag(Qt::FramelessWindowHint));
    const QStringList tips{QStringLiteral("最小化"), QStringLiteral("最大化"), QStringLiteral("关闭")};
    for (int i = 0; i < tips.size(); ++i) {
        QToolButton* button = titleButton(tips[i]);
        QVERIFY(button);
        QCOMPARE(button->geometry(), QRect(884 - 30 * (3 - i), 0, 30, 33));
    }
    QTest::mouseClick(titleButton(tips[1]), Qt::LeftButton);
    QCOMPARE(window->size(), QSize(884, 667));
    QTest::mouseClick(titleButton(tips[2]), Qt::LeftButton);
    QVERIFY(!window->isVisible());
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
    ModalAnswerer answer;
    QTest::mouseClick(window->findChild<QWidget*>(button), Qt::LeftButton);
    QVERIFY(answer.answered());
    QCOMPARE(answer.className(), dialog);
}

void TestShell::dialogsCloseOnEscapeAndLightTheirCloseButton()
{
    DialogAbout about(window.get());
    DialogContactUs contact(window.get());
    for (FramelessDialog* dialog : {static_cast<FramelessDialog*>(&about), static_cast<FramelessDialog*>(&contact)}) {
        QVERIFY(dialog->windowFlags().testFlag(Qt::FramelessWindowHint));
        dialog->show();
        QVERIFY(QTest::qWaitForWindowExposed(dialog));
        QCOMPARE(dialog->closeToolButton->geometry().right() + 1, dialog->width() - 3);
        send(dialog->closeToolButton, QEvent::Enter);
        QCOMPARE(dialog->closeToolButton->palette().color(QPalette::Button), QColor(216, 70, 71));
        send(dialog->closeToolButton, QEvent::Leave);
        QVERIFY(dialog->closeToolButton->styleSheet().contains(QLatin1String("transparent")));
        QTest::keyClick(dialog, Qt::Key_Escape);
        QVERIFY(!dialog->isVisible());
    }
    contact.show();
    send(contact.pushButtonQQ, QEvent::Enter);
    QCOMPARE(contact.pushButtonQQ->cursor().shape(), Qt::PointingHandCursor);
    QTest::mouseClick(contact.pushButtonQQ, Qt::LeftButton); // no script host here: nothing happens
    QVERIFY(contact.isVisible());
}

// OSTREL_SCREENSHOT=path saves the main page as rendered here.
void TestShell::screenshot()
{
    const QString path = qEnvironmentVariable("OSTREL_SCREENSHOT");
    if (path.isEmpty())
        QSKIP("set OSTREL_SCREENSHOT to a file name to save the main page");
    QVERIFY(window->grab().save(path));
}

QTEST_MAIN(TestShell)
#include "tst_shell.moc"
