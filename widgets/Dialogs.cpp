// SPDX-License-Identifier: MIT
#include "widgets/Dialogs.h"

#include <QApplication>
#include <QEvent>
#include <QGraphicsDropShadowEffect>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QStyle>
#include <QStyleOption>
#include <QWidget>

namespace {

class ForgetMouse final : public QObject
{
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Hide) {
            const QList<QWidget *> widgets = watched->findChildren<QWidget *>();
            for (QWidget *widget : widgets)
                widget->setAttribute(Qt::WA_UnderMouse, false);
        }
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

void Dialogs::makeFrameless(QWidget *dialog, QWidget *body)
{
    dialog->setAttribute(Qt::WA_TranslucentBackground);
    dialog->setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
    dialog->setWindowModality(Qt::ApplicationModal);
    forgetMouseWhenHidden(dialog);

    auto *shadow = new QGraphicsDropShadowEffect(body);
    shadow->setBlurRadius(10);
    shadow->setOffset(0, 0);
    shadow->setColor(Qt::gray);
    body->setGraphicsEffect(shadow);
}

void Dialogs::forgetMouseWhenHidden(QWidget *window)
{
    window->installEventFilter(new ForgetMouse(window));
}

bool Dialogs::focusWithin(QWidget *overlay, bool next)
{
    const auto step = [next](const QWidget *widget) {
        return next ? widget->nextInFocusChain() : widget->previousInFocusChain();
    };
    QWidget *const focus = QApplication::focusWidget();
    QWidget *const from = focus && overlay->isAncestorOf(focus) ? focus : overlay;
    QWidget *to = from;
    do {
        to = step(to);
        const bool takesTab = (to->focusPolicy() & Qt::TabFocus) && !to->focusProxy() && to->isEnabled();
        if (takesTab && overlay->isAncestorOf(to) && to->isVisibleTo(overlay)) {
            to->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return true;
        }
    } while (to != from);
    return false;
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

void Dialogs::keepOnScreen(QWidget *popup, const QMargins &frame)
{
    const QRect screen = screenOf(popup)->availableGeometry().marginsRemoved(frame);
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
