// SPDX-License-Identifier: MIT
#include "axis/MoverControlWidget.h"
#include "axis/PositionLabel.h"
#include "axis/TrustMark.h"
#include "support/Catalogue.h"
#include "support/WorkerFixture.h"

#include <QDateTime>

namespace {

using namespace std::chrono_literals;

const auto at =
    std::chrono::system_clock::from_time_t(QDateTime(QDate(2026, 11, 22), QTime(12, 7, 59)).toSecsSinceEpoch());

/** Counts its paintings. */
class CountedMark final : public QObject
{
public:
    explicit CountedMark(QObject *mark) { mark->installEventFilter(this); }
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::Paint;
        return false;
    }
    int count = 0;
};

} // namespace
Q_DECLARE_METATYPE(AxisTrust)

class tst_TrustMark : public WorkerFixture
{
    Q_OBJECT

private slots:
    void saysHowFarThePositionCanBeTrusted_data();
    void saysHowFarThePositionCanBeTrusted();
    void changesItsLanguageLive();
    void paintsOnlyWhatIsNew();
    void aPanelShowsTheTrustOfItsAxisAndDimsAnOldNumber();
};

void tst_TrustMark::saysHowFarThePositionCanBeTrusted_data()
{
    QTest::addColumn<AxisTrust>("trust");
    QTest::addColumn<QString>("chinese");
    QTest::addColumn<QString>("english");
    const auto row = [](const char *name, const AxisTrust &trust, const char *chinese, const char *english) {
        QTest::newRow(name) << trust << QString::fromUtf8(chinese) << QString::fromUtf8(english);
    };
    row("not homed", {}, "未回零", "not homed");
    row("homed", {AxisTrust::Homed, at}, "已回零 12:07", "homed 12:07");
    row("link lost", {AxisTrust::LinkLost, at}, "12:07 起连接中断", "link lost since 12:07");
    row("link was lost", {AxisTrust::LinkWasLost, at}, "12:07 连接曾中断，请核对位置",
        "link was lost at 12:07, check position");
    row("no answer", {AxisTrust::NoAnswer, {}, 4}, "4 秒无应答", "no answer for 4 s");
}

void tst_TrustMark::saysHowFarThePositionCanBeTrusted()
{
    QFETCH(AxisTrust, trust);
    QFETCH(QString, chinese);
    QFETCH(QString, english);
    TrustMark mark;
    mark.setTrust(trust);
    QCOMPARE(mark.text(), chinese);
    QCOMPARE(mark.accessibleName(), QStringLiteral("位置：") + chinese);
    const Catalogue catalogue;
    QCOMPARE(mark.text(), english);
    QCOMPARE(mark.accessibleName(), QStringLiteral("Position: ") + english);
}

void tst_TrustMark::changesItsLanguageLive()
{
    TrustMark mark;
    {
        const Catalogue catalogue;
        QCOMPARE(mark.text(), QStringLiteral("not homed"));
    }
    QCOMPARE(mark.text(), QStringLiteral("未回零"));
}

void tst_TrustMark::paintsOnlyWhatIsNew()
{
    TrustMark mark;
    CountedMark paintings(&mark);
    mark.show();
    QVERIFY(QTest::qWaitForWindowExposed(&mark));
    QTRY_VERIFY(paintings.count > 0);
    QCoreApplication::processEvents();
    paintings.count = 0;
    for (int k = 0; k < 10; ++k) {
        mark.setTrust({});
        QCoreApplication::processEvents();
    }
    QCOMPARE(paintings.count, 0);
    mark.setTrust({AxisTrust::Homed, at});
    QTRY_VERIFY(paintings.count > 0);
}

void tst_TrustMark::aPanelShowsTheTrustOfItsAxisAndDimsAnOldNumber()
{
    begin();
    {
        const auto axis = QSharedPointer<ControlAxis>::create(AxisDescription{});
        MoverControlWidget panel;
        panel.setAxis(axis);
        auto *mark = panel.findChild<TrustMark *>(QStringLiteral("label_trust"));
        auto *number = panel.findChild<PositionLabel *>(QStringLiteral("label_currentPos"));
        panel.slot_updateCurrentPos(0, 12.5);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        panel.slot_updateState();
        QCOMPARE(mark->trust().kind, AxisTrust::NotHomed);
        const QImage bright = number->grab().toImage();

        const auto now = std::chrono::steady_clock::now();
        axis->noteFailure(now - 3s);
        axis->noteFailure(now);
        panel.slot_updateState();
        QCOMPARE(mark->trust().kind, AxisTrust::LinkLost);
        const QImage dim = number->grab().toImage();
        QVERIFY(dim != bright);

        axis->notePosition(12.5, now);
        panel.slot_updateState();
        QCOMPARE(mark->trust().kind, AxisTrust::LinkWasLost);
        QCOMPARE(number->grab().toImage(), bright);
    }
    end();
}

QTEST_MAIN(tst_TrustMark)
#include "tst_TrustMark.moc"
