// SPDX-License-Identifier: MIT
#include "controllers/core/MotionProfile.h"

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <random>

using controllers::Motion;
using controllers::MotionProfile;

class tst_MotionProfile : public QObject
{
    Q_OBJECT

private slots:
    void reachesCruisingSpeedOnALongWay();
    void turnsBackAtTheMiddleOfAShortWay();
    void takesNoTimeForNoWay();
    void brakesBeforeItTurns();
    void slowsDownFromMoreThanTheSpeed();
    void staysWithinItsLimits_data();
    void staysWithinItsLimits();
};

void tst_MotionProfile::reachesCruisingSpeedOnALongWay()
{
    // 2 s to reach 10 over 10 units, 8 s for 80, 2 s to brake over 10.
    const MotionProfile profile = MotionProfile::to({5, 0}, 105, 10, 5);
    QCOMPARE(profile.duration(), 12.0);
    QCOMPARE(profile.at(2).position, 15.0);
    QCOMPARE(profile.at(6).velocity, 10.0);
    QCOMPARE(profile.at(10).position, 95.0);
    QCOMPARE(profile.at(11).velocity, 5.0);
    QCOMPARE(profile.at(12).position, 105.0);
    QCOMPARE(profile.at(13).velocity, 0.0);
}

void tst_MotionProfile::turnsBackAtTheMiddleOfAShortWay()
{
    const MotionProfile profile = MotionProfile::to({0, 0}, -5, 10, 5);
    QCOMPARE(profile.duration(), 2.0);
    QCOMPARE(profile.at(1).position, -2.5);
    QCOMPARE(profile.at(1).velocity, -5.0);
    QCOMPARE(profile.at(2).position, -5.0);
}

void tst_MotionProfile::takesNoTimeForNoWay()
{
    const MotionProfile profile = MotionProfile::to({3, 0}, 3, 10, 5);
    QCOMPARE(profile.duration(), 0.0);
    QCOMPARE(profile.at(0).position, 3.0);
    QCOMPARE(profile.at(0).velocity, 0.0);
}

void tst_MotionProfile::brakesBeforeItTurns()
{
    // 2 s to brake from 10 over 10 units, then 20 back with a triangle of 4 s.
    const MotionProfile profile = MotionProfile::to({0, 10}, -10, 100, 5);
    QCOMPARE(profile.at(2).position, 10.0);
    QCOMPARE(profile.at(2).velocity, 0.0);
    QCOMPARE(profile.duration(), 6.0);
    QCOMPARE(profile.at(6).position, -10.0);
}

void tst_MotionProfile::slowsDownFromMoreThanTheSpeed()
{
    // 1 s from 10 to 5 over 7.5 units, 1 s to brake over 2.5, and 5 units of cruise between them.
    const MotionProfile profile = MotionProfile::to({0, 10}, 15, 5, 5);
    QCOMPARE(profile.at(1).position, 7.5);
    QCOMPARE(profile.at(1.5).velocity, 5.0);
    QCOMPARE(profile.duration(), 3.0);
}

void tst_MotionProfile::staysWithinItsLimits_data()
{
    QTest::addColumn<bool>("fromStand");
    QTest::newRow("from a stand") << true;
    QTest::newRow("in motion") << false;
}

void tst_MotionProfile::staysWithinItsLimits()
{
    QFETCH(bool, fromStand);
    std::mt19937 random(4711);
    std::uniform_real_distribution<double> position(-100, 100);
    std::uniform_real_distribution<double> exponent(-2, 2);
    for (int i = 0; i < 500; ++i) {
        const double speed = std::pow(10, exponent(random));
        const double acceleration = std::pow(10, exponent(random));
        const double target = position(random);
        Motion start{position(random), 0};
        if (!fromStand) {
            // As fast as the room towards the target allows, now in its direction and now against it.
            const double room = std::sqrt(2 * acceleration * std::abs(target - start.position));
            start.velocity = room * std::uniform_real_distribution<double>(-1, 1)(random);
        }
        const double stand = start.position + start.velocity * std::abs(start.velocity) / (2 * acceleration);
        const double lowest = std::min({start.position, stand, target}) - 1e-9;
        const double highest = std::max({start.position, stand, target}) + 1e-9;
        const double fastest = std::max(speed, std::abs(start.velocity)) * (1 + 1e-12);

        const MotionProfile profile = MotionProfile::to(start, target, speed, acceleration);
        const int samples = 200;
        const double step = profile.duration() / samples;
        Motion before = profile.at(0);
        QCOMPARE(before.position, start.position);
        for (int k = 1; k <= samples; ++k) {
            const Motion motion = profile.at(k * step);
            QVERIFY(motion.position >= lowest && motion.position <= highest);
            QVERIFY(std::abs(motion.velocity) <= fastest);
            QVERIFY(std::abs(motion.velocity - before.velocity) <= acceleration * step * (1 + 1e-6) + 1e-9);
            QVERIFY(std::abs(motion.position - before.position) <= fastest * step * (1 + 1e-6) + 1e-9);
            before = motion;
        }
        QCOMPARE(profile.at(profile.duration()).position, target);
        QCOMPARE(profile.at(profile.duration()).velocity, 0.0);
        // The closed form arrives by itself: the exact end is no jump.
        QVERIFY(std::abs(profile.at(profile.duration() * (1 - 1e-9)).position - target) < 1e-5);
    }
}

QTEST_GUILESS_MAIN(tst_MotionProfile)
#include "tst_MotionProfile.moc"
