// SPDX-License-Identifier: MIT
#include "device/Heart.h"

#include <QDebug>

Heart::Heart()
{
    m_thread.setObjectName(QStringLiteral("Heart"));
    m_timer.setInterval(IntervalMs);
    moveToThread(&m_thread);
    connect(&m_timer, &QTimer::timeout, this, &Heart::singleHeart);
    m_thread.start();
}

Heart::~Heart()
{
    stopHeart();
    m_thread.quit();
    m_thread.wait();
}

void Heart::startHeart()
{
    if (!m_timer.isActive())
        m_timer.start();
}

void Heart::stopHeart()
{
    if (m_timer.isActive())
        m_timer.stop();
}

void Heart::singleHeart()
{
    emit sendHeart();
}

void Heart::rcvHeartInfo(CONTROLER_STATE state, int ret)
{
    if (ret < 0) {
        emit heartBreak(++m_iMissed);
        return;
    }
    qDebug() << "rcvHeartInfo" << state.rockerValue;
    m_state = state;
    emit receivedControlerState();
}
