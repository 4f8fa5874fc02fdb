#pragma once
#include <QString>
#include <QStringView>
#include <QtGlobal>

class NamePool;

// What every found file has, whichever file system it came from. The tree's
// readers (lists, sums, restore) need no more than this.
//
// A million of these stand in memory on a large volume, so the record is
// small: its name is not a QString of its own but a stretch of the names of
// its scan (NamePool), taken when the file is added to a folder of a result
// tree. Until then, and in a folder of no tree (tests), the record holds a
// copy of its own. A name is set before the file is added, never after.
struct FoundFile {
    FoundFile();
    virtual ~FoundFile();
    FoundFile(const FoundFile&) = delete;
    FoundFile& operator=(const FoundFile&) = delete;

    // Without path; generated for carved files. The view stays valid while
    // the tree (or, outside a tree, the record) does.
    QStringView nameView() const { return QStringView(m_name, qsizetype(m_nameLength)); }
    QString name() const { return nameView().toString(); }
    // With a pool, the name goes straight into it (FolderNode::addFile).
    void setName(QStringView name, NamePool* pool = nullptr);
    // Moves an own copy of the name into the pool; a pooled name stays.
    void poolName(NamePool& pool);

    quint64 modifiedMsecs = 0;   // ms since 1970-01-01 UTC; 0 when unknown
    quint64 size = 0;            // bytes

private:
    const char16_t* m_name = nullptr;
    quint16 m_nameLength = 0;
    bool m_ownsName : 1;         // m_name is this record's own copy, freed with it

public:
    // Ticked for the restore. The one place the selection lives: the folder
    // check boxes, the sums and the restore walk all read it (see CheckStates).
    bool selected : 1;
    bool cut : 1;                // carved: the file's structure broke off here, its rest is missing
    // Only its name is left (a folder's index still lists it): no content to
    // show or restore, the size is what the name's entry stated.
    bool nameOnly : 1;
};

static_assert(sizeof(FoundFile) <= 40, "the common part of a record stays within 40 bytes");
