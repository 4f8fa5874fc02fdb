#pragma once
#include "dialogs/FramelessDialog.h"

// The product picture, name and version.
class DialogAbout : public FramelessDialog {
    Q_OBJECT
public:
    explicit DialogAbout(QWidget* parent);
};
