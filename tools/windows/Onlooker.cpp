// SPDX-License-Identifier: MIT
//
// A plug-in that Qt loads into a program when QT_QPA_GENERIC_PLUGINS names it, so that the program that is looked at is
// the program that is shipped. It does nothing to it: again and again it writes to the file MOVER_SEEN what is on the
// screen, one line a widget, fields parted by tabs:
//   the window's class, the window is active (1 or 0), the widget's class, its name, x, y, width, height (on the
//   screen, in the screen's pixels), its text
// and first a line with the number of the process. Lines stand in the order in which widgets were made.
#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QGenericPlugin>
#include <QLabel>
#include <QLineEdit>
#include <QSaveFile>
#include <QTextEdit>
#include <QTimer>
#include <QWindow>

namespace {

QString textOf(const QWidget *widget)
{
    if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
        return button->text().isEmpty() ? button->toolTip() : button->text();
    if (const auto *label = qobject_cast<const QLabel *>(widget))
        return label->text();
    if (const auto *edit = qobject_cast<const QLineEdit *>(widget))
        return edit->text();
    if (const auto *list = qobject_cast<const QComboBox *>(widget))
        return list->currentText();
    if (const auto *log = qobject_cast<const QTextEdit *>(widget))
        return log->toPlainText().right(2000);
    return widget->isWindow() ? widget->windowTitle() : QString();
}

/** Where a widget is in the pixels of the screen, which the mouse is moved in. */
QRect onScreen(const QWidget *widget)
{
    const QWindow *window = widget->window()->windowHandle();
    const double scale = window->devicePixelRatio();
    const QPointF place = widget->mapToGlobal(QPoint(0, 0));
    return {(place * scale).toPoint(), widget->size() * scale};
}

void look(const QString &path)
{
    QString seen = QString::number(QCoreApplication::applicationPid()) + QLatin1Char('\n');
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (!window->isVisible() || !window->windowHandle())
            continue;
        QWidgetList widgets = window->findChildren<QWidget *>();
        widgets.prepend(window);
        for (const QWidget *widget : qAsConst(widgets)) {
            if (widget->window() != window || !widget->isVisible())
                continue;
            const QRect place = onScreen(widget);
            QString text = textOf(widget);
            text.replace(QLatin1Char('\t'), QLatin1Char(' ')).replace(QLatin1Char('\n'), QLatin1Char('\v'));
            const QStringList fields{
                QString::fromLatin1(window->metaObject()->className()),
                QString::number(window->isActiveWindow()),
                QString::fromLatin1(widget->metaObject()->className()),
                widget->objectName(),
                QString::number(place.x()),
                QString::number(place.y()),
                QString::number(place.width()),
                QString::number(place.height()),
                text};
            seen += fields.join(QLatin1Char('\t')) + QLatin1Char('\n');
        }
    }
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(seen.toUtf8());
        file.commit(); // fails while somebody reads it; it is written again
    }
}

class OnlookerPlugin final : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "Onlooker.json")

public:
    QObject *create(const QString &, const QString &) override
    {
        auto *timer = new QTimer;
        connect(timer, &QTimer::timeout, timer, [path = qEnvironmentVariable("MOVER_SEEN")] { look(path); });
        timer->start(100);
        return timer;
    }
};

} // namespace

#include "Onlooker.moc"
