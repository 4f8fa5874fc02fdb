#include "wizard/Step1Page.h"
#include "wizard/DeviceTreeRows.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

Step1Page::Step1Page(QWidget* parent) : StepPage(parent, true)
{
    caption = new QLabel(box);
    QFont font = caption->font();
    font.setBold(true);
    caption->setFont(font);
    content->addWidget(caption);

    deviceTree = new QTreeWidget(box);
    deviceTree->setStyleSheet(QStringLiteral("QTreeWidget{border:1px solid #bfbec1}"));
    DeviceTreeRows::setupTree(deviceTree);
    content->addWidget(deviceTree, 1);

    openImageButton = addButton(tr("打开磁盘映像…"));
    removeImageButton = addButton(tr("移除映像"));
    removeImageButton->setEnabled(false);
    buttonRow->insertWidget(0, openImageButton);
    buttonRow->insertWidget(1, removeImageButton);
    resumeButton = addButton(tr("继续上次的扫描"));
    resumeButton->hide();
    buttonRow->insertWidget(2, resumeButton);
}
