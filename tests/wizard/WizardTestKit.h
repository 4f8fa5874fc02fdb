#pragma once
#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QString>
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
