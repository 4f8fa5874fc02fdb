#pragma once
#include <QString>

// The application font: the first family of "MSYH.TTC" beside the executable,
// else an installed family that has Chinese glyphs.
class AppFont {
public:
    static QString family();
    static void install(); // sets it at 11 points as the font of all widgets
};
