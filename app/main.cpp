// SPDX-License-Identifier: GPL-2.0-or-later

// The program's entry point.

#include <QApplication>
#include <QIcon>

#include <cstring>
#include <optional>

#include "app/ApplicationStart.h"
#include "app/CommandLine.h"
#include "app/MainWindow.h"
#include "app/MessageHandler.h"
#include "app/ProgramEnd.h"
#include "app/Translations.h"
#include "app/base/DefaultStyle.h"
#include "app/base/Program.h"
#include "app/base/Share.h"
#include "app/base/StandardDescriptors.h"
#include "app/base/WithoutOpenGl.h"
#include "app/base/XdgRuntimeDirEnsurer.h"

int main(int argc, char** argv)
{
    StandardDescriptors::ensure();
    const char* name = argc > 0 ? argv[0] : "vyre";
    const char* slash = std::strrchr(name, '/');
    program = slash != nullptr ? slash + 1 : name;
    XdgRuntimeDirEnsurer runtimeDir;
    MessageHandler::install();
    DefaultStyle style(argc, argv);
    int status = 0;
    {
        QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
        std::optional<WithoutOpenGl> withoutOpenGl(std::in_place);
        std::optional<ApplicationStart> start(std::in_place, argv);
        QApplication app(argc, argv);
        start.reset();
        Translations::install(app);
        style.set(app, QStringLiteral("Fusion"));
        QApplication::setWindowIcon(QIcon(Share::absolute(QStringLiteral("pixmaps/vyre.icon.png"))));
        application = &app;
        // The window is never deleted. The system releases its memory when the process ends.
        auto* window = new MainWindow;
        CommandLine::apply(argc, argv, *window);
        const ProgramEnd end(*window, [&runtimeDir] { runtimeDir.remove(); });
        window->show();
        withoutOpenGl.reset();
        status = QApplication::exec();
        application = nullptr;
    }
    return status;
}
