// qmstudio [PROJECT]: the desktop program. Starts with the project file when one is
// named, otherwise with no document.

#include "animationset/CSketchrunApp.h"
#include "platform/GUT_DesktopHost.h"
#include "platform/GUT_MessageHandler.h"
#include "platform/GUT_StringTable.h"
#include "qms/QmsCommands.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Quilmoor Technologies Inc"));
    QApplication::setApplicationName(QStringLiteral("Quilmoor Studio"));
    QApplication::setApplicationVersion(QStringLiteral("2.0"));
    QApplication::setDesktopFileName(QStringLiteral("qmstudio"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/qmstudio/qmstudio.png")));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Quilmoor Studio, a workstation for 2D vector character animation."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("project"), QStringLiteral("A project file (.qmp) to open."),
                                 QStringLiteral("[PROJECT]"));
    parser.process(application);
    if (parser.positionalArguments().size() > 1) {
        std::fputs("qmstudio: at most one project file\n", stderr);
        return 2;
    }
    std::vector<std::string> arguments;
    for (const QString& argument : parser.positionalArguments())
        arguments.push_back(argument.toStdString());

    QmsRegisterAllTypes();
    GUT_MessageHandler messages(GUT_LoadString);
    UT_MessageHandlerScope scope(&messages);
    GUT_DesktopHost host;
    CSketchrunApp app(host);
    host.SetApplication(&app);
    if (!app.InitInstance(arguments, std::getenv("QMS_ENABLE_PLAZMIC_EXPORT")))
        return 1;
    return QApplication::exec();
}
