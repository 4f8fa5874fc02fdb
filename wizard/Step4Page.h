#pragma once
#include "wizard/StepPage.h"

// Step 4: where to put the chosen files, and the restore itself.
class Step4Page : public StepPage {
    Q_OBJECT
public:
    explicit Step4Page(QWidget* parent);

    QPushButton* returnToMainButton;
};
