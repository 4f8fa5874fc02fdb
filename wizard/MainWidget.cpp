#include "wizard/MainWidget.h"

namespace {
constexpr int kWidth = 884;
constexpr int kHeight = 667;
}

MainWidget::MainWidget(QWidget* parent) : QWidget(parent)
{
    setWindowTitle(QStringLiteral("Ostrel数据恢复"));
    resize(kWidth, kHeight);
    setMinimumSize(kWidth, kHeight);
}
