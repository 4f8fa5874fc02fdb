#pragma once
#include <QString>
#include <functional>

class PartScan;
class QWidget;
struct RowRef;

// A double click on a file row: reads the whole file through the scanner and
// shows it in the preview dialog. Each preview reads the file anew.
class FilePreview {
public:
    using Notify = std::function<void(const QString&)>;

    // False when nothing was shown: no record, or a buffer above 300 MiB
    // (then notify has told the user).
    static bool open(QWidget* parent, PartScan* scanner, const RowRef& row, const QString& name,
                     const Notify& notify);
};
