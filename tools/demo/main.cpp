// Writes the demo disk: make_demo_disk OUTPUT.img
#include "tools/demo/DemoDisk.h"

#include <QCoreApplication>
#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_demo_disk OUTPUT.img\n");
        return 2;
    }
    if (!DemoDisk::save(DemoDisk::build(), QString::fromLocal8Bit(argv[1]))) {
        std::fprintf(stderr, "make_demo_disk: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
