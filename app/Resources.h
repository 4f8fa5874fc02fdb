#pragma once

// The compiled-in pictures live in a static library, where the linker drops
// them unless something refers to them: every user of a picture calls load().
class Resources {
public:
    static void load();
};
