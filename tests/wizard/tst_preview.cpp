#include "WizardTestKit.h"
#include "preview/PreviewDialog.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTextEdit>
#include <QtTest>

namespace {
// The content and the zero bytes behind it, as the result browser hands it over.
QByteArray padded(const QByteArray& content)
{
    return content + QByteArray(4096, '\0');
}

QString text(const PreviewDialog& d, const char* name)
{
    return d.findChild<QLabel*>(QLatin1String(name))->text();
}

QTextEdit* editOf(const PreviewDialog& d)
{
    return d.findChild<QTextEdit*>(QStringLiteral("textEdit"));
}
} // namespace

class TestPreview : public QObject {
    Q_OBJECT
private slots:
    void viewByExtension_data();
    void viewByExtension();
    void dumpOf17Bytes();
    void dumpStopsAt1000Lines();
    void pictureAtItsOwnSize();
    void brokenPictureFallsBackToTheDump();
    void textEndsAtTheFirstZero();
};

void TestPreview::viewByExtension_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("extension");
    QTest::addColumn<int>("view");
    QTest::newRow("several dots") << "report.final.txt" << "txt" << int(PreviewDialog::TextView);
    QTest::newRow("case ignored") << "NOTES.Txt" << "Txt" << int(PreviewDialog::TextView);
    QTest::newRow("picture") << "PHOTO.JPG" << "JPG" << int(PreviewDialog::PictureView);
    QTest::newRow("tif isn't TIFF") << "scan.tif" << "tif" << int(PreviewDialog::DumpView);
    QTest::newRow("no dot") << "README" << "" << int(PreviewDialog::DumpView);
    QTest::newRow("trailing dot") << "name." << "" << int(PreviewDialog::DumpView);
    QTest::newRow("leading dot") << ".bashrc" << "bashrc" << int(PreviewDialog::DumpView);
    QTest::newRow("archive") << "a.tar.gz" << "gz" << int(PreviewDialog::DumpView);
}

void TestPreview::viewByExtension()
{
    QFETCH(QString, name);
    QFETCH(QString, extension);
    QFETCH(int, view);
    QCOMPARE(PreviewDialog::extensionOf(name), extension);
    QCOMPARE(int(PreviewDialog::viewFor(extension)), view);
}

void TestPreview::dumpOf17Bytes()
{
    const QByteArray data = padded("ABCDEFGHIJKLMNO\x01Q");
    const QString want = QStringLiteral("0000  41 42 43 44 45 46 47 48   49 4A 4B 4C 4D 4E 4F 01       ABCDEFGHIJKLMNO.\n") +
                         QStringLiteral("0010  51 ") + QString(7 * 3, ' ') + QStringLiteral("  ") + QString(8 * 3, ' ') +
                         QStringLiteral("  ") + QStringLiteral("    Q") + QString(15 * 2, ' ') + QLatin1Char('\n');
    QCOMPARE(PreviewDialog::hexDump(data.constData(), 17), want);

    PreviewDialog dialog(QStringLiteral("data.bin"), data.constData(), 17);
    QCOMPARE(editOf(dialog)->toPlainText(), want);
    QVERIFY(editOf(dialog)->isReadOnly());
}

void TestPreview::dumpStopsAt1000Lines()
{
    QByteArray content(16001, 'x');
    content[15999] = 'y';
    content[16000] = 'z';
    const QByteArray data = padded(content);
    const QStringList lines = PreviewDialog::hexDump(data.constData(), 16001).split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 1000);
    QVERIFY(lines.last().startsWith(QStringLiteral("3E70  78 ")));
    QVERIFY(lines.last().endsWith(QStringLiteral("xxxxxxxxxxxxxxxy")));
}

void TestPreview::pictureAtItsOwnSize()
{
    const QByteArray png = pngBytes(300, 200);
    const QByteArray data = padded(png);

    PreviewDialog dialog(QStringLiteral("Shot.Png"), data.constData(), uint(png.size()));
    QCOMPARE(text(dialog, "labelPicSize"), QStringLiteral("原始尺寸：300 x 200"));
    QTextEdit* edit = editOf(dialog);
    QVERIFY(edit->isReadOnly());
    QVERIFY(edit->document()->toHtml().contains(QStringLiteral("<img")));
}

void TestPreview::brokenPictureFallsBackToTheDump()
{
    const QByteArray data = padded("not a picture");
    MessageRecorder messages; // the notice is modal inside the constructor
    PreviewDialog dialog(QStringLiteral("broken.jpg"), data.constData(), 13);
    QCOMPARE(messages.texts, QStringList({QStringLiteral("图片文件无法预览，可能已经损坏。")}));
    QVERIFY(editOf(dialog)->toPlainText().startsWith(QStringLiteral("0000  6E 6F 74 ")));
    QCOMPARE(text(dialog, "labelPicSize"), QString());
}

void TestPreview::textEndsAtTheFirstZero()
{
    const QByteArray data = padded(QByteArray("hello 世界\0after", 18));
    PreviewDialog dialog(QStringLiteral("notes.TXT"), data.constData(), 18);
    QCOMPARE(editOf(dialog)->toPlainText(), QStringLiteral("hello 世界"));
    QVERIFY(editOf(dialog)->isReadOnly());
}

QTEST_MAIN(TestPreview)
#include "tst_preview.moc"
