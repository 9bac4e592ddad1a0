// SPDX-License-Identifier: MIT
#include "Fingers.h"

#include "shell/MoverWidget.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QInputMethodEvent>
#include <QLabel>
#include <QLineEdit>
#include <QWheelEvent>
#include <QWindow>
#include <QtTest>

namespace {

bool takesInput(const QWidget *widget)
{
    return qobject_cast<const QAbstractButton *>(widget) || qobject_cast<const QAbstractSpinBox *>(widget) ||
           qobject_cast<const QComboBox *>(widget) || qobject_cast<const QLineEdit *>(widget) ||
           qobject_cast<const QAbstractItemView *>(widget);
}

/** With a modifier held or none. Each of them may close a menu or a dialog, which is gone before the next. */
void strike(
    const QPointer<QWindow> &window, Qt::Key key, const QString &text, Qt::Key modifier = Qt::Key_unknown,
    Qt::KeyboardModifiers modifiers = {})
{
    const auto send = [&window](bool isPress, Qt::Key each, const QString &its, Qt::KeyboardModifiers with) {
        if (window)
            QTest::simulateEvent(window, isPress, each, with, its, false);
    };
    if (modifiers)
        send(true, modifier, QString(), {});
    send(true, key, text, modifiers);
    send(false, key, text, modifiers);
    if (modifiers)
        send(false, modifier, QString(), modifiers);
}

bool endsProgram(const QWidget *widget)
{
    return widget->objectName() == QLatin1String("pushButton_close") &&
           qobject_cast<const MoverWidget *>(widget->window());
}

const char *const texts[] = {
    "0",       "1",    "2.5",         "-3",       "12.345", "99999999", "1e3",          "1e308",
    "-0.0004", "2,25", "0x10",        "inf",      "nan",    " 7 ",      "abc",          "轴一二三",
    "ÄÖÜ°µ²",  "😀",    "\u202Eright", "<b>&amp;", "%1%2",   "LIN-100",  "1\t2\n3\t4\n", "",
};

} // namespace

QString Fingers::nameOf(const QWidget *widget)
{
    QString name = QLatin1String(widget->metaObject()->className()) + QLatin1Char(' ') + widget->objectName();
    if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
        name += QStringLiteral(" \"%1\"").arg(button->text());
    for (const QWidget *parent = widget->parentWidget(); parent; parent = parent->parentWidget()) {
        if (const QLabel *axis =
                parent->findChild<QLabel *>(QStringLiteral("label_axisName"), Qt::FindDirectChildrenOnly))
            name += QStringLiteral(" of ") + axis->text();
        if (parent->isWindow() && parent->metaObject() != &QWidget::staticMetaObject)
            name += QStringLiteral(" in ") + QLatin1String(parent->metaObject()->className());
    }
    return name;
}

QWidget *Fingers::target(QWidget *window)
{
    QList<QWidget *> inputs;
    QList<QWidget *> others{window};
    for (QWidget *child : window->findChildren<QWidget *>()) {
        if (!child->isVisible() || child->window() != window)
            continue;
        // Not every other moment, or there would be nothing else.
        if (endsProgram(child) && !m_random.oneIn(40))
            continue;
        (takesInput(child) ? inputs : others).append(child);
    }
    return inputs.isEmpty() || m_random.oneIn(6) ? m_random.of(others) : m_random.of(inputs);
}

/** Mostly the middle of the target, sometimes any place in it, or on its edge. */
QPoint Fingers::placeIn(const QWidget *window, const QWidget *target)
{
    QPoint place = target->rect().center();
    if (m_random.oneIn(4))
        place = {m_random.below(qMax(1, target->width())), m_random.below(qMax(1, target->height()))};
    else if (m_random.oneIn(12))
        place = {m_random.oneIn(2) ? 1 : target->width() - 2, m_random.oneIn(2) ? 1 : target->height() - 2};
    return target->mapTo(window, place);
}

void Fingers::clickOn(QWidget *widget)
{
    QWidget *window = widget->window();
    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {}, widget->mapTo(window, widget->rect().center()));
}

void Fingers::press(QWidget *window, Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    const char character = QTest::keyToAscii(key);
    strike(
        window->windowHandle(), key, character ? QString(QLatin1Char(character)) : QString(),
        modifiers & Qt::ShiftModifier     ? Qt::Key_Shift
        : modifiers & Qt::ControlModifier ? Qt::Key_Control
        : modifiers & Qt::AltModifier     ? Qt::Key_Alt
                                          : Qt::Key_unknown,
        modifiers);
}

void Fingers::click(QWidget *window)
{
    QWidget *widget = target(window);
    const QPoint place = placeIn(window, widget);
    const bool right = m_random.oneIn(15);
    m_note(QStringLiteral("%1 click on %2").arg(right ? "right" : "left", nameOf(widget)));
    const Qt::KeyboardModifiers modifiers = m_random.oneIn(15) ? Qt::ControlModifier : Qt::NoModifier;
    QTest::mouseClick(window->windowHandle(), right ? Qt::RightButton : Qt::LeftButton, modifiers, place);
}

void Fingers::doubleClick(QWidget *window)
{
    QWidget *widget = target(window);
    const QPoint place = placeIn(window, widget);
    m_note(QStringLiteral("double click on ") + nameOf(widget));
    QTest::mouseDClick(window->windowHandle(), Qt::LeftButton, {}, place);
}

void Fingers::drag(QWidget *window)
{
    QWidget *widget = target(window);
    const QPoint from = placeIn(window, widget);
    const QPoint to = from + QPoint{m_random.between(-300, 300), m_random.between(-200, 200)};
    m_note(QStringLiteral("drag from %1 by %2,%3").arg(nameOf(widget)).arg(to.x() - from.x()).arg(to.y() - from.y()));
    const QPointer<QWindow> handle = window->windowHandle(); // a press may close it
    const auto moveTo = [&handle](QPoint place) {
        if (handle)
            QTest::mouseMove(handle, place);
    };
    QTest::mousePress(handle, Qt::LeftButton, {}, from);
    moveTo(from + (to - from) / 2);
    moveTo(to);
    if (handle)
        QTest::mouseRelease(handle, Qt::LeftButton, {}, to);
}

void Fingers::wheel(QWidget *window)
{
    QWidget *widget = target(window);
    const QPoint place = placeIn(window, widget);
    const int notches = m_random.oneIn(2) ? 1 : -3;
    m_note(QStringLiteral("wheel %1 over %2").arg(notches).arg(nameOf(widget)));
    QWheelEvent event(
        place, window->mapToGlobal(place), {}, {0, 120 * notches}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
        false);
    event.setTimestamp(0);
    QCoreApplication::sendEvent(window->windowHandle(), &event);
}

void Fingers::key(QWidget *window)
{
    static constexpr Qt::Key keys[] = {
        Qt::Key_Tab,    Qt::Key_Tab,    Qt::Key_Backtab,   Qt::Key_Return, Qt::Key_Enter,
        Qt::Key_Escape, Qt::Key_Space,  Qt::Key_Left,      Qt::Key_Right,  Qt::Key_Up,
        Qt::Key_Down,   Qt::Key_Home,   Qt::Key_End,       Qt::Key_PageUp, Qt::Key_F4,
        Qt::Key_F1,     Qt::Key_Delete, Qt::Key_Backspace, Qt::Key_Menu,   Qt::Key_PageDown,
    };
    static constexpr Qt::Key withControl[] = {Qt::Key_A, Qt::Key_C, Qt::Key_V, Qt::Key_X, Qt::Key_Z, Qt::Key_Tab};
    const bool control = m_random.oneIn(4);
    const Qt::Key key = control ? m_random.of(withControl) : m_random.of(keys);
    const Qt::KeyboardModifiers modifiers = control              ? Qt::ControlModifier
                                            : m_random.oneIn(8)  ? Qt::ShiftModifier
                                            : m_random.oneIn(20) ? Qt::AltModifier
                                                                 : Qt::NoModifier;
    m_note(QStringLiteral("key %1 in %2").arg(QKeySequence(int(key) | int(modifiers)).toString(), nameOf(window)));
    press(window, key, modifiers);
}

void Fingers::type(QWidget *window)
{
    QString text = QString::fromUtf8(m_random.of(texts));
    if (m_random.oneIn(20))
        text = text.repeated(200);
    m_note(QStringLiteral("type \"%1\" into %2").arg(text.left(40), nameOf(window)));
    const QPointer<QWindow> handle = window->windowHandle();
    if (m_random.oneIn(3))
        press(window, Qt::Key_A, Qt::ControlModifier);
    switch (m_random.below(3)) {
    case 0: // as an input method does it
        if (QObject *focus = QGuiApplication::focusObject()) {
            QInputMethodEvent event;
            event.setCommitString(text);
            QCoreApplication::sendEvent(focus, &event);
        }
        break;
    case 1:
        QGuiApplication::clipboard()->setText(text);
        press(window, Qt::Key_V, Qt::ControlModifier);
        break;
    default:
        for (const QChar character : text.left(40)) {
            strike(handle, Qt::Key_unknown, QString(character));
        }
    }
}

void Fingers::resize(QWidget *window)
{
    static constexpr QSize sizes[] = {{0, 0}, {1, 1}, {640, 480}, {1024, 768}, {1920, 1080}, {3000, 2000}};
    const QSize size = m_random.oneIn(2) ? m_random.of(sizes) : QSize{m_random.below(2500), m_random.below(1500)};
    m_note(QStringLiteral("resize %1 to %2x%3").arg(nameOf(window)).arg(size.width()).arg(size.height()));
    if (m_random.oneIn(2))
        window->move(QPoint{m_random.between(-200, 1000), m_random.between(-200, 800)});
    window->resize(size);
}
