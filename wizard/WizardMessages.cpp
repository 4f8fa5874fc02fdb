#include "wizard/WizardMessages.h"
#include "app/AppFont.h"

#include <QIcon>
#include <QMessageBox>
#include <QPushButton>

namespace {
constexpr int kPointSize = 10;
const char* const kBoxStyle =
    "QMessageBox{background:#eaf0fe;}"
    "QMessageBox QLabel{color:#202020;}"
    "QMessageBox QPushButton{min-width:72px;min-height:24px;border:1px solid #7a9cd3;border-radius:3px;"
    "background:#ffffff;padding:0 10px;}"
    "QMessageBox QPushButton:hover{background:#e7effd;}"
    "QMessageBox QPushButton:default{background:#3d71bc;color:white;border:none;}"
    "QMessageBox QTextEdit{background:#ffffff;border:1px solid #c5c5c7;}";

void style(QMessageBox& box, QMessageBox::Icon icon, const QString& text)
{
    QFont font(QStringLiteral("SimSun"), kPointSize);
    font.setFamilies({QStringLiteral("SimSun"), AppFont::family()});
    box.setFont(font);
    box.setStyleSheet(QLatin1String(kBoxStyle));
    box.setIcon(icon);
    box.setWindowTitle(QObject::tr("提示"));
    box.setWindowIcon(QIcon());
    box.setText(text);
}
} // namespace

void WizardMessages::inform(QWidget* parent, const QString& text, const QString& details)
{
    QMessageBox box(parent);
    style(box, QMessageBox::Information, text);
    box.setDetailedText(details);
    QPushButton* ok = box.addButton(QObject::tr("确定"), QMessageBox::AcceptRole);
    box.setDefaultButton(ok);
    box.exec();
}

int WizardMessages::ask(QWidget* parent, const QString& text, const QStringList& buttons)
{
    QMessageBox box(parent);
    style(box, QMessageBox::Question, text);
    QList<QAbstractButton*> made;
    for (const QString& label : buttons)
        made.append(box.addButton(label, QMessageBox::ActionRole));
    if (!made.isEmpty())
        box.setDefaultButton(qobject_cast<QPushButton*>(made.first()));
    box.exec();
    return int(made.indexOf(box.clickedButton()));
}
