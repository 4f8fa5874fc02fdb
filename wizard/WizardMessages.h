#pragma once
#include <QString>
#include <QStringList>

class QWidget;

// The wizard's modal boxes, in one look: the window's colours, a flat blue
// default button, the application's Chinese font.
class WizardMessages {
public:
    // An information box with one "确定"; details, when given, behind a
    // "显示详细信息…" button (Qt's own, translated).
    static void inform(QWidget* parent, const QString& text, const QString& details = QString());
    // A question with the given buttons, the first the default; returns the
    // index of the one pressed, -1 when the box was closed otherwise.
    static int ask(QWidget* parent, const QString& text, const QStringList& buttons);
};
