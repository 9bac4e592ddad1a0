// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

/** The content area of the axis panels. While it shows none, it says in its middle how to get one. */
class PanelArea final : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    void setHint(const QString &hint);
    QString hint() const { return m_sHint; }

protected:
    void childEvent(QChildEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_sHint;
};
