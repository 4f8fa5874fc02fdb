#include "wizard/Step4Page.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
constexpr int kPointSize = 9;
constexpr int kColumnWidth = 560; // the page's content stands in a centred column
constexpr int kFieldHeight = 28;
const char* const kRestoreStyle =
    "QPushButton{background:#3d71bc;color:white;border:none;border-radius:3px;padding:0 24px;font-weight:bold}"
    "QPushButton:hover{background:#4a86d8}QPushButton:disabled{background:#a9b9d3}";

QLabel* plainLabel(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setStyleSheet(QStringLiteral("border:none;background:transparent"));
    return label;
}
} // namespace

Step4Page::Step4Page(QWidget* parent) : StepPage(parent, false)
{
    QFont font = box->font();
    font.setPointSize(kPointSize);
    box->setFont(font);

    auto* column = new QWidget(box);
    column->setMaximumWidth(kColumnWidth);
    auto* rows = new QVBoxLayout(column);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(12);
    rows->addStretch(1);
    rows->addWidget(new QLabel(tr("请选择一个目录存放恢复出来的文件："), column));
    auto* pathRow = new QHBoxLayout;
    restoreDirEdit = new QLineEdit(column);
    restoreDirEdit->setObjectName(QStringLiteral("restoreDirEdit"));
    restoreDirEdit->setFixedHeight(kFieldHeight);
    restoreDirEdit->setStyleSheet(QStringLiteral("border:1px solid #a9b9d3"));
    chooseDir = addButton(tr("浏览"), column);
    chooseDir->setFixedHeight(kFieldHeight);
    pathRow->addWidget(restoreDirEdit, 1);
    pathRow->addWidget(chooseDir);
    rows->addLayout(pathRow);
    rows->addWidget(buildInformationPanel());

    restoreProgressBar = new QProgressBar(column);
    restoreProgressBar->setRange(0, 100);
    restoreProgressBar->setValue(0);
    restoreProgressBar->setTextVisible(false);
    restoreProgressBar->setFixedHeight(kFieldHeight);
    rows->addWidget(restoreProgressBar);

    auto* actionRow = new QHBoxLayout;
    restoreButton = new QPushButton(tr("恢复"), column);
    restoreButton->setObjectName(QStringLiteral("restoreButton"));
    restoreButton->setStyleSheet(QLatin1String(kRestoreStyle));
    restoreButton->setMinimumHeight(kFieldHeight + 4);
    browseButton = addButton(tr("浏览已恢复的文件"), column);
    browseButton->setMinimumHeight(kFieldHeight);
    actionRow->addWidget(restoreButton);
    actionRow->addWidget(browseButton);
    actionRow->addStretch(1);
    rows->addLayout(actionRow);
    rows->addStretch(2);

    auto* centre = new QHBoxLayout;
    centre->addStretch(1);
    centre->addWidget(column, 4);
    centre->addStretch(1);
    content->addLayout(centre, 1);

    returnToMainButton = addButton(tr("返回主菜单"));
    returnToMainButton->setObjectName(QStringLiteral("returnToMainButton"));
    buttonRow->addWidget(returnToMainButton);
    startRun('@');
}

QString Step4Page::red(const QString& value)
{
    return QStringLiteral("<font color='red'>%1</font>").arg(value);
}

void Step4Page::startRun(char driveLetter)
{
    warning->setText(QStringLiteral("如果 <font color='red'>%1</font> 盘有文件需要恢复，请另外选择目录存放恢复出来的文件。")
                         .arg(QLatin1Char(driveLetter)));
    restoredCount->setText(red(QStringLiteral("0")));
    restoredSize->setText(red(QStringLiteral("0")));
    restoredUnit->setText(QStringLiteral("KB"));
    restoreProgressBar->setValue(0);
}

QWidget* Step4Page::buildInformationPanel()
{
    auto* panel = new QWidget(box);
    panel->setObjectName(QStringLiteral("panel"));
    panel->setAttribute(Qt::WA_StyledBackground);
    panel->setStyleSheet(QStringLiteral("QWidget#panel{background:#eef4fd;border:1px solid #a9c6ec;border-radius:4px;}"));
    auto* grid = new QGridLayout(panel);
    grid->setContentsMargins(15, 9, 15, 9);
    warning = plainLabel(QString(), panel);
    warning->setWordWrap(true);
    grid->addWidget(warning, 0, 0, 1, 6);
    QLabel* unused = nullptr;
    selectedCount = addFigure(grid, 1, 0, tr("选择恢复文件："), &unused, tr("个"));
    selectedSize = addFigure(grid, 2, 0, tr("文件大小总计："), &selectedUnit, QString());
    restoredCount = addFigure(grid, 1, 3, tr("已恢复的文件："), &unused, tr("个"));
    restoredSize = addFigure(grid, 2, 3, tr("已恢复的文件大小："), &restoredUnit, QStringLiteral("KB"));
    grid->setColumnStretch(2, 1);
    grid->setColumnStretch(5, 1);
    return panel;
}

QLabel* Step4Page::addFigure(QGridLayout* grid, int row, int column, const QString& caption, QLabel** unit,
                             const QString& unitText)
{
    QWidget* panel = grid->parentWidget();
    grid->addWidget(plainLabel(caption, panel), row, column);
    QLabel* value = plainLabel(QString(), panel);
    value->setTextFormat(Qt::RichText);
    value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    grid->addWidget(value, row, column + 1);
    *unit = plainLabel(unitText, panel);
    grid->addWidget(*unit, row, column + 2);
    return value;
}
