#include "wizard/StepPage.h"

#include <QPushButton>
#include <QVBoxLayout>

namespace {
constexpr int kBoxMargin = 10;
constexpr int kButtonPointSize = 9;
} // namespace

StepPage::StepPage(QWidget* parent, const QRect& prevAt, const QRect& nextAt) : QWidget(parent)
{
    box = new QWidget(this);
    box->setObjectName(QStringLiteral("box"));
    box->setAttribute(Qt::WA_StyledBackground);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kBoxMargin, kBoxMargin, kBoxMargin, kBoxMargin);
    layout->addWidget(box);
    prevButton = addButton(tr("上一步"), prevAt);
    nextButton = nextAt.isNull() ? nullptr : addButton(tr("下一步"), nextAt);
}

QPushButton* StepPage::addButton(const QString& text, const QRect& place)
{
    auto* button = new QPushButton(text, box);
    button->setGeometry(place);
    QFont font = button->font();
    font.setPointSize(kButtonPointSize);
    button->setFont(font);
    button->setStyleSheet(QStringLiteral("border:1px solid #707070"));
    return button;
}
