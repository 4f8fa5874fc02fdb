#pragma once

// The QQ buttons run a helper script beside the program where the Windows
// script host exists; elsewhere they do nothing.
class QqScript {
public:
    static void run();
};
