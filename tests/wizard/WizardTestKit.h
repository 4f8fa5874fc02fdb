#pragma once
#include <QApplication>
#include <QBuffer>
#include <QImage>
#include <QMessageBox>
#include <QPushButton>
#include <QStringList>
#include <QTimer>
#include <QTreeWidget>
#include <QtTest>

// Answers every message box for as long as it lives, keeping their texts in
// order, so that a slot waiting in exec() goes on: for boxes that come from
// queued signals (the end of a scan or a restore) at no fixed point of a test.
class MessageRecorder {
public:
    MessageRecorder()
    {
        QObject::connect(&timer, &QTimer::timeout, [this] { answer(); });
        timer.start(5);
    }
    QStringList texts;

private:
    void answer()
    {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        texts.append(box->text());
        box->buttons().first()->click();
    }
    QTimer timer;
};

// A plain picture encoded as PNG, as a found file would hold it.
inline QByteArray pngBytes(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

// Clicks a button as a user does; a hidden one is a failed step of the flow.
inline void clickButton(QWidget* button)
{
    QVERIFY(button->isVisible());
    QTest::mouseClick(button, Qt::LeftButton);
}

// Clicks a top-level row of a tree in its middle.
inline void clickTreeRow(QTreeWidget* tree, int row)
{
    const QRect rect = tree->visualItemRect(tree->topLevelItem(row));
    QVERIFY(rect.isValid());
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, rect.center());
}
