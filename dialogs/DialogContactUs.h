#pragma once
#include "dialogs/FramelessDialog.h"

class QPushButton;

// How to reach the makers: QQ, telephone, hours, home page, support mail.
class DialogContactUs : public FramelessDialog {
    Q_OBJECT
public:
    explicit DialogContactUs(QWidget* parent);

    QPushButton* pushButtonQQ;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void on_pushButtonQQ_clicked();
};
