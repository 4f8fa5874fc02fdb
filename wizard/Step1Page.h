#pragma once
#include "wizard/StepPage.h"

class QLabel;
class QTreeWidget;

// Step 1: the disks and partitions to choose from. Disk and partition rows are
// all top-level items; column 0 keeps "%1|%2" (partition, letter) under
// Qt::UserRole on a partition row and nothing on a disk row, column 1 the disk
// number.
class Step1Page : public StepPage {
    Q_OBJECT
public:
    explicit Step1Page(QWidget* parent);

    QLabel* caption;
    QTreeWidget* deviceTree;
    QPushButton* openImageButton; // adds a disk or volume image file to the tree
    QPushButton* removeImageButton; // takes the current image's rows off again
    QPushButton* resumeButton; // shown while the chosen source has a saved scan of this mode
};
