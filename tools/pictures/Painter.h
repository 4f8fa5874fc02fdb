#pragma once
#include <QColor>
#include <QImage>
#include <QString>

// The drawings behind every picture of the window, in one flat look: rounded
// shapes, the blue of the title bar, white glyphs.
namespace Painter {
QImage logo(int size);
QImage titleIcon();                     // 55 x 40
QImage productPicture();                // 177 x 128
QImage modePicture(int mode);           // 112 x 102; 1 file, 2 format, 3 partition
QImage searchPicture();                 // 148 x 149
QImage border();                        // 459 x 116
QImage tick();                          // 20 x 20
QImage phone();                         // 55 x 55
QImage qqButton();                      // 83 x 26
QImage contactCode();                   // square, for the contact dialog
QImage disk(int size);
QImage folder(bool open);               // 16 x 16
QImage unknownFile(int size);
QImage defaultPicture();                // 248 x 198
QImage listMode(bool icons);            // 128 x 128
QImage scanControl(int which, int size); // 0 pause, 1 resume, 2 stop
QImage arrow(int direction);            // 14 x 14; 0 up, 1 down, 2 left, 3 right
QImage checkBox(int state);             // 16 x 16; Qt::CheckState
QImage typeIcon(int size, const QColor& colour, const QString& label);
} // namespace Painter
