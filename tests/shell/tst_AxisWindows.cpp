#include <QtTest>
class tst_AxisWindows : public QObject { Q_OBJECT };
QTEST_MAIN(tst_AxisWindows)
#include "tst_AxisWindows.moc"
