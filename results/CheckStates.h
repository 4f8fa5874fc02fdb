#pragma once

struct FolderNode;

// The selection of a result tree lives in the folders' check states. Setting
// one spreads it to every folder below, then up: a parent takes its children's
// common state, or partly checked where they differ. The invisible top node
// (the one without a parent) never changes.
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

private:
    static void setDown(FolderNode* folder, int state, void (*cb)(void*, FolderNode*), void* ctx);
    static void climb(FolderNode* folder, void (*cb)(void*, FolderNode*), void* ctx);
};

template <typename Changed>
void CheckStates::set(FolderNode* folder, int state, Changed changed)
{
    auto cb = [](void* ctx, FolderNode* f) { (*static_cast<Changed*>(ctx))(f); };
    setDown(folder, state, cb, &changed);
    climb(folder, cb, &changed);
}
