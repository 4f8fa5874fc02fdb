#pragma once
#include <QModelIndex>
#include <QString>
#include <QtGlobal>

class QListWidget;
class QTreeWidget;
class QWidget;

// What the wizard carries from page to page. A mode button resets it; the
// widgets keep their own state across a reset.
struct WizardState {
    int diskNumber = -1;
    int partitionNumber = -1; // -1 for none or for a whole disk
    char driveLetter = '@';   // '@' for none
    QString fileFilter = QStringLiteral("*");
    quint8 displayMode = 1; // 1 file list, 2 icon list
    quint64 doExtra = 0;    // 1: the scan also carves by signature
    bool scanRunning = true;
    QWidget* currentPrevButton = nullptr;
    QWidget* currentNextButton = nullptr;
    QListWidget* currentIconList = nullptr;
    QTreeWidget* currentFileList = nullptr;
    bool scanFinished = false;
    int scanTotal = 10000000;
    quint64 resultCount = 0; // survives a reset
    QModelIndex currentFolder;
    QString diskName; // survives a reset
    int elapsedSeconds = 0;
    int selectedCount = 0;
    quint64 selectedSize = 0;

    // Back to the values above, except the last scan's count and disk name.
    void reset()
    {
        WizardState fresh;
        fresh.resultCount = resultCount;
        fresh.diskName = diskName;
        *this = fresh;
    }
};
