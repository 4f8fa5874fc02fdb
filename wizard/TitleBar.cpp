#include "wizard/TitleBar.h"
#include "app/HoverStyle.h"

#include <QHBoxLayout>
#include <QLabel>

namespace {
constexpr int kMinHeight = 34;
const QColor kBarColour(157, 195, 233);
} // namespace

TitleBar::TitleBar(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("widgetTitle"));
    setMinimumHeight(kMinHeight);
    setMaximumHeight(kMinHeight);
    HoverStyle::paintBackground(this, kBarColour);

    labelIcon = new QLabel(this);
    labelIcon->setObjectName(QStringLiteral("labelIcon"));
    labelIcon->setPixmap(QPixmap(QStringLiteral(":./main.png"))
                             .scaled(49, 36, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    labelTitle = new QLabel(QStringLiteral("Ostrel数据恢复"), this);
    labelTitle->setObjectName(QStringLiteral("labelTitle"));
    QFont font = labelTitle->font();
    font.setWeight(QFont::Bold);
    labelTitle->setFont(font);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(4, 0, 0, 0);
    layout->setSpacing(4);
    layout->addWidget(labelIcon);
    layout->addWidget(labelTitle, 1);
}
