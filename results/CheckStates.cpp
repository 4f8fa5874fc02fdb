#include "results/CheckStates.h"
#include "results/FolderNode.h"
#include "results/ResultTree.h"

#include "results/TreeLock.h"

namespace {
constexpr int kUnchecked = 0;
constexpr int kPartlyChecked = 1;
constexpr int kChecked = 2;

// The state a folder shows for what lies in it; an empty folder keeps its own.
int derivedState(const FolderNode* folder)
{
    bool any = false;
    bool all = true;
    for (const FoundFile* f : folder->files) {
        any |= f->selected;
        all &= f->selected;
    }
    for (const FolderNode* c : folder->children) {
        any |= c->checkState != kUnchecked;
        all &= c->checkState == kChecked;
    }
    if (folder->files.isEmpty() && folder->children.isEmpty())
        return folder->checkState;
    return all ? kChecked : any ? kPartlyChecked : kUnchecked;
}
} // namespace

void CheckStates::select(FoundFile* file, bool selected)
{
    file->selected = selected;
}

// Result trees from damaged disks can be deep, so the walk keeps its own stack.
// A click on a partly checked box means "all of it".
void CheckStates::setDown(FolderNode* folder, int state, Callback cb, void* ctx)
{
    const int whole = state == kUnchecked ? kUnchecked : kChecked;
    QList<FolderNode*> work{folder};
    while (!work.isEmpty()) {
        FolderNode* f = work.takeLast();
        f->checkState = whole;
        {
            TreeLock::Read lock(ResultTree::lockOf(f));
            for (FoundFile* file : f->files)
                select(file, whole == kChecked);
            for (auto it = f->children.crbegin(); it != f->children.crend(); ++it)
                work.append(*it);
        }
        cb(ctx, f);
    }
}

void CheckStates::climbAbove(FolderNode* folder, Callback cb, void* ctx)
{
    if (folder)
        climb(folder->parent, cb, ctx);
}

void CheckStates::climb(FolderNode* from, Callback cb, void* ctx)
{
    for (FolderNode* p = from; p && p->parent; p = p->parent) {
        {
            TreeLock::Read lock(ResultTree::lockOf(p));
            p->checkState = derivedState(p);
        }
        cb(ctx, p);
    }
}
