// SPDX-License-Identifier: MIT
#pragma once

#include "device/moverSetUp.h"

#include <QMap>
#include <QObject>
#include <QTimer>

/**
 * The board that is being set up, through the library for such boards, whichever library is in use. Nothing here waits:
 * look at board() when it has changed(). GUI thread, one at a time.
 */
class BoardLink final : public QObject
{
    Q_OBJECT

public:
    using Settings = QMap<int, double>;
    /** The setting of the first axis. */
    static constexpr int StepsPerUnit = 100;
    /** Of the axes, in their order. */
    static QString letters() { return QStringLiteral("XYZABC"); }

    explicit BoardLink(QObject *parent = nullptr);
    ~BoardLink() override;

    /** What the library has for it; null, with the reason, where there is no such library. It stays loaded. */
    static const MoverSetUp *functions(QString *reason = nullptr);
    /** What is wrong in the file of controllers as that library reads it; empty: nothing. */
    static QString faultOf(const QString &file);
    /** A stage as the file of controllers has it. */
    static QByteArray stageText(const MotorParams &stage);

    /** Begins to open the port. False where there is no such library. */
    bool open(const QString &port);
    void close();
    QString port() const { return m_sPort; }

    const MoverBoard &board() const { return m_board; }
    bool isOpen() const { return m_board.phase >= moverSetUp::Resting; }
    bool isResting() const { return m_board.phase == moverSetUp::Resting; }
    const Settings &settings() const { return m_settings; }
    double setting(int number, double otherwise) const { return m_settings.value(number, otherwise); }

    // What the board does; each returns a status.
    int write(const Settings &settings);
    int move(int axis, double distance, double speed);
    void stop();
    int unlock();
    int home(int axis);

signals:
    /** What board() or settings() says is new. */
    void changed();
    /** The board has something to say to the operator. */
    void said(const QString &words);

private:
    void look();

    QTimer m_timer;
    QString m_sPort;
    MoverBoard m_board = {};
    Settings m_settings;
};
