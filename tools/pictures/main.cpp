// Draws every picture of the resource tree into the folder given as argument.
#include "IcoWriter.h"
#include "Painter.h"
#include "filetypes/FileTypeCatalogue.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMap>
#include <QTextStream>

namespace {

struct TypeLook {
    QColor colour;
    QString label;
};

// One colour per catalogue category, in catalogue order.
const QColor kCategoryColours[] = {
    QColor(47, 111, 208), QColor(230, 120, 20), QColor(142, 68, 173), QColor(214, 58, 58), QColor(26, 156, 143),
    QColor(222, 160, 0), QColor(120, 85, 72), QColor(0, 151, 167), QColor(96, 125, 139),
};

// Icons that several kinds share get a label of their own.
const QMap<int, TypeLook> kSharedLooks = {
    {30, {QColor(230, 120, 20), QStringLiteral("RAW")}},
    {35, {QColor(214, 58, 58), QStringLiteral("MP4")}},
    {361, {QColor(214, 58, 58), QStringLiteral("VID")}},
    {22, {QColor(96, 125, 139), QStringLiteral("DOC")}},
};

// The look of each icon number: its first row's category colour and extension.
QMap<int, TypeLook> typeLooks()
{
    QMap<int, TypeLook> looks = kSharedLooks;
    int category = 0;
    for (const FileTypeCatalogue::Category& c : FileTypeCatalogue::categories()) {
        for (const FileTypeCatalogue::Row& row : c.rows) {
            if (looks.contains(row.icon))
                continue;
            const QString ext = QString::fromUtf8(row.extensions).section(QLatin1Char(';'), 0, 0).mid(1);
            looks.insert(row.icon, {kCategoryColours[category], ext.left(3).toUpper()});
        }
        ++category;
    }
    return looks;
}

QList<QImage> sizes(QImage (*draw)(int), const QList<int>& edges)
{
    QList<QImage> images;
    for (int edge : edges)
        images.append(draw(edge));
    return images;
}

bool save(const QDir& dir, const QString& name, const QImage& image)
{
    return image.save(dir.filePath(name));
}

bool writeTypeIcons(const QDir& dir)
{
    const QMap<int, TypeLook> looks = typeLooks();
    bool ok = dir.mkpath(QStringLiteral("icons"));
    for (auto it = looks.cbegin(); it != looks.cend(); ++it) {
        QList<QImage> images;
        // Number 42 carries large images too; every other type icon is 16 pixels.
        const QList<int> edges = it.key() == 42 ? QList<int>{48, 40, 32, 24, 20, 16} : QList<int>{16};
        for (int edge : edges)
            images.append(Painter::typeIcon(edge, it->colour, it->label));
        ok &= IcoWriter::write(dir.filePath(QStringLiteral("icons/%1.ico").arg(it.key())), images);
    }
    return ok;
}

bool writeWindowPictures(const QDir& dir)
{
    bool ok = IcoWriter::write(dir.filePath(QStringLiteral("32方形.ico")), {Painter::logo(32)});
    ok &= save(dir, QStringLiteral("main.png"), Painter::titleIcon());
    ok &= save(dir, QStringLiteral("ostrel-big.png"), Painter::productPicture());
    ok &= save(dir, QStringLiteral("file.png"), Painter::modePicture(1));
    ok &= save(dir, QStringLiteral("format.png"), Painter::modePicture(2));
    ok &= save(dir, QStringLiteral("partition.png"), Painter::modePicture(3));
    ok &= save(dir, QStringLiteral("search.png"), Painter::searchPicture());
    ok &= save(dir, QStringLiteral("border.png"), Painter::border());
    ok &= save(dir, QStringLiteral("yes.png"), Painter::tick());
    ok &= save(dir, QStringLiteral("phone.png"), Painter::phone());
    ok &= save(dir, QStringLiteral("qq.png"), Painter::qqButton());
    ok &= Painter::contactCode().convertToFormat(QImage::Format_RGB32).save(dir.filePath("weixin.jpg"), "JPG", 95);
    ok &= save(dir, QStringLiteral("defaultPic.png"), Painter::defaultPicture());
    ok &= save(dir, QStringLiteral("list.png"), Painter::listMode(false));
    ok &= save(dir, QStringLiteral("showIcon.png"), Painter::listMode(true));
    ok &= save(dir, QStringLiteral("pause1.png"), Painter::scanControl(0, 32));
    ok &= save(dir, QStringLiteral("resume1.png"), Painter::scanControl(1, 32));
    ok &= save(dir, QStringLiteral("stop1.png"), Painter::scanControl(2, 24));
    const char* const arrows[] = {"up.png", "down.png", "left.png", "right.png"};
    for (int i = 0; i < 4; ++i)
        ok &= save(dir, QLatin1String(arrows[i]), Painter::arrow(i));
    return ok;
}

bool writeIcons(const QDir& dir)
{
    bool ok = IcoWriter::write(dir.filePath(QStringLiteral("disk.ico")),
                               sizes(Painter::disk, {48, 40, 32, 24, 20, 16}));
    ok &= IcoWriter::write(dir.filePath(QStringLiteral("null.ico")),
                           sizes(Painter::unknownFile, {48, 44, 40, 36, 32, 28, 24, 20, 16}));
    ok &= IcoWriter::write(dir.filePath(QStringLiteral("folder_open.ico")), {Painter::folder(true)});
    ok &= IcoWriter::write(dir.filePath(QStringLiteral("folder_closed.ico")), {Painter::folder(false)});
    ok &= IcoWriter::write(dir.filePath(QStringLiteral("unchecked.ico")), {Painter::checkBox(0)});
    ok &= IcoWriter::write(dir.filePath(QStringLiteral("checked1.ico")), {Painter::checkBox(1)});
    ok &= IcoWriter::write(dir.filePath(QStringLiteral("checked.ico")), {Painter::checkBox(2)});
    return ok;
}

// Lists every picture at the root of the resource tree, so that both
// ":./name" and ":/name" reach it.
bool writeQrc(const QDir& dir)
{
    QFile qrc(dir.filePath(QStringLiteral("resources.qrc")));
    if (!qrc.open(QIODevice::WriteOnly | QIODevice::Text))
        return false;
    QTextStream out(&qrc);
    out << "<!DOCTYPE RCC><RCC version=\"1.0\">\n<qresource prefix=\"/\">\n";
    const QStringList pictures{QStringLiteral("*.png"), QStringLiteral("*.ico"), QStringLiteral("*.jpg")};
    for (const QString& name : dir.entryList(pictures, QDir::Files, QDir::Name))
        out << "    <file>" << name << "</file>\n";
    QStringList icons = QDir(dir.filePath(QStringLiteral("icons"))).entryList(pictures, QDir::Files);
    std::sort(icons.begin(), icons.end(), [](const QString& a, const QString& b) {
        return a.section(QLatin1Char('.'), 0, 0).toInt() < b.section(QLatin1Char('.'), 0, 0).toInt();
    });
    for (const QString& name : icons)
        out << "    <file>icons/" << name << "</file>\n";
    out << "</qresource>\n</RCC>\n";
    return true;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    if (argc != 2) {
        QTextStream(stderr) << "usage: make_pictures RESOURCE_DIR\n";
        return 2;
    }
    const QDir dir(QString::fromLocal8Bit(argv[1]));
    const bool ok = writeWindowPictures(dir) && writeIcons(dir) && writeTypeIcons(dir) && writeQrc(dir);
    return ok ? 0 : 1;
}
