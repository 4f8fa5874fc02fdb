#pragma once
#include "wizard/StepPage.h"

class QGridLayout;
class QLabel;
class QLineEdit;
class QProgressBar;

// Step 4: where to put the chosen files, and the restore itself.
class Step4Page : public StepPage {
    Q_OBJECT
public:
    explicit Step4Page(QWidget* parent);

    // A figure in red, as the page shows its values.
    static QString red(const QString& value);

    // A fresh page for a new run: the warning names this run's drive letter
    // ('@' for none), the restored figures and the bar go back to zero.
    void startRun(char driveLetter);

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
    QWidget* buildInformationPanel();
    // A caption, its value and its unit in one row of the panel's grid; returns the value.
    QLabel* addFigure(QGridLayout* grid, int row, int column, const QString& caption, QLabel** unit,
                      const QString& unitText);
};
