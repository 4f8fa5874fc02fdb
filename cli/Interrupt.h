#pragma once

// Ctrl-C on the command line: the first one asks the running scan to stop (it
// still prints what it found), a second one ends the process at once.
class Interrupt {
public:
    static void install();
    static int count();
    static constexpr int kAbortExit = 130;
};
