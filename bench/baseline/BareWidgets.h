// SPDX-License-Identifier: MIT
#pragma once

#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <QWidget>

/** Paints its style-sheet background, as the program's windows do. */
class BareWidget : public QWidget
{
protected:
    void paintEvent(QPaintEvent *) override
    {
        QStyleOption option;
        option.initFrom(this);
        QPainter painter(this);
        style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
    }
};

// The style sheet knows the program's windows by the names of their classes.

class MoverWidget final : public BareWidget
{
    Q_OBJECT
};

class MoverControlWidget final : public BareWidget
{
    Q_OBJECT
};
