#pragma once
#include "wizard/StepPage.h"

class MyButton;
class QButtonGroup;
class QLabel;
class QListWidget;
class QProgressBar;
class QTreeView;
class QTreeWidget;

// Step 3: the running scan and its results, the folder tree on the left and
// the files of the chosen folder as a list or as icons on the right.
class Step3Page : public StepPage {
    Q_OBJECT
public:
    explicit Step3Page(QWidget* parent);

    QProgressBar* scanProgressBar;
    MyButton* pauseButton;
    MyButton* stopButton;
    QLabel* elapsedLabel;
    QLabel* remainingLabel;

    QTreeView* treeStep3;
    QTreeWidget* treeStep3ForList;
    QListWidget* listStep3ForIcon;
    QPushButton* fileNameButton;
    QPushButton* lastModificationButton;
    QPushButton* fileSizeButton;
    QButtonGroup* displayGroup; // 1 list, 2 icons

private:
    void buildScanControls();
    void buildResultViews();
    void buildListHeader();
    void buildDisplaySwitch();
    QLabel* addLabel(const QString& text, int left, int top);
    QPushButton* addHeaderButton(const QString& text, const QRect& place);
};
