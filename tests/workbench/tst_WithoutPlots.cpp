// SPDX-License-Identifier: MIT
#include "workbench/PlotModule.h"
#include "workbench/RecorderPlot.h"

#include <QtTest>

/** The program without its module of plots, which does not stand beside this test. */
class tst_WithoutPlots : public QObject
{
    Q_OBJECT

private slots:
    void theRecorderSaysThatItCannotDraw()
    {
        QVERIFY(!PlotModule::functions());
        QVERIFY2(PlotModule::error().contains("moverPlots"), qPrintable(PlotModule::error()));
        RecorderPlot plot;
        plot.resize(600, 300);
        const auto picture = [&plot](const QColor &words) {
            plot.setProperty("quietColor", words);
            return plot.grab().toImage();
        };
        QVERIFY(picture(Qt::white) != picture(plot.property("wellColor").value<QColor>()));
    }
};

QTEST_MAIN(tst_WithoutPlots)
#include "tst_WithoutPlots.moc"
