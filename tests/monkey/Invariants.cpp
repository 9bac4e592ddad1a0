// SPDX-License-Identifier: MIT
#include "Invariants.h"

#include "axis/CycleOperationWidget.h"
#include "axis/MoverControlWidget.h"
#include "console/DebugWidget.h"
#include "workbench/WorkbenchWidget.h"
#include "device/LibraryLock.h"
#include "device/SerialComDev.h"
#include "session/ControlSession.h"
#include "session/SequenceRunner.h"
#include "shell/MoverWidget.h"
#include "controllers/simulated/SimulatorControl.h"
#include "support/LiveObjects.h"

#include "Fingers.h"

#include <QApplication>
#include <QLabel>
#include <QLayout>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>

#include <algorithm>

namespace {

constexpr int libraryLimitMs = 2000;

/** The operations that the console makes without the mutex may meet others. */
bool isWanted(const QString &overlap)
{
    const QStringList functions = overlap.split(QStringLiteral(" overlapped "));
    return functions.contains(QStringLiteral("home")) || functions.contains(QStringLiteral("setClearIDChip"));
}

QString boardBroken(const MoverWidget &window)
{
    const QList<MoverControlWidget *> &panels = window.panelBoard().panels();
    QStringList names;
    for (MoverControlWidget *panel : panels) {
        if (panel->axisName() != QStringLiteral("Axis%1").arg(panel->index() + 1))
            return QStringLiteral("panel %1 is of axis %2").arg(panel->axisName()).arg(panel->index());
        if (names.contains(panel->axisName()))
            return panel->axisName() + QStringLiteral(" has two panels");
        names.append(panel->axisName());
        if (window.panelBoard().find(panel->axisName()) != panel)
            return panel->axisName() + QStringLiteral(" is not found on the board");
        if (panel->parentWidget()->objectName() != QLatin1String("widget_controls"))
            return panel->axisName() + QStringLiteral(" is not on the board");
        if (!panel->parentWidget()->layout() || panel->parentWidget()->layout()->indexOf(panel) < 0)
            return panel->axisName() + QStringLiteral(" is not in the grid");
    }
    if (!panels.isEmpty() && !SerialComDev::instance()->isOpened())
        return QStringLiteral("panels without a controller");
    if (panels.size() > qMax(0, window.axisCount()))
        return QStringLiteral("more panels than axes");

    names.sort();
    const auto *bar = window.findChild<QWidget *>(QStringLiteral("widget_menuBar"));
    QStringList shown;
    for (int k = 0; k < bar->layout()->count(); ++k) {
        const QWidget *widget = bar->layout()->itemAt(k)->widget();
        shown.append(widget ? widget->objectName() : QStringLiteral("-"));
    }
    const QStringList expected =
        QStringList{QStringLiteral("pushButton_connect")} + names +
        QStringList{QStringLiteral("pushButton_addAsix"), QStringLiteral("-"), QStringLiteral("radioButton_Rocker")};
    if (shown != expected)
        return QStringLiteral("the menu bar has %1 for the panels %2").arg(shown.join(' '), names.join(' '));
    return QString();
}

QString panelBroken(const MoverControlWidget *panel)
{
    const auto *stop = panel->findChild<QPushButton *>(QStringLiteral("pushButton_stop"), Qt::FindChildrenRecursively);
    for (const QPushButton *button : panel->findChildren<QPushButton *>(QStringLiteral("pushButton_stop"))) {
        if (!button->isEnabled())
            return QStringLiteral("a stop button of %1 is disabled").arg(panel->axisName());
    }
    if (!stop)
        return QStringLiteral("no stop button");
    if (stop->isHidden())
        return QStringLiteral("the stop button of %1 is hidden").arg(panel->axisName());
    return QString();
}

/** Whether it has a life of its own beside the main window. */
bool standsAlone(const QWidget *window)
{
    return qobject_cast<const DebugWidget *>(window) || qobject_cast<const WorkbenchWidget *>(window) ||
           qobject_cast<const QMessageBox *>(window);
}

/** Windows are the main one, those beside it, and what belongs to one of them; a message box may belong to nobody. */
QString orphan(const MoverWidget &window)
{
    for (const QWidget *candidate : Invariants::visibleWindows()) {
        if (candidate == &window || standsAlone(candidate) || candidate->inherits("QTipLabel"))
            continue;
        const QWidget *owner = candidate->parentWidget();
        while (owner && owner->parentWidget())
            owner = owner->parentWidget();
        // A context menu has the widget that it was opened for as its owner.
        if (!owner || !(owner == &window || standsAlone(owner)))
            return Fingers::nameOf(candidate);
    }
    return QString();
}

} // namespace

bool Invariants::isLibraryHeld()
{
    const QList<QWidget *> windows = visibleWindows();
    return std::any_of(windows.begin(), windows.end(), [](const QWidget *window) {
        return qobject_cast<const QMessageBox *>(window) && qobject_cast<const DebugWidget *>(window->parentWidget());
    });
}

QList<QWidget *> Invariants::visibleWindows()
{
    QList<QWidget *> windows;
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && window->windowHandle())
            windows.append(window);
    }
    // Qt has them in the order of their addresses.
    std::sort(windows.begin(), windows.end(), [](const QWidget *one, const QWidget *other) {
        const auto key = [](const QWidget *window) {
            return Fingers::nameOf(window) +
                   QStringLiteral(" %1 %2 %3").arg(window->x()).arg(window->y()).arg(window->width());
        };
        return key(one) < key(other);
    });
    return windows;
}

void Invariants::readJournal()
{
    m_reported.clear();
    for (const simulator::Call &call : simulator::journal()) {
        if (call.function != "getCurrentPos")
            continue;
        const int axis = QString::fromStdString(call.arguments).section(QStringLiteral(", "), 1, 1).toInt();
        m_reported[axis].insert(QString::number(QString::fromStdString(call.result).toDouble(), 'f', 3));
    }
    simulator::clearJournal();
}

QString Invariants::broken(const MoverWidget &window)
{
    const QString overlap = QString::fromStdString(simulator::overlap());
    if (!overlap.isEmpty() && !isWanted(overlap))
        return QStringLiteral("library calls overlap: ") + overlap;
    if (!isLibraryHeld() && !LibraryLock(libraryLimitMs).isLocked())
        return QStringLiteral("somebody keeps the library");

    const auto session = ControlSession::instance();
    for (int axis = 0; axis < session->axisCount(); ++axis) {
        if (SerialComDev::instance()->isReserved(axis) != session->sequences().uses(axis))
            return QStringLiteral("axis %1 %2 reserved")
                .arg(axis)
                .arg(session->sequences().uses(axis) ? "is used by a sequence and not" : "is");
    }

    QString complaint = boardBroken(window);
    if (!complaint.isEmpty())
        return complaint;
    complaint = orphan(window);
    if (!complaint.isEmpty())
        return QStringLiteral("a window that belongs to nobody: ") + complaint;

    readJournal();
    QMap<int, QString> shown;
    for (const MoverControlWidget *panel : window.panelBoard().panels()) {
        complaint = panelBroken(panel);
        if (!complaint.isEmpty())
            return complaint;
        const QString text = panel->findChild<QLabel *>(QStringLiteral("label_currentPos"))->text();
        const QString number = text.section(QLatin1Char(' '), 0, 0);
        shown[panel->index()] = number;
        if (number != QLatin1String("---") && number != m_shown.value(panel->index()) &&
            !m_reported.value(panel->index()).contains(number))
            return QStringLiteral("%1 shows %2, which the controller did not say").arg(panel->axisName(), text);
    }
    m_shown = shown;
    return QString();
}

QString Invariants::brokenAtRest(const MoverWidget &window)
{
    const int panels = LiveObjects::count<MoverControlWidget>();
    if (panels != window.panelBoard().count())
        return QStringLiteral("%1 panels live, %2 are on the board").arg(panels).arg(window.panelBoard().count());
    const int boxes = LiveObjects::count<QMessageBox>();
    if (boxes != 0)
        return QStringLiteral("%1 message boxes live, none is open").arg(boxes);
    return QString();
}

QString Invariants::leftBehind()
{
    QStringList names;
    for (const QWidget *widget : LiveObjects::all<QWidget>()) {
        // Qt keeps a desktop, and the last tip for a while.
        if (!widget->inherits("QTipLabel") && !widget->inherits("QDesktopWidget") &&
            !widget->inherits("QDesktopScreenWidget"))
            names.append(Fingers::nameOf(widget));
    }
    names.sort();
    return names.mid(0, 10).join(QStringLiteral(", "));
}
