#include "dialogs/DialogAbout.h"
#include "app/AppFont.h"

#include <QLabel>

DialogAbout::DialogAbout(QWidget* parent)
    : FramelessDialog(parent, tr("关于"), QSize(690, 403), QLine(325, 60, 325, 260))
{
    auto* labelPic = new QLabel(widget);
    labelPic->setObjectName(QStringLiteral("labelPic"));
    labelPic->setGeometry(50, 49, 221, 101);
    labelPic->setAlignment(Qt::AlignCenter);
    labelPic->setPixmap(QPixmap(QStringLiteral(":./ostrel-big.png")).scaledToHeight(101, Qt::SmoothTransformation));

    auto* labelLeft = new QLabel(widget);
    labelLeft->setObjectName(QStringLiteral("labelLeft"));
    // Wide enough for the name in the fallback families too.
    labelLeft->setGeometry(50, 170, 262, 81);
    labelLeft->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    const QString family = QStringLiteral("'微软雅黑','%1'").arg(AppFont::family());
    labelLeft->setText(QStringLiteral("<p style=\"font-family:%1; font-size:25px; font-weight:600; color:#333333;"
                                      " margin:0;\">Ostrel数据恢复2015</p>"
                                      "<p style=\"font-family:%1; font-size:14px; font-weight:600; color:#333333;"
                                      " margin-top:8px;\">版本 2015.5.1</p>")
                           .arg(family));

    auto* labelRight = new QLabel(widget);
    labelRight->setObjectName(QStringLiteral("labelRight"));
    labelRight->setGeometry(360, 60, 290, 200);
    labelRight->setWordWrap(true);
    labelRight->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    labelRight->setText(tr("<p style=\"color:#333333; line-height:150%;\">"
                           "Ostrel数据恢复从 NTFS、FAT12/16/32 和 exFAT 分区中找回误删除、格式化和分区丢失后的文件。"
                           "扫描只读取磁盘，不会写入任何数据。</p>"
                           "<p style=\"color:#797979;\">Copyright © 2015 Ostrel 工作室</p>"));
}
