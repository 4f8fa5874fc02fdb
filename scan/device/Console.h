#pragma once

// Questions about the process's terminal.
class Console {
public:
    static bool stderrIsTerminal();
};
