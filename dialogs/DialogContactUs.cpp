#include "dialogs/DialogContactUs.h"
#include "dialogs/QqScript.h"

#include <QEvent>
#include <QLabel>
#include <QPushButton>

namespace {
QLabel* richLabel(QWidget* parent, const char* objectName, const QRect& place, const QString& html)
{
    auto* label = new QLabel(html, parent);
    label->setObjectName(QLatin1String(objectName));
    label->setGeometry(place);
    label->setTextFormat(Qt::RichText);
    return label;
}
} // namespace

DialogContactUs::DialogContactUs(QWidget* parent)
    : FramelessDialog(parent, tr("联系我们"), QSize(693, 405), QLine(100, 164, 576, 164))
{
    richLabel(widget, "label", QRect(100, 40, 300, 110),
              tr("<p style=\"color:#333333; line-height:190%;\">QQ：<br>"
                 "电话：<span style=\"color:#e0661f; font-weight:600;\">400-000-5713</span></p>"));
    richLabel(widget, "label_2", QRect(100, 180, 340, 120),
              tr("<p style=\"color:#333333; line-height:180%;\">工作时间：8:00-22:00（周一到周日）<br>"
                 "主页：<a href=\"https://ostrel.example.org\">ostrel.example.org</a><br>"
                 "技术支持：support@ostrel.example.org</p>"))
        ->setOpenExternalLinks(true);

    auto* labelPic = new QLabel(widget);
    labelPic->setObjectName(QStringLiteral("labelPic"));
    labelPic->setGeometry(420, 14, 177, 128);
    labelPic->setPixmap(QPixmap(QStringLiteral(":./ostrel-big.png")));

    auto* labelWeiXin = new QLabel(widget);
    labelWeiXin->setObjectName(QStringLiteral("labelWeiXin"));
    labelWeiXin->setGeometry(470, 176, 110, 110);
    labelWeiXin->setPixmap(QPixmap(QStringLiteral(":./weixin.jpg")).scaled(110, 110, Qt::KeepAspectRatio,
                                                                               Qt::SmoothTransformation));

    QLabel* label3 = richLabel(widget, "label_3", QRect(462, 292, 140, 24),
                               tr("<span style=\"color:#ff5500;\">扫一扫有惊喜！</span>"));
    QFont font = label3->font();
    font.setPointSize(10);
    font.setWeight(QFont::DemiBold);
    label3->setFont(font);
    label3->setAlignment(Qt::AlignCenter);

    pushButtonQQ = new QPushButton(widget);
    pushButtonQQ->setObjectName(QStringLiteral("pushButtonQQ"));
    pushButtonQQ->setFlat(true);
    pushButtonQQ->setIcon(QPixmap(QStringLiteral(":./qq.png")));
    pushButtonQQ->setIconSize(QSize(83, 26));
    pushButtonQQ->setGeometry(140, 50, 87, 30);
    pushButtonQQ->setStyleSheet(QStringLiteral("QPushButton{border:none;background:transparent;}"));
    pushButtonQQ->installEventFilter(this);
    QMetaObject::connectSlotsByName(this);
}

bool DialogContactUs::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == pushButtonQQ) {
        if (event->type() == QEvent::Enter)
            pushButtonQQ->setCursor(Qt::PointingHandCursor);
        else if (event->type() == QEvent::Leave)
            pushButtonQQ->setCursor(Qt::ArrowCursor);
    }
    return FramelessDialog::eventFilter(watched, event);
}

void DialogContactUs::on_pushButtonQQ_clicked()
{
    QqScript::run();
}
