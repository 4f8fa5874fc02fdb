#include "wizard/Step1Page.h"
#include "wizard/DeviceTreeRows.h"

#include <QLabel>
#include <QTreeWidget>

Step1Page::Step1Page(QWidget* parent) : StepPage(parent, QRect(590, 502, 70, 25), QRect(672, 502, 70, 25))
{
    caption = new QLabel(box);
    caption->setGeometry(128, 12, 250, 32);
    QFont font = caption->font();
    font.setBold(true);
    caption->setFont(font);

    auto* frame = new QWidget(box);
    frame->setGeometry(128, 47, 616, 444);
    frame->setStyleSheet(QStringLiteral("border:1px solid #bfbec1"));
    deviceTree = new QTreeWidget(frame);
    deviceTree->setGeometry(1, 1, 614, 442);
    DeviceTreeRows::setupTree(deviceTree);
    openImageButton = addButton(tr("打开磁盘映像…"), QRect(128, 502, 120, 25));
}
