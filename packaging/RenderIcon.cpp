// Writes the window's icon as the PNG a desktop's icon theme takes:
//   render_icon SOURCE.ico OUT.png SIZE
#include <QGuiApplication>
#include <QImage>

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    if (argc != 4)
        return 2;
    const int size = QByteArray(argv[3]).toInt();
    QImage icon(QString::fromLocal8Bit(argv[1]));
    if (icon.isNull() || size <= 0)
        return 1;
    if (icon.width() != size || icon.height() != size)
        icon = icon.scaled(size, size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return icon.save(QString::fromLocal8Bit(argv[2]), "PNG") ? 0 : 1;
}
