#pragma once
#include "wizard/StepPage.h"

class QLabel;
class QLineEdit;
class QProgressBar;

// Step 4: where to put the chosen files, and the restore itself.
class Step4Page : public StepPage {
    Q_OBJECT
public:
    // The warning names the drive letter chosen when the page is first built.
    Step4Page(QWidget* parent, char driveLetter);

    // A figure in red, as the page shows its values.
    static QString red(const QString& value);

    QLineEdit* restoreDirEdit;
    QPushButton* chooseDir;
    QLabel* warning;
    QLabel* selectedCount;
    QLabel* selectedSize;
    QLabel* selectedUnit;
    QLabel* restoredCount;
    QLabel* restoredSize;
    QLabel* restoredUnit;
    QProgressBar* restoreProgressBar;
    QPushButton* restoreButton;
    QPushButton* browseButton;
    QPushButton* returnToMainButton;

private:
    void buildInformationPanel(char driveLetter);
    struct FigureRow {
        int captionLeft;
        int valueLeft;
        int unitLeft;
        int top;
    };
    // A caption, its value and its unit in one row of the panel; returns the value.
    QLabel* addFigure(QWidget* panel, const QString& caption, const FigureRow& row, QLabel** unit,
                      const QString& unitText);
};
