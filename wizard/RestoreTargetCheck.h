#pragma once
#include <QString>

// What Step 4 checks of the target folder before a restore starts: that it
// exists, takes a new file, and has room for the selection. Each answer is a
// message for the user, empty when the folder will do.
class RestoreTargetCheck {
public:
    static QString problem(const QString& dir, quint64 bytesNeeded);
};
