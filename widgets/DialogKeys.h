// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

#include <functional>

class QPushButton;
class QWidget;

/**
 * What Escape and Enter do in a window that is no QDialog, or in a panel laid over one. Sees the keys that nobody
 * inside has taken.
 */
class DialogKeys final : public QObject
{
public:
    /**
     * Escape calls `close`, which may be empty. Enter presses the button that has the focus, otherwise `confirm`, which
     * may be null; a key that is held down counts once.
     */
    explicit DialogKeys(QWidget *window, std::function<void()> close = {}, QPushButton *confirm = nullptr);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool pressEnter();

    QWidget *m_window;
    std::function<void()> m_close;
    QPushButton *m_confirm;
};
