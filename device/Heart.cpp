// SPDX-License-Identifier: MIT
#include "device/Heart.h"

#include <QDebug>

namespace {

constexpr int wholeController = -1; // the joystick belongs to no axis

} // namespace

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
    disconnect(m_answered); // first: Qt may wake a thread that has just ended for an answer, and crash
    m_thread.quit();
    m_thread.wait();
}

void Heart::listenTo(const QObject *worker, const char *answer)
{
    m_answered = connect(worker, answer, this, SLOT(rcvHeartInfo(CONTROLER_STATE, int)));
}

void Heart::startHeart()
{
    m_answers.forget(wholeController);
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
    if (m_answers.isNews(wholeController, state))
        emit controlerStateChanged();
}
