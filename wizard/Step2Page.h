#pragma once
#include "wizard/StepPage.h"

class QButtonGroup;
class QCheckBox;
class QLabel;
class QRadioButton;
class QTreeWidget;

// Step 2 of file recovery: scan depth and the file types to look for.
class Step2Page : public StepPage {
    Q_OBJECT
public:
    explicit Step2Page(QWidget* parent);

    QRadioButton* quickScan;
    QRadioButton* deepScan;
    QRadioButton* defaultTypes;
    QRadioButton* customTypes;
    QCheckBox* selectAll;
    QCheckBox* selectNone;
    QButtonGroup* scanModeGroup;  // 1 quick, 2 deep
    QButtonGroup* fileTypeGroup;  // 3 default, 4 custom
    QButtonGroup* selectionGroup; // 1 all, 2 none
    QTreeWidget* treeStep2;       // one item per category, its types below

private:
    QLabel* addHeading(const QString& text);
    QRadioButton* addRadio(const QString& text);
    QCheckBox* addCheckBox(const QString& text);
};
