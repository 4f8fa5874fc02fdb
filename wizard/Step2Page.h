#pragma once
#include "wizard/StepPage.h"

class QTreeWidget;

// Step 2 of file recovery: scan depth and the file types to look for.
class Step2Page : public StepPage {
    Q_OBJECT
public:
    explicit Step2Page(QWidget* parent);

    QTreeWidget* treeStep2; // one item per category, its types below
};
