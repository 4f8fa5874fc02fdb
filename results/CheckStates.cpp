#include "results/CheckStates.h"
#include "results/FolderNode.h"
#include "results/ResultTreeLock.h"

#include <QReadLocker>

namespace {
constexpr int kPartlyChecked = 1;
} // namespace

// Result trees from damaged disks can be deep, so the walk keeps its own stack.
void CheckStates::setDown(FolderNode* folder, int state, void (*cb)(void*, FolderNode*), void* ctx)
{
    QList<FolderNode*> work{folder};
    while (!work.isEmpty()) {
        FolderNode* f = work.takeLast();
        f->checkState = state;
        cb(ctx, f);
        QReadLocker lock(&ResultTreeLock::lock());
        for (auto it = f->children.crbegin(); it != f->children.crend(); ++it)
            work.append(*it);
    }
}

void CheckStates::climb(FolderNode* folder, void (*cb)(void*, FolderNode*), void* ctx)
{
    int state = folder->checkState;
    for (FolderNode* p = folder->parent; p && p->parent; p = p->parent) {
        int common = state;
        {
            QReadLocker lock(&ResultTreeLock::lock());
            for (const FolderNode* c : p->children) {
                if (c->checkState != state) {
                    common = kPartlyChecked;
                    break;
                }
            }
        }
        p->checkState = common;
        cb(ctx, p);
        state = common;
    }
}
