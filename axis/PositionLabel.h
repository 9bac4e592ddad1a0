// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QLabel>

/** Shows "number unit" as an instrument does: the number large, the unit beside it small and quiet. */
class PositionLabel final : public QLabel
{
    Q_OBJECT
    Q_PROPERTY(QColor unitColor READ unitColor WRITE setUnitColor) // clazy:exclude=qproperty-without-notify

public:
    explicit PositionLabel(QWidget *parent = nullptr);

    QColor unitColor() const { return m_unitColor; }
    void setUnitColor(const QColor &color);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_unitColor = Qt::gray;
};
