#pragma once
#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QString>
#include <QTimer>

// Answers the next modal message box of the wizard: once it is up, remembers its
// text and presses its first button, so a slot that waits in exec() goes on.
class MessageAnswerer {
public:
    MessageAnswerer()
    {
        QTimer::singleShot(0, [this] { poll(); });
    }
    QString text() const { return seen; }
    bool answered() const { return done; }

private:
    void poll()
    {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box) {
            if (++tries < kMaxTries)
                QTimer::singleShot(10, [this] { poll(); });
            return;
        }
        seen = box->text();
        title = box->windowTitle();
        done = true;
        box->buttons().first()->click();
    }

    static constexpr int kMaxTries = 500;
    int tries = 0;
    bool done = false;
    QString seen;
    QString title;
};
