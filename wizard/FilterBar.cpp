#include "wizard/FilterBar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {
constexpr int kSizeWidth = 56;
constexpr int kDateWidth = 84;
constexpr int kDayMsecs = 24 * 3600 * 1000;
const char* const kKindStyle =
    "QPushButton{border:1px solid #a9b9d3;border-radius:9px;padding:1px 8px;background:white}"
    "QPushButton:checked{background:#3d71bc;color:white;border-color:#3d71bc}";
const char* const kBadField = "QLineEdit{border:1px solid #d84646}";
const char* const kField = "QLineEdit{border:1px solid #c5c5c7}";

// Reads one field into *value with parse; an empty field reads as unset.
template <typename Parse>
bool readField(QLineEdit* field, quint64* value, Parse parse)
{
    const QString text = field->text().trimmed();
    const bool ok = text.isEmpty() || parse(text, value);
    field->setStyleSheet(QLatin1String(ok ? kField : kBadField));
    return ok && !text.isEmpty();
}
} // namespace

FilterBar::FilterBar(QWidget* parent) : QWidget(parent)
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    for (int k = 0; k < FileKind::KindCount; ++k) {
        kindButtons[k] = new QPushButton(FileKind::label(FileKind::Kind(k)), this);
        kindButtons[k]->setCheckable(true);
        kindButtons[k]->setStyleSheet(QLatin1String(kKindStyle));
        connect(kindButtons[k], &QPushButton::toggled, this, &FilterBar::filterChanged);
        row->addWidget(kindButtons[k]);
    }
    row->addSpacing(8);
    row->addWidget(new QLabel(tr("大小"), this));
    minSize = addField(tr("最小"), kSizeWidth);
    row->addWidget(minSize);
    row->addWidget(new QLabel(QStringLiteral("–"), this));
    maxSize = addField(tr("最大"), kSizeWidth);
    row->addWidget(maxSize);
    row->addSpacing(8);
    row->addWidget(new QLabel(tr("日期"), this));
    after = addField(tr("起 yyyy-MM-dd"), kDateWidth);
    row->addWidget(after);
    row->addWidget(new QLabel(QStringLiteral("–"), this));
    before = addField(tr("止 yyyy-MM-dd"), kDateWidth);
    row->addWidget(before);
    row->addSpacing(8);
    name = addField(tr("搜索文件名"), 0);
    name->setClearButtonEnabled(true);
    row->addWidget(name, 1);
}

QLineEdit* FilterBar::addField(const QString& placeholder, int width)
{
    auto* field = new QLineEdit(this);
    field->setPlaceholderText(placeholder);
    field->setStyleSheet(QLatin1String(kField));
    if (width > 0)
        field->setFixedWidth(width);
    connect(field, &QLineEdit::textChanged, this, &FilterBar::filterChanged);
    return field;
}

ResultFilter FilterBar::filter() const
{
    ResultFilter f;
    quint32 kinds = 0;
    for (int k = 0; k < FileKind::KindCount; ++k)
        kinds |= kindButtons[k]->isChecked() ? 1u << k : 0;
    if (kinds)
        f.kinds = kinds; // none pressed: every kind
    readField(minSize, &f.minSize, ResultFilter::parseSize);
    if (!readField(maxSize, &f.maxSize, ResultFilter::parseSize))
        f.maxSize = ResultFilter().maxSize;
    readField(after, &f.afterMsecs, ResultFilter::parseDate);
    // The end date is a whole day.
    if (readField(before, &f.beforeMsecs, ResultFilter::parseDate))
        f.beforeMsecs += kDayMsecs;
    f.name = name->text().trimmed();
    return f;
}

void FilterBar::clear()
{
    const QSignalBlocker block(this);
    for (QPushButton* b : kindButtons)
        b->setChecked(false);
    for (QLineEdit* field : {minSize, maxSize, after, before, name})
        field->clear();
}
