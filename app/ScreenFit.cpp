// SPDX-License-Identifier: MIT
#include "app/ScreenFit.h"

#include "widgets/Dialogs.h"

#include <QApplication>
#include <QEvent>
#include <QScreen>
#include <QTimer>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace {

constexpr QMargins usualFrame(8, 40, 8, 8);

/** Whether it is a window with a place of its own: not a list, a menu or a tool tip, which Qt places. */
bool hasItsPlace(const QWidget *window)
{
    return window->isWindow() && window->windowType() != Qt::Popup && window->windowType() != Qt::ToolTip;
}

} // namespace

ScreenFit::ScreenFit(QWidget *mainWindow)
    : m_mainWindow(mainWindow)
{
    QCoreApplication::instance()->installEventFilter(this);
    const QList<QScreen *> screens = QGuiApplication::screens();
    for (QScreen *screen : screens)
        watch(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, &ScreenFit::watch);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &ScreenFit::fitAll, Qt::QueuedConnection);
}

double ScreenFit::scaleFor(QSize room)
{
    const double scale =
        std::min(double(room.width()) / MainWindow.width(), double(room.height()) / MainWindow.height());
    return std::min(std::floor(scale * 100) / 100, 1.0);
}

bool ScreenFit::eventFilter(QObject *watched, QEvent *event)
{
    if (!watched->isWidgetType())
        return QObject::eventFilter(watched, event);
    auto *widget = static_cast<QWidget *>(watched);
    switch (event->type()) {
    case QEvent::Show:
        if (!hasItsPlace(widget))
            break;
        fit(widget);
        if (event->spontaneous() || widget->isFullScreen())
            break;
        m_places.insert(widget, std::nullopt);
        if (widget->testAttribute(Qt::WA_Moved)) {
            Dialogs::keepOnScreen(widget);
            m_places[widget] = widget->pos();
        }
        break;
    case QEvent::Move:
        // The program's own moves only: what the desktop reports here may be out of date.
        if (!event->spontaneous() && m_places.contains(widget))
            m_places[widget] = widget->pos();
        break;
    case QEvent::WindowActivate:
        settle(widget);
        break;
    case QEvent::Hide:
        m_places.remove(widget);
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void ScreenFit::watch(QScreen *screen)
{
    connect(screen, &QScreen::availableGeometryChanged, this, &ScreenFit::fitAll, Qt::QueuedConnection);
    fitAll();
}

void ScreenFit::fitAll()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (window->isVisible() && hasItsPlace(window)) {
            fit(window);
            if (!window->isFullScreen())
                Dialogs::keepOnScreen(window);
        }
    }
}

/** Makes a window no larger than its screen, as far as it can be smaller; the main window always can. */
void ScreenFit::fit(QWidget *window) const
{
    QRect room = Dialogs::screenOf(window)->availableGeometry();
    if (window == m_mainWindow)
        window->setMinimumSize(MainWindow.boundedTo(room.size()));
    if (window->isFullScreen() || window->isMaximized())
        return;
    if (!(window->windowFlags() & Qt::FramelessWindowHint))
        room = room.marginsRemoved(usualFrame);
    const QSize size = window->size().boundedTo(room.size());
    if (size != window->size()) // a size that was asked for is no longer adjusted to what is in the window
        window->resize(size);
}

/**
 * A window manager first puts a window into a frame, then the frame in its place. Asked in between, X gives the place
 * within the frame; that answer may come late and is not always corrected. The window itself is where it should be, but
 * its lists and boxes would open elsewhere, a drag would begin there, and the window would seem to be off the screen
 * and be moved into the corner.
 */
void ScreenFit::settle(QWidget *window)
{
    const auto found = m_places.constFind(window);
    if (found == m_places.constEnd())
        return;
    const std::optional<QPoint> place = *found;
    m_places.erase(found);
    const auto restore = [window, place] {
        if (place && window->pos() != *place)
            window->move(*place);
    };
    restore();
    // By the time the events of its appearing are through, it usually has its frame as well.
    QTimer::singleShot(0, window, [window, place, restore] {
        restore();
        const bool framed = window->frameGeometry() != window->geometry();
        if (!place && framed && window->geometry().topLeft().isNull())
            return; // where the desktop has put it is not known
        const bool misses = !(window->windowFlags() & Qt::FramelessWindowHint) && !framed;
        Dialogs::keepOnScreen(window, misses ? usualFrame : QMargins());
    });
}
