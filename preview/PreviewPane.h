#pragma once
#include <QByteArray>
#include <QPixmap>
#include <QWidget>

class QLabel;
class QPlainTextEdit;
class QStackedLayout;

// The preview beside Step 3's file list: a picture fitted to the pane, text in
// a monospaced font in the encoding it most likely is, a hexadecimal dump for
// everything else. It shows what it is given; the caller reads the file.
class PreviewPane : public QWidget {
    Q_OBJECT
public:
    enum Shown { Nothing, Picture, Text, Dump };

    explicit PreviewPane(QWidget* parent);

    // content: the file's first bytes (all of it for a picture); null for one too large to read here.
    void showFile(const QString& fileName, const QByteArray& content, quint64 size);
    void clear();
    Shown shown() const { return current; }
    QString textShown() const;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void fitPicture();

    QLabel* title;
    QStackedLayout* stack;
    QLabel* picture;
    QPlainTextEdit* text;
    QPixmap original;
    Shown current = Nothing;
};
