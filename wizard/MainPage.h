#pragma once
#include <QList>
#include <QWidget>

class QLabel;
class QPushButton;

// The first page: the three recovery modes, each a picture button in a frame
// with its caption and what it is good for.
class MainPage : public QWidget {
    Q_OBJECT
public:
    explicit MainPage(QWidget* parent);

    QPushButton* pushButtonFileRecovery;
    QPushButton* pushButtonFormatRecovery;
    QPushButton* pushButtonPartitionRecovery;
    QList<QPushButton*> modeButtons() const;

private:
    struct Mode {
        const char* button;
        const char* picture;
        QString caption;
        QStringList lines; // the first two get a tick mark
    };
    QPushButton* addMode(const Mode& mode, int index);
    void addLeftColumn();
    QLabel* addPicture(const char* objectName, const char* path, const QPoint& at);
};
