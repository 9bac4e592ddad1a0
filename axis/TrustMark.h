// SPDX-License-Identifier: MIT
#pragma once

#include "session/ControlAxis.h"

#include <QLabel>

/**
 * One quiet line under the position: how far it can be trusted, as a sign and in words. It repaints only when it has
 * something else to say.
 */
class TrustMark final : public QLabel
{
    Q_OBJECT
    // The colours of the style sheet. clazy:excludeall=qproperty-without-notify
    Q_PROPERTY(QColor warningColor MEMBER m_warningColor)
    Q_PROPERTY(QColor quietColor MEMBER m_quietColor)
    Q_PROPERTY(QColor alarmColor MEMBER m_alarmColor)

public:
    explicit TrustMark(QWidget *parent = nullptr);

    void setTrust(const AxisTrust &trust);
    const AxisTrust &trust() const { return m_trust; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void showTrust();
    QString words() const;
    QColor color() const;

    AxisTrust m_trust;
    QColor m_warningColor = Qt::yellow;
    QColor m_quietColor = Qt::gray;
    QColor m_alarmColor = Qt::red;
};
