#pragma once
#include <QWidget>

// The program's one window and the whole recovery wizard.
class MainWidget : public QWidget {
    Q_OBJECT
public:
    explicit MainWidget(QWidget* parent = nullptr);
};
