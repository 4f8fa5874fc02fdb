#pragma once
#include <QApplication>
#include <QBuffer>
#include <QDialog>
#include <QImage>
#include <QMessageBox>
#include <QPushButton>
#include <QStringList>
#include <QTimer>

// Answers modal windows for as long as it lives, so that a slot waiting in
// exec() goes on: message boxes through their first button (their texts kept
// in order) and, with rejectDialogs, other dialogs by rejecting them (their
// class names kept). For windows that come at no fixed point of a test.
class MessageRecorder {
public:
    MessageRecorder()
    {
        QObject::connect(&timer, &QTimer::timeout, [this] { answer(); });
        timer.start(5);
    }
    QStringList texts;
    QStringList dialogs;
    bool rejectDialogs = false;

private:
    void answer()
    {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible())
            return;
        if (auto* box = qobject_cast<QMessageBox*>(dialog)) {
            texts.append(box->text());
            box->buttons().first()->click();
        } else if (rejectDialogs) {
            dialogs.append(QString::fromLatin1(dialog->metaObject()->className()));
            dialog->reject();
        }
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
