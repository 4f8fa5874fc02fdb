#pragma once
#include <QWidget>

class QHBoxLayout;
class QPushButton;
class QVBoxLayout;

// The frame every step page shares: a bordered "box" for the page's content,
// and its Prev and Next buttons in a row at the bottom. A step page adds its
// rows to `content` and may put buttons of its own into `buttonRow`; all of it
// is laid out, so the page grows with the window.
class StepPage : public QWidget {
    Q_OBJECT
public:
    StepPage(QWidget* parent, bool withNext);

    QWidget* box;
    QVBoxLayout* content;
    QHBoxLayout* buttonRow; // a stretch, then Prev and Next
    QPushButton* prevButton;
    QPushButton* nextButton; // null on a page without Next

protected:
    QPushButton* addButton(const QString& text, QWidget* parent = nullptr);
};
