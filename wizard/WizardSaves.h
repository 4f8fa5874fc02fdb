#pragma once
#include "scan/SavedScan.h"

#include <QString>
#include <optional>

class PartScan;
class ScanSaver;

// The wizard's saved scans: one file per source in the user's data folder
// ($XDG_DATA_HOME/…/saved-scans), named after the source's fingerprint, so
// choosing the same source again on Step 1 finds it whatever it is called.
class WizardSaves {
public:
    static QString folder();
    static QString pathFor(const SavedScan::Fingerprint& fingerprint);
    // The source Step 1 names: a volume by its letter, else the disk.
    static DeviceHandle openSource(int disk, char letter);
    // The saved scan of that source made in this mode ("file", "format",
    // "partition"), when one is there and reads whole.
    static std::optional<SavedScan> find(const DeviceHandle& source, const QString& mode);
    // A saver for a scan about to start, or null when the data folder lies on
    // the disk being recovered (nothing is written there) or can't be made.
    static ScanSaver* saverFor(PartScan* scanner, int disk, const QString& mode);
};
