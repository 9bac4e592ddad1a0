// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>

/** A label whose text is one link. The keyboard reaches it as it reaches a button: Tab, then Enter or Space. */
class LinkLabel final : public QLabel
{
    Q_OBJECT

public:
    explicit LinkLabel(QWidget *parent = nullptr);

    /** What the link in the text leads to. */
    void setTarget(const QString &target) { m_sTarget = target; }

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QString m_sTarget;
};
