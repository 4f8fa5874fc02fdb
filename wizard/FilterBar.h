#pragma once
#include "results/ResultFilter.h"

#include <QWidget>

class QLineEdit;
class QPushButton;

// Step 3's filters: a button per kind of file, a size range, a date range and
// a name search. Every change applies at once (filterChanged).
class FilterBar : public QWidget {
    Q_OBJECT
public:
    explicit FilterBar(QWidget* parent);

    // What the fields say now; a field that can't be read is left open and
    // shown in red.
    ResultFilter filter() const;
    void clear();

    QPushButton* kindButtons[FileKind::KindCount];
    QLineEdit* minSize;
    QLineEdit* maxSize;
    QLineEdit* after;
    QLineEdit* before;
    QLineEdit* name;

signals:
    void filterChanged();

private:
    QLineEdit* addField(const QString& placeholder, int width);
};
