#include "cli/CliApp.h"

#include <QCoreApplication>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    return CliApp::run(app.arguments());
}
