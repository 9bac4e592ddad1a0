// SPDX-License-Identifier: MIT
#include "tour/Guide.h"

#include "controllers/simulated/SimulatorControl.h"

#include <QApplication>
#include <QColor>
#include <QDeadlineTimer>
#include <QImage>
#include <QMap>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QScrollArea>
#include <QSemaphore>
#include <QTextStream>
#include <QWidget>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace {

void xdotool(const QStringList &arguments)
{
    if (QProcess::execute(QStringLiteral("xdotool"), arguments) != 0)
        qFatal("xdotool failed");
}

/** Device pixels of a point of a widget, as two arguments. It is scrolled to where it can be seen. */
QStringList onScreen(const QWidget *widget, QPoint position)
{
    return inGui([=]() -> QStringList {
        for (const QWidget *inner = widget; !inner->isWindow(); inner = inner->parentWidget()) {
            if (auto *area = qobject_cast<QScrollArea *>(inner->parentWidget())) {
                const QPoint inside = widget->mapTo(area->widget(), position);
                area->ensureVisible(inside.x(), inside.y(), 20, 20);
            }
        }
        const QPoint point = widget->mapToGlobal(position) * widget->devicePixelRatioF();
        return {QString::number(point.x()), QString::number(point.y())};
    });
}

/**
 * Notes in the picture, as its texts, where the windows, panels and bars stand in it, so that each can be cut out:
 * "MoveParamWidget" = "x y width height". Of several of a kind the further ones are "…-2", "…-3" from the top left.
 */
void noteParts(QImage *picture, const QRect &area)
{
    QMultiMap<QString, QRect> parts;
    const QWidgetList widgets = QApplication::allWidgets();
    for (const QWidget *widget : widgets) {
        const QString kind = QLatin1String(widget->metaObject()->className());
        const bool isBar = widget->objectName().endsWith(QLatin1String("Bar"));
        if (!widget->isVisible() || !(widget->isWindow() || isBar || !kind.startsWith(QLatin1Char('Q'))))
            continue;
        // A dialog without its shadow.
        const auto *body = widget->findChild<QWidget *>(QStringLiteral("widget_back"), Qt::FindDirectChildrenOnly);
        const QWidget *shown = body ? body : widget;
        const QRect place = QRect(shown->mapToGlobal(QPoint()), shown->size()).intersected(area);
        if (!place.isEmpty())
            parts.insert(isBar ? widget->objectName() : kind, place.translated(-area.topLeft()));
    }
    const qreal ratio = picture->devicePixelRatioF();
    const QStringList names = parts.uniqueKeys();
    for (const QString &name : names) {
        QList<QRect> places = parts.values(name);
        std::sort(places.begin(), places.end(), [](const QRect &a, const QRect &b) {
            return std::make_pair(a.y(), a.x()) < std::make_pair(b.y(), b.x());
        });
        for (int k = 0; k < places.size(); ++k) {
            const QRect &place = places[k];
            picture->setText(
                k == 0 ? name : QStringLiteral("%1-%2").arg(name).arg(k + 1), QStringLiteral("%1 %2 %3 %4")
                                                                                  .arg(int(place.x() * ratio))
                                                                                  .arg(int(place.y() * ratio))
                                                                                  .arg(int(place.width() * ratio))
                                                                                  .arg(int(place.height() * ratio)));
        }
    }
}

/** Whether the screen shows what the active window would draw now, but for a blinking cursor, a number, a rim. */
bool isOnScreen()
{
    QWidget *window = QApplication::activeWindow();
    if (!window)
        return true;
    auto *body = window->findChild<QWidget *>(QStringLiteral("widget_back"), Qt::FindDirectChildrenOnly);
    QWidget *drawn = body ? body : window;
    const QPoint place = drawn->mapToGlobal(QPoint());
    const QImage screen = QGuiApplication::primaryScreen()
                              ->grabWindow(0, place.x(), place.y(), drawn->width(), drawn->height())
                              .toImage()
                              .convertToFormat(QImage::Format_RGB32);
    const QImage wanted = drawn->grab().toImage().convertToFormat(QImage::Format_RGB32);
    if (screen.size() != wanted.size())
        return false;
    constexpr int grid = 7; // every seventh pixel of every seventh line tells enough
    int looked = 0;
    int different = 0;
    for (int y = 0; y < wanted.height(); y += grid) {
        for (int x = 0; x < wanted.width(); x += grid) {
            ++looked;
            const QColor a = screen.pixelColor(x, y);
            const QColor b = wanted.pixelColor(x, y);
            different += std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) > 40;
        }
    }
    return different * 200 < looked;
}

} // namespace

Guide::Guide(QWidget *window, const QDir &directory)
    : m_window(window)
    , m_directory(directory)
{
}

bool Guide::wait(const Condition &condition, int limitMs)
{
    const QDeadlineTimer deadline(limitMs);
    QSemaphore interval;
    while (!inGui(condition)) {
        if (deadline.hasExpired())
            return false;
        interval.tryAcquire(1, 20);
    }
    return true;
}

void Guide::step(const QString &name, const std::function<void()> &action, const Condition &outcome, int limitMs)
{
    ++m_iStep;
    simulator::clearJournal();
    action();
    const bool ok = wait(outcome, limitMs);
    savePicture(name);
    QTextStream(stdout) << QStringLiteral("%1 %2 %3%4\n")
                               .arg(m_iStep, 2, 10, QLatin1Char('0'))
                               .arg(ok ? QStringLiteral("ok  ") : QStringLiteral("FAIL"), name, answers())
                        << Qt::flush;
    if (!ok)
        ++m_iFailures;
}

/** What the controller was asked in this step, without the polls and heartbeats that go on all the time. */
QString Guide::answers() const
{
    QStringList calls;
    for (const simulator::Call &call : simulator::journal()) {
        const bool isPoll =
            call.function == "getCurrentPos" || call.function == "getRuningState" || call.function == "getRockerInfo";
        if (!isPoll)
            calls.append(QString::fromStdString(call.text()));
    }
    constexpr int shown = 8;
    if (calls.size() > shown)
        calls = calls.mid(0, shown) << QStringLiteral("… %1 more").arg(calls.size() - shown);
    return calls.isEmpty() ? QString() : QStringLiteral(": ") + calls.join(QStringLiteral("; "));
}

void Guide::savePicture(const QString &name) const
{
    // The outcome is there; give the window manager and the compositor the time to bring it to the screen. Something
    // may lie over the window (a list, a popup that has not got the activation): then this is the time that they get.
    QSemaphore().tryAcquire(1, 150);
    wait(isOnScreen, 1000);
    const QString path =
        m_directory.filePath(QStringLiteral("%1-%2.png").arg(m_iStep, 2, 10, QLatin1Char('0')).arg(name));
    const bool saved = inGui([&] {
        // The console stands beside the main window.
        const QWidget *active = QApplication::activeWindow();
        // A frame that is asked for while the desktop makes it may be told as one of a single pixel.
        QRect area = m_window->geometry().united(m_window->frameGeometry());
        if (active)
            area = area.united(active->geometry()).united(active->frameGeometry());
        QImage picture =
            QGuiApplication::primaryScreen()->grabWindow(0, area.x(), area.y(), area.width(), area.height()).toImage();
        noteParts(&picture, area);
        return picture.save(path);
    });
    if (!saved)
        qFatal("%s cannot be written", qPrintable(path));
}

void Guide::clickAt(const QWidget *widget, QPoint position)
{
    xdotool(
        QStringList{QStringLiteral("mousemove")} + onScreen(widget, position) +
        QStringList{QStringLiteral("click"), QStringLiteral("1")});
}

void Guide::click(const QWidget *widget)
{
    clickAt(widget, inGui([=] { return widget->rect().center(); }));
}

void Guide::hold(const QWidget *widget, const Condition &until, int limitMs)
{
    const QPoint middle = inGui([=] { return widget->rect().center(); });
    xdotool(QStringList{"mousemove"} + onScreen(widget, middle) + QStringList{"mousedown", "1"});
    wait(until, limitMs);
    xdotool({"mouseup", "1"});
}

void Guide::doubleClickAt(const QWidget *widget, QPoint position)
{
    xdotool(
        QStringList{QStringLiteral("mousemove")} + onScreen(widget, position) +
        QStringList{
            QStringLiteral("click"), QStringLiteral("--repeat"), QStringLiteral("2"), QStringLiteral("--delay"),
            QStringLiteral("60"), QStringLiteral("1")});
}

void Guide::drag(const QWidget *widget, QPoint from, QPoint by)
{
    xdotool(
        QStringList{QStringLiteral("mousemove")} + onScreen(widget, from) +
        QStringList{QStringLiteral("mousedown"), QStringLiteral("1")});
    // The target is told before the window starts to move under the mouse.
    const QPoint step = inGui([=] { return by * widget->devicePixelRatioF(); });
    xdotool(
        {QStringLiteral("mousemove_relative"), QStringLiteral("--sync"), QStringLiteral("--"),
         QString::number(step.x()), QString::number(step.y()), QStringLiteral("mouseup"), QStringLiteral("1")});
}

void Guide::moveAway()
{
    xdotool({QStringLiteral("mousemove"), QStringLiteral("0"), QStringLiteral("0")});
}

void Guide::press(const QString &keys)
{
    xdotool({QStringLiteral("key"), keys});
}

void Guide::type(const QString &text)
{
    xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("5"), QStringLiteral("--"), text});
}

void Guide::fill(const QWidget *field, const QString &text)
{
    click(field);
    press(QStringLiteral("ctrl+a"));
    type(text);
}
