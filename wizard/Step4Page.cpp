#include "wizard/Step4Page.h"

#include <QPushButton>

Step4Page::Step4Page(QWidget* parent) : StepPage(parent, QRect(447, 374, 127, 28), QRect())
{
    returnToMainButton = addButton(tr("返回主菜单"), QRect(579, 374, 127, 28));
    returnToMainButton->setObjectName(QStringLiteral("returnToMainButton"));
}
