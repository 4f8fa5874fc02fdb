#include "cli/Interrupt.h"

#include <atomic>
#include <csignal>
#include <cstdlib>

namespace {
std::atomic<int> interrupts{0};

extern "C" void onInterrupt(int)
{
    if (interrupts.fetch_add(1) >= 1)
        std::_Exit(Interrupt::kAbortExit);
}
} // namespace

void Interrupt::install()
{
    std::signal(SIGINT, onInterrupt);
}

int Interrupt::count()
{
    return interrupts.load();
}
