#pragma once

// Qt's own Chinese texts for its dialogs (file dialogs, the buttons of
// message boxes), from the system's Qt translations.
class QtChinese {
public:
    // True when the translations were found and installed.
    static bool install();
};
