#pragma once
#include <QByteArray>
#include <QtGlobal>

// Where a scan stands, in a form a later run can go on from: the pass it is
// in, how far that pass got, and the counters it carries. A scanner sets it
// at its check points, when everything before the position is in its tree.
struct ResumePoint {
    enum Phase : quint8 {
        Start = 0,    // nothing to go on from: a resume scans from the beginning
        Carving = 1,  // the metadata pass is over; the carving walk goes on at block `position`
        DiskWalk = 2, // the whole-disk search goes on at byte `position`
        Done = 3,     // the scan ended; its tree is whole
    };
    static constexpr quint8 kLastPhase = Done;

    Phase phase = Start;
    quint64 position = 0;
    quint64 end = 0; // where the pass ends, in the units of position
    quint64 runningNumber = 0;
    quint64 results = 0;
    quint64 totalSize = 0;
    // Folders directly below the root that belong to the point; the rest are
    // being filled (a disk search's partition in progress). -1: all of them.
    qint32 keepFolders = -1;
    QByteArray scannerState; // what the scanner needs besides the tree, in its own format
};
