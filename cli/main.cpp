#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <iostream>

#include "cli/cli_app.h"
#include "series/picture_io.h"

int main(int argc, char** argv) {
    // Pictures are decoded with Qt Gui, which needs no display for that.
    QCoreApplication app(argc, argv);
    lumiquilt::configurePictureReading();
    std::vector<std::string> arguments;
    const QStringList args = QCoreApplication::arguments();
    for (qsizetype i = 1; i < args.size(); ++i) {
        arguments.push_back(args[i].toStdString());
    }
    return lumiquilt::runCli(arguments, QDir::currentPath().toStdString(), std::cout, std::cerr,
                             ::isatty(STDERR_FILENO) != 0);
}
