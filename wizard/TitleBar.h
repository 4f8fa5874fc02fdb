#pragma once
#include <QWidget>

class QLabel;

// The window's own title bar: the product icon and the title of the current mode.
class TitleBar : public QWidget {
    Q_OBJECT
public:
    explicit TitleBar(QWidget* parent);

    QLabel* labelIcon;
    QLabel* labelTitle;
};
