#pragma once
#include <QDialog>
#include <QLine>

class QLabel;
class QToolButton;

// A frameless dialog with a title bar of its own, a close button that turns
// red under the pointer, and one painted dividing line across its content.
class FramelessDialog : public QDialog {
    Q_OBJECT
public:
    FramelessDialog(QWidget* parent, const QString& title, const QSize& size, const QLine& divider);

    QLabel* labelTitle;
    QWidget* widget; // holds the content, below the title
    QToolButton* closeToolButton;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void paintDivider();

    QLine divider;
};
