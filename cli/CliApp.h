#pragma once
#include <QStringList>

// ostrel-cli: the wizard's recoveries without a window, over the same engine.
class CliApp {
public:
    enum Exit {
        Ok = 0,
        Usage = 2,
        NoSource = 3,       // image missing or unreadable, unknown letter or disk
        BadPartition = 4,   // partition index out of range
        BadTarget = 5,      // target folder cannot be made or lies on the source
        Unrecognised = 6,   // neither NTFS nor FAT32
        Fatal = 7,          // the volume cannot be opened or the device stopped answering
        NotRestored = 8,    // the restore ran, but some files could not be written (they are listed)
        BadSave = 9,        // the saved scan to resume is damaged, or was saved from another source
        Interrupted = 130,
    };
    static int run(const QStringList& arguments);
};
