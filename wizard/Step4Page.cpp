#include "wizard/Step4Page.h"

#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>

namespace {
constexpr int kPointSize = 9;
constexpr int kValueWidth = 50;
constexpr int kUnitWidth = 40;

QLabel* plainLabel(const QString& text, QWidget* parent, const QPoint& at)
{
    auto* label = new QLabel(text, parent);
    label->setStyleSheet(QStringLiteral("border:none"));
    label->move(at);
    label->adjustSize();
    return label;
}
} // namespace

Step4Page::Step4Page(QWidget* parent, char driveLetter) : StepPage(parent, QRect(447, 374, 127, 28), QRect())
{
    QFont font = box->font();
    font.setPointSize(kPointSize);
    box->setFont(font);

    auto* caption = new QLabel(tr("请选择一个目录存放恢复出来的文件："), box);
    caption->setGeometry(183, 109, 244, 21);
    restoreDirEdit = new QLineEdit(box);
    restoreDirEdit->setObjectName(QStringLiteral("restoreDirEdit"));
    restoreDirEdit->setGeometry(183, 135, 445, 28);
    restoreDirEdit->setReadOnly(true);
    restoreDirEdit->setStyleSheet(QStringLiteral("border:1px solid #d7dfee"));
    chooseDir = new QPushButton(tr("浏览"), box);
    chooseDir->setGeometry(631, 135, 60, 25);

    buildInformationPanel(driveLetter);

    restoreProgressBar = new QProgressBar(box);
    restoreProgressBar->setGeometry(183, 312, 519, 31);
    restoreProgressBar->setRange(0, 100);
    restoreProgressBar->setValue(0);
    restoreProgressBar->setTextVisible(false);

    restoreButton = addButton(tr("恢复"), QRect(183, 374, 127, 28));
    browseButton = addButton(tr("浏览已恢复的文件"), QRect(315, 374, 127, 28));
    returnToMainButton = addButton(tr("返回主菜单"), QRect(579, 374, 127, 28));
    returnToMainButton->setObjectName(QStringLiteral("returnToMainButton"));
}

QString Step4Page::red(const QString& value)
{
    return QStringLiteral("<font color='red'>%1</font>").arg(value);
}

void Step4Page::buildInformationPanel(char driveLetter)
{
    auto* panel = new QWidget(box);
    panel->setGeometry(183, 201, 512, 82);
    panel->setAttribute(Qt::WA_StyledBackground);
    panel->setStyleSheet(QStringLiteral("background:#eef4fd;border:1px solid #a9c6ec;border-radius:4px;"));
    warning = plainLabel(QStringLiteral("如果 <font color='red'>%1</font> 盘有文件需要恢复，请另外选择目录存放恢复出来的文件。")
                             .arg(QLatin1Char(driveLetter)),
                         panel, QPoint(15, 9));
    warning->resize(420, 21);
    QLabel* unused = nullptr;
    selectedCount = addFigure(panel, tr("选择恢复文件："), {15, 125, 175, 35}, &unused, tr("个"));
    selectedSize = addFigure(panel, tr("文件大小总计："), {15, 125, 175, 58}, &selectedUnit, QString());
    restoredCount = addFigure(panel, tr("已恢复的文件："), {231, 385, 435, 35}, &unused, tr("个"));
    restoredSize = addFigure(panel, tr("已恢复的文件大小："), {231, 385, 435, 58}, &restoredUnit, QStringLiteral("KB"));
    restoredCount->setText(red(QStringLiteral("0")));
    restoredSize->setText(red(QStringLiteral("0")));
}

QLabel* Step4Page::addFigure(QWidget* panel, const QString& caption, const FigureRow& row, QLabel** unit,
                             const QString& unitText)
{
    plainLabel(caption, panel, QPoint(row.captionLeft, row.top));
    QLabel* value = plainLabel(QString(), panel, QPoint(row.valueLeft, row.top));
    value->resize(kValueWidth, value->height());
    value->setTextFormat(Qt::RichText);
    *unit = plainLabel(unitText, panel, QPoint(row.unitLeft, row.top));
    (*unit)->resize(kUnitWidth, (*unit)->height());
    return value;
}
