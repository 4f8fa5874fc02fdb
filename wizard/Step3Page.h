#pragma once
#include "wizard/StepPage.h"

class QListWidget;
class QTreeView;
class QTreeWidget;

// Step 3: the running scan and its results, the folder tree on the left and
// the files of the chosen folder as a list or as icons on the right.
class Step3Page : public StepPage {
    Q_OBJECT
public:
    explicit Step3Page(QWidget* parent);

    QTreeView* treeStep3;
    QTreeWidget* treeStep3ForList;
    QListWidget* listStep3ForIcon;
};
