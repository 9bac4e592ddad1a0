// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QLabel>

/**
 * Shows "number unit" as an instrument does: the number large, the unit beside it small and quiet. A number without
 * room is set smaller, and cut when even the unit's size is too large for it.
 */
class PositionLabel final : public QLabel
{
    Q_OBJECT
    Q_PROPERTY(QColor unitColor READ unitColor WRITE setUnitColor) // clazy:exclude=qproperty-without-notify

public:
    explicit PositionLabel(QWidget *parent = nullptr);

    QColor unitColor() const { return m_unitColor; }
    void setUnitColor(const QColor &color);

    /** Sets the number back: it is the last one heard, not the present one. */
    void setDimmed(bool dimmed);

    /** No number widens its surroundings. */
    QSize minimumSizeHint() const override { return {0, QLabel::minimumSizeHint().height()}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_unitColor = Qt::gray;
    bool m_bDimmed = false;
};
