#pragma once
#include <QApplication>
#include <QBuffer>
#include <QImage>
#include <QDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QString>
#include <QStringList>
#include <QTimer>

// Answers the next modal window that opens: remembers what it was and closes
// it (a message box through its first button), so that a slot waiting in
// exec() goes on. Made before the click that opens the window.
class ModalAnswerer {
public:
    ModalAnswerer()
    {
        QTimer::singleShot(0, [this] { poll(); });
    }
    bool answered() const { return done; }
    QString text() const { return seenText; }             // of a message box
    QString className() const { return seenClass; }       // of any dialog
    QString windowTitle() const { return seenTitle; }

private:
    void poll()
    {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!dialog) {
            if (++tries < kMaxTries)
                QTimer::singleShot(10, [this] { poll(); });
            return;
        }
        done = true;
        seenClass = QString::fromLatin1(dialog->metaObject()->className());
        seenTitle = dialog->windowTitle();
        if (auto* box = qobject_cast<QMessageBox*>(dialog)) {
            seenText = box->text();
            box->buttons().first()->click();
        } else {
            dialog->reject();
        }
    }

    static constexpr int kMaxTries = 500;
    int tries = 0;
    bool done = false;
    QString seenText;
    QString seenClass;
    QString seenTitle;
};

// Answers every message box of the wizard for as long as it lives, keeping
// their texts in order: for flows in which boxes come from queued signals
// (the end of a scan or a restore) at no fixed point of the test.
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
