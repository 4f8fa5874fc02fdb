#pragma once
#include <QWidget>

class QPushButton;

// The frame every step page shares: a bordered "box" for the page's content,
// and its Prev and Next buttons. A step page adds its widgets to `box`.
class StepPage : public QWidget {
    Q_OBJECT
public:
    // prevAt and nextAt are the buttons' places inside the box; a null nextAt
    // makes a page without Next.
    StepPage(QWidget* parent, const QRect& prevAt, const QRect& nextAt);

    QWidget* box;
    QPushButton* prevButton;
    QPushButton* nextButton; // null on a page without Next

protected:
    QPushButton* addButton(const QString& text, const QRect& place);
};
