#pragma once
#include <QDialog>
#include <QString>

namespace Ui {
class PreviewDialog;
}

// Shows one found file from a buffer the caller read: a picture at its own
// size, plain text, or a hexadecimal dump. The buffer stays the caller's and
// must be zero-filled behind the content.
class PreviewDialog : public QDialog {
    Q_OBJECT
public:
    enum View { PictureView, TextView, DumpView };

    PreviewDialog(const QString& fileName, const char* data, uint size, QWidget* parent = nullptr);
    ~PreviewDialog() override;

    // The part behind the last "."; empty for a name without one.
    static QString extensionOf(const QString& fileName);
    static View viewFor(const QString& extension);
    // At most 1000 lines of 16 bytes, each ended by "\n".
    static QString hexDump(const char* data, uint size);

private slots:
    void on_pushButton_clicked();

private:
    bool showPicture(const char* data, uint size, const QString& extension);
    void showText(const char* data, uint size);
    void showDump(const char* data, uint size);
    void showBrokenPictureNotice();

    Ui::PreviewDialog* ui;
};
