#include <QtTest>
class tst_PanelSequences : public QObject { Q_OBJECT };
QTEST_MAIN(tst_PanelSequences)
#include "tst_PanelSequences.moc"
