#pragma once
#include <QColor>

class QWidget;

// The hover looks of the frameless window and its dialogs: a button under the
// pointer gets a solid fill, and loses it again through a plain style sheet.
class HoverStyle {
public:
    static void fill(QWidget* widget, const QColor& colour);
    static void plainToolButton(QWidget* widget);
    static void plainPushButton(QWidget* widget);
    // A widget's own background colour in the active and inactive groups.
    static void paintBackground(QWidget* widget, const QColor& colour);
};
