#pragma once

struct FolderNode;
struct FoundFile;

// The selection of a result tree: each file's own tick (FoundFile::selected).
// A folder's check state is derived from it: checked when every file and
// folder below is, unchecked when none is, partly checked otherwise. Setting a
// folder sets every file below it; setting a file re-derives its folder and
// those above. The invisible top node (the one without a parent) never changes.
class CheckStates {
public:
    // Calls changed(folder) for every folder whose state was written, in the
    // order written, so a view can repaint them.
    template <typename Changed>
    static void set(FolderNode* folder, int state, Changed changed);
    static void set(FolderNode* folder, int state)
    {
        set(folder, state, [](FolderNode*) {});
    }
    // One file's tick, in the folder that holds it.
    template <typename Changed>
    static void setFile(FolderNode* folder, FoundFile* file, bool selected, Changed changed);

private:
    using Callback = void (*)(void*, FolderNode*);
    static void setDown(FolderNode* folder, int state, Callback cb, void* ctx);
    static void climb(FolderNode* from, Callback cb, void* ctx);
    // climb() from the folder's parent: the header sees FolderNode only declared.
    static void climbAbove(FolderNode* folder, Callback cb, void* ctx);
    static void select(FoundFile* file, bool selected);
};

template <typename Changed>
void CheckStates::set(FolderNode* folder, int state, Changed changed)
{
    auto cb = [](void* ctx, FolderNode* f) { (*static_cast<Changed*>(ctx))(f); };
    setDown(folder, state, cb, &changed);
    climbAbove(folder, cb, &changed);
}

template <typename Changed>
void CheckStates::setFile(FolderNode* folder, FoundFile* file, bool selected, Changed changed)
{
    auto cb = [](void* ctx, FolderNode* f) { (*static_cast<Changed*>(ctx))(f); };
    select(file, selected);
    climb(folder, cb, &changed);
}
