#pragma once
#include "results/FileKind.h"

#include <QString>
#include <array>

struct FolderNode;

// What a scan found, by kind: the line Step 3 shows once the scan ended, and
// the count of files found while it runs.
class ScanSummary {
public:
    static ScanSummary of(const FolderNode* root);

    // "共找到 N 个文件（X MB）：图片 a，文档 b …", kinds with no file left out.
    QString text() const;

    int files = 0;
    quint64 bytes = 0;
    std::array<int, FileKind::KindCount> byKind{};
};
