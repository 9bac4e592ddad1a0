// SPDX-License-Identifier: MIT
#include "widgets/Dialogs.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGraphicsDropShadowEffect>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QStyle>
#include <QStyleOption>
#include <QWidget>

void Dialogs::makeFrameless(QWidget *dialog, QWidget *body)
{
    dialog->setAttribute(Qt::WA_TranslucentBackground);
    dialog->setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
    dialog->setWindowModality(Qt::ApplicationModal);

    auto *shadow = new QGraphicsDropShadowEffect(body);
    shadow->setBlurRadius(10);
    shadow->setOffset(0, 0);
    shadow->setColor(Qt::gray);
    body->setGraphicsEffect(shadow);
}

void Dialogs::centreOn(QWidget *popup, const QWidget *window)
{
    popup->move(
        window->x() + (window->width() - popup->width()) / 2, window->y() + (window->height() - popup->height()) / 2);
}

QScreen *Dialogs::screenOf(const QWidget *window)
{
    QScreen *screen = QGuiApplication::screenAt(window->frameGeometry().center());
    return screen ? screen : window->screen();
}

void Dialogs::keepOnScreen(QWidget *popup)
{
    QRect screen = screenOf(popup)->availableGeometry();
    const bool getsFrame = !(popup->windowFlags() & Qt::FramelessWindowHint);
    if (getsFrame && popup->frameGeometry() == popup->geometry())
        screen.adjust(8, 40, -8, -8); // the window manager puts it around later
    const QSize size = popup->frameGeometry().size();
    const QPoint place(
        qMax(screen.left(), qMin(popup->x(), screen.right() + 1 - size.width())),
        qMax(screen.top(), qMin(popup->y(), screen.bottom() + 1 - size.height())));
    if (place != popup->pos())
        popup->move(place);
}

void Dialogs::polishWhenShown()
{
    QCoreApplication::removePostedEvents(nullptr, QEvent::PolishRequest);
}

void Dialogs::paintBackground(QWidget *widget)
{
    QStyleOption option;
    option.initFrom(widget);
    QPainter painter(widget);
    widget->style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, widget);
}
