// SPDX-License-Identifier: MIT
//
// A plug-in that Qt loads into a program when QT_QPA_GENERIC_PLUGINS names it, so that the program that is measured is
// the program that is shipped. It tells on standard output when the first window is painted, then does to the program
// what MOVER_BENCH_TASK asks for:
//   rest  connects the controller
//   move  the same, then sends every axis on its way
// and says "ready".
#include <QAbstractButton>
#include <QApplication>
#include <QGenericPlugin>
#include <QTimer>
#include <QWindow>

#include <cstdio>
#include <ctime>

namespace {

QWidget *windowOf(const char *className)
{
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget *widget : widgets) {
        if (widget->inherits(className))
            return widget;
    }
    return nullptr;
}

void click(const QWidget *parent, const char *name)
{
    auto *button = parent->findChild<QAbstractButton *>(QLatin1String(name));
    if (!button)
        qFatal("no button %s", name);
    button->click();
}

void say(const char *format, long long value = 0)
{
    std::printf(format, value);
    std::fflush(stdout);
}

long long nowNs()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000000LL + now.tv_nsec;
}

QWidgetList panels()
{
    QWidgetList found;
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget *widget : widgets) {
        if (widget->inherits("MoverControlWidget"))
            found.append(widget);
    }
    return found;
}

void doTask()
{
    const QByteArray task = qgetenv("MOVER_BENCH_TASK");
    if (task == "rest" || task == "move") {
        click(windowOf("MoverWidget"), "pushButton_connect");
        click(windowOf("ConnectionWidget"), "pushButton_connectSerial");
        const QWidgetList opened = panels();
        if (opened.size() != 3)
            qFatal("%d panels", opened.size());
        if (QWidget *dialog = windowOf("ConnectionWidget"); dialog->isVisible())
            dialog->close();
        for (const QWidget *panel : opened) {
            if (task == "move")
                click(panel, "pushButton_driveRight");
        }
    }
    say("ready\n");
}

class Attendant final : public QObject
{
public:
    Attendant() { qApp->installEventFilter(this); }

    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() == QEvent::Expose && static_cast<QWindow *>(object)->isExposed()) {
            qApp->removeEventFilter(this);
            // The window paints itself while it handles this event; what it has painted is on the screen once the
            // display server has answered.
            QMetaObject::invokeMethod(
                this,
                [] {
                    QGuiApplication::sync();
                    say("painted %lld\n", nowNs());
                    QTimer::singleShot(0, qApp, doTask);
                },
                Qt::QueuedConnection);
        }
        return false;
    }
};

class AttendantPlugin final : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "Attendant.json")

public:
    QObject *create(const QString &, const QString &) override { return new Attendant; }
};

} // namespace

#include "Attendant.moc"
