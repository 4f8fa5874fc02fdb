#include "wizard/StepPage.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
constexpr int kBoxMargin = 10;
constexpr int kContentMargin = 16;
constexpr int kButtonPointSize = 9;
const QSize kButtonSize(70, 25);
} // namespace

StepPage::StepPage(QWidget* parent, bool withNext) : QWidget(parent)
{
    box = new QWidget(this);
    box->setObjectName(QStringLiteral("box"));
    box->setAttribute(Qt::WA_StyledBackground);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kBoxMargin, kBoxMargin, kBoxMargin, kBoxMargin);
    layout->addWidget(box);

    auto* inside = new QVBoxLayout(box);
    inside->setContentsMargins(kContentMargin, kContentMargin, kContentMargin, kContentMargin);
    content = new QVBoxLayout;
    inside->addLayout(content, 1);
    buttonRow = new QHBoxLayout;
    buttonRow->addStretch(1);
    inside->addLayout(buttonRow);
    prevButton = addButton(tr("上一步"));
    buttonRow->addWidget(prevButton);
    nextButton = withNext ? addButton(tr("下一步")) : nullptr;
    if (nextButton)
        buttonRow->addWidget(nextButton);
}

QPushButton* StepPage::addButton(const QString& text, QWidget* parent)
{
    auto* button = new QPushButton(text, parent ? parent : box);
    button->setMinimumSize(kButtonSize);
    QFont font = button->font();
    font.setPointSize(kButtonPointSize);
    button->setFont(font);
    button->setStyleSheet(QStringLiteral("border:1px solid #707070;padding:0 10px"));
    return button;
}
