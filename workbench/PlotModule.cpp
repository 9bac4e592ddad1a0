// SPDX-License-Identifier: MIT
#include "workbench/PlotModule.h"

#include <QCoreApplication>
#include <QLibrary>
#include <QLoggingCategory>

#include <cstring>

namespace {

Q_LOGGING_CATEGORY(diagnostics, "mover.workbench")

struct Loaded {
    const PlotFunctions *functions = nullptr;
    QString error;

    Loaded()
    {
        QLibrary library(
            QCoreApplication::applicationDirPath() + QStringLiteral("/plots/") + QStringLiteral(MOVER_PLOTS));
        functions = reinterpret_cast<const PlotFunctions *>(library.resolve("moverPlots"));
        if (!functions) {
            error = library.errorString();
        } else if (std::strcmp(functions->version, MOVER_VERSION) != 0) {
            error = QStringLiteral("%1: version %2").arg(library.fileName(), QLatin1String(functions->version));
            functions = nullptr;
        }
        if (!functions)
            qCWarning(diagnostics, "no plots: %s", qUtf8Printable(error));
    }
};

const Loaded &loaded()
{
    static const Loaded once;
    return once;
}

} // namespace

const PlotFunctions *PlotModule::functions()
{
    return loaded().functions;
}

QString PlotModule::error()
{
    return loaded().error;
}
