#include "wizard/Footer.h"

#include <QHBoxLayout>
#include <QLinearGradient>
#include <QPalette>
#include <QPushButton>

namespace {
constexpr int kHeight = 50;

QPushButton* linkButton(QWidget* parent, const char* objectName, const QString& text)
{
    auto* button = new QPushButton(text, parent);
    button->setObjectName(QLatin1String(objectName));
    button->setFlat(true);
    button->setStyleSheet(QStringLiteral("QPushButton{border:none;background:transparent;color:#2a4d7a;}"
                                         "QPushButton:hover{color:#0b5fc4;text-decoration:underline;}"));
    return button;
}
} // namespace

Footer::Footer(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("widgetFooter"));
    setFixedHeight(kHeight);
    QLinearGradient gradient(0, 0, 0, kHeight);
    gradient.setColorAt(0, QColor(204, 219, 235));
    gradient.setColorAt(1, QColor(170, 190, 215));
    QPalette palette = this->palette();
    palette.setBrush(QPalette::Active, QPalette::Window, gradient);
    palette.setBrush(QPalette::Inactive, QPalette::Window, gradient);
    setPalette(palette);
    setAutoFillBackground(true);

    pushButtonAbout = linkButton(this, "pushButtonAbout", tr("关于"));
    pushButtonContactUs = linkButton(this, "pushButtonContactUs", tr("联系我们"));
    pushButtonQQ = new QPushButton(this);
    pushButtonQQ->setObjectName(QStringLiteral("pushButtonQQ"));
    pushButtonQQ->setFlat(true);
    pushButtonQQ->setIcon(QPixmap(QStringLiteral(":./qq.png")));
    pushButtonQQ->setIconSize(QSize(83, 26));
    pushButtonQQ->setFixedSize(87, 30);
    pushButtonQQ->setStyleSheet(QStringLiteral("QPushButton{border:none;background:transparent;}"));

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(24, 0, 24, 0);
    layout->setSpacing(18);
    layout->addStretch(1);
    layout->addWidget(pushButtonQQ);
    layout->addWidget(pushButtonAbout);
    layout->addWidget(pushButtonContactUs);
}
