// SPDX-License-Identifier: MIT
#include "session/ControlAxis.h"

#include <QtTest>

using namespace std::chrono_literals;

namespace {

MotorStageState stateOf(bool stands, bool atOrigin)
{
    MotorStageState state = {};
    state.isStop = stands;
    state.isHome = atOrigin;
    return state;
}

const MotorStageState moving = stateOf(false, false);
const MotorStageState standing = stateOf(true, false);
const MotorStageState standingAtOrigin = stateOf(true, true);

} // namespace

/** How far a position can be trusted. Times are made up: nothing here waits. */
class tst_ControlAxis : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void isNotHomedAtFirst();
    void theOriginFlagAloneIsNoHoming();
    void isHomedWhenAHomingHasEndedAtTheOrigin();
    void aHomingThatEndsElsewhereIsNone();
    void aCommandAfterAHomingThatHasNotEndedTakesItBack();
    void staysHomedWhileItMovesOn();
    void aFlagThatTellsHomingIsBelieved();
    void theLinkIsLostAfterASecondOfFailures();
    void aFailureInBetweenIsNoLostLink();
    void aFailureThatNothingFollowsIsNoLostLink();
    void aLinkThatWasLostIsRememberedUntilTheNextHoming();
    void silenceIsNoAnswer();
    void aSlowLinkIsNoSilence();
    void theFirstAnswerOfASlowLinkIsWaitedFor();
    void theSameAxisDescribedAnewKeepsItsTrust();

private:
    AxisTrust::Kind kind() const { return m_axis->trust(m_now).kind; }
    /** `seconds` pass, with answers ten times in each. */
    void answerFor(double seconds, const MotorStageState &state = standing);
    void failFor(double seconds);
    void say(const MotorStageState &state)
    {
        m_axis->notePosition(1, m_now);
        m_axis->noteState(state, m_now);
    }
    void home()
    {
        m_axis->noteCommand(true);
        answerFor(0.5, moving);
        answerFor(0.2, standingAtOrigin);
    }

    std::unique_ptr<ControlAxis> m_axis;
    AnswerListener::Time m_now;
};

void tst_ControlAxis::init()
{
    m_axis = std::make_unique<ControlAxis>(AxisDescription{});
    m_now = std::chrono::steady_clock::now();
    answerFor(1);
}

void tst_ControlAxis::answerFor(double seconds, const MotorStageState &state)
{
    for (int k = 0; k < seconds * 10; ++k) {
        m_now += 100ms;
        say(state);
    }
}

void tst_ControlAxis::failFor(double seconds)
{
    for (int k = 0; k < seconds * 10; ++k) {
        m_now += 100ms;
        m_axis->noteFailure(m_now);
    }
}

void tst_ControlAxis::isNotHomedAtFirst()
{
    QCOMPARE(kind(), AxisTrust::NotHomed);
    QVERIFY(!m_axis->trust(m_now).isStale());
}

void tst_ControlAxis::theOriginFlagAloneIsNoHoming()
{
    answerFor(1, standingAtOrigin);
    QCOMPARE(kind(), AxisTrust::NotHomed);
}

void tst_ControlAxis::isHomedWhenAHomingHasEndedAtTheOrigin()
{
    m_axis->noteCommand(true);
    answerFor(0.5, moving);
    QCOMPARE(kind(), AxisTrust::NotHomed);
    answerFor(0.1, stateOf(false, true)); // passes it
    QCOMPARE(kind(), AxisTrust::NotHomed);
    const auto before = std::chrono::system_clock::now();
    answerFor(0.1, standingAtOrigin);
    QCOMPARE(kind(), AxisTrust::Homed);
    const auto at = m_axis->trust(m_now).at;
    QVERIFY(before <= at && at <= std::chrono::system_clock::now());
}

void tst_ControlAxis::aHomingThatEndsElsewhereIsNone()
{
    m_axis->noteCommand(true);
    answerFor(0.5, moving);
    answerFor(0.1, standing);
    answerFor(0.1, standingAtOrigin); // moved there by something else
    QCOMPARE(kind(), AxisTrust::NotHomed);
}

void tst_ControlAxis::aCommandAfterAHomingThatHasNotEndedTakesItBack()
{
    m_axis->noteCommand(true);
    m_axis->noteCommand(false);
    answerFor(0.5, moving);
    answerFor(0.1, standingAtOrigin);
    QCOMPARE(kind(), AxisTrust::NotHomed);
}

void tst_ControlAxis::staysHomedWhileItMovesOn()
{
    home();
    m_axis->noteCommand(false);
    answerFor(0.5, moving);
    answerFor(0.5, standing);
    QCOMPARE(kind(), AxisTrust::Homed);
}

void tst_ControlAxis::aFlagThatTellsHomingIsBelieved()
{
    AxisDescription description;
    description.tellsHoming = true;
    m_axis = std::make_unique<ControlAxis>(description);
    answerFor(0.5, moving);
    QCOMPARE(kind(), AxisTrust::NotHomed);
    answerFor(0.2, standingAtOrigin); // another axis was homed, and this one with it
    QCOMPARE(kind(), AxisTrust::Homed);
    answerFor(0.2, standing); // the board was reset
    QCOMPARE(kind(), AxisTrust::NotHomed);
}

void tst_ControlAxis::theLinkIsLostAfterASecondOfFailures()
{
    home();
    failFor(1);
    QCOMPARE(kind(), AxisTrust::Homed); // 0.9 s since the first
    failFor(0.1);
    QCOMPARE(kind(), AxisTrust::LinkLost);
    QVERIFY(m_axis->trust(m_now).isStale());
    const auto since = m_axis->trust(m_now).at;
    failFor(10);
    QCOMPARE(m_axis->trust(m_now).at, since);
}

void tst_ControlAxis::aFailureInBetweenIsNoLostLink()
{
    home();
    for (int k = 0; k < 20; ++k) {
        failFor(0.1);
        answerFor(0.1);
    }
    QCOMPARE(kind(), AxisTrust::Homed);
}

void tst_ControlAxis::aFailureThatNothingFollowsIsNoLostLink()
{
    home();
    failFor(0.1);
    m_now += 3s; // somebody holds the library
    QCOMPARE(kind(), AxisTrust::NoAnswer);
    answerFor(0.1);
    QCOMPARE(kind(), AxisTrust::Homed);
}

void tst_ControlAxis::aLinkThatWasLostIsRememberedUntilTheNextHoming()
{
    home();
    failFor(2);
    const auto since = m_axis->trust(m_now).at;
    answerFor(5);
    QCOMPARE(kind(), AxisTrust::LinkWasLost);
    QCOMPARE(m_axis->trust(m_now).at, since);
    QVERIFY(!m_axis->trust(m_now).isStale());
    home();
    QCOMPARE(kind(), AxisTrust::Homed);
}

void tst_ControlAxis::silenceIsNoAnswer()
{
    home();
    m_now += 1s;
    QCOMPARE(kind(), AxisTrust::Homed);
    m_now += 3100ms;
    const AxisTrust trust = m_axis->trust(m_now);
    QCOMPARE(trust.kind, AxisTrust::NoAnswer);
    QCOMPARE(trust.seconds, 4);
    QVERIFY(trust.isStale());
    answerFor(0.1);
    QCOMPARE(kind(), AxisTrust::Homed); // nothing was lost
}

void tst_ControlAxis::aSlowLinkIsNoSilence()
{
    for (int k = 0; k < 5; ++k) {
        m_now += 1200ms;
        say(standing);
        m_now += 1100ms;
        QCOMPARE(kind(), AxisTrust::NotHomed);
    }
    m_now += 4700ms; // 5.8 s of 2.3 s a round
    QCOMPARE(kind(), AxisTrust::NoAnswer);
}

void tst_ControlAxis::theFirstAnswerOfASlowLinkIsWaitedFor()
{
    const ControlAxis axis({});
    const auto now = std::chrono::steady_clock::now();
    QCOMPARE(axis.trust(now + 2s).kind, AxisTrust::NotHomed);
    QCOMPARE(axis.trust(now + 3s).kind, AxisTrust::NoAnswer);
}

void tst_ControlAxis::theSameAxisDescribedAnewKeepsItsTrust()
{
    home();
    const ControlAxis again({}, *m_axis);
    QCOMPARE(again.trust().kind, AxisTrust::Homed);
}

QTEST_GUILESS_MAIN(tst_ControlAxis)
#include "tst_ControlAxis.moc"
