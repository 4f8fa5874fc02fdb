#pragma once
#include <QWidget>

class QPushButton;

// The strip below every page: about, contact and the QQ button.
class Footer : public QWidget {
    Q_OBJECT
public:
    explicit Footer(QWidget* parent);

    QPushButton* pushButtonAbout;
    QPushButton* pushButtonContactUs;
    QPushButton* pushButtonQQ;
};
