#pragma once
#include "wizard/StepPage.h"

class FilterBar;
class MyButton;
class PreviewPane;
class QButtonGroup;
class QHBoxLayout;
class QLabel;
class QListWidget;
class QProgressBar;
class QSplitter;
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
    QLabel* foundLabel;   // percent done and files found
    QLabel* summaryLabel; // what the scan found, by kind, once it ended

    QHBoxLayout* toolRow; // times, counts and the display switch
    FilterBar* filterBar;
    QSplitter* splitter;  // tree | files | whatever a pane adds
    QTreeView* treeStep3;
    QTreeWidget* treeStep3ForList;
    QListWidget* listStep3ForIcon;
    PreviewPane* previewPane;
    QButtonGroup* displayGroup; // 1 list, 2 icons

private:
    void buildScanControls();
    void buildResultViews();
    void buildDisplaySwitch();
    QLabel* addLabel(const QString& text, QHBoxLayout* row);
};
