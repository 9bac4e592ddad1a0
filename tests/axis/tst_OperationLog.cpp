// SPDX-License-Identifier: MIT
#include "axis/OperationLog.h"
#include "device/SerialComDev.h"

#include "support/Catalogue.h"

#include <QRegularExpression>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>
#include <QTextBrowser>
#include <QTime>
#include <QtTest>

#include <optional>

class tst_OperationLog : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_browser.emplace();
        m_log.emplace(&*m_browser);
    }
    void cleanup()
    {
        m_log.reset();
        m_browser.reset();
    }

    void writesTheTimeAndBelowItTheEntry()
    {
        const QString before = QTime::currentTime().toString("hh:mm:ss");
        m_log->append(OPERATION_TYPE_MOVE, "10.000", OPERATION_STATE_OK);
        const QString after = QTime::currentTime().toString("hh:mm:ss");
        const QString entry = "\n移动 10.000 操作成功 ";
        QVERIFY(text() == before + entry || text() == after + entry);
    }
    void writesEntriesBelowEachOther()
    {
        m_log->append(OPERATION_TYPE_MOVE, "a", OPERATION_STATE_OK);
        m_log->append(OPERATION_TYPE_STOP, "b", OPERATION_STATE_FAIL);
        m_log->append(OPERATION_TYPE_GENERAL, "c", OPERATION_STATE_NONE);
        QCOMPARE(entries(), (QStringList{"移动 a 操作成功 ", "停止 b 操作失败 ", " c  "}));
    }

    void typeSelectsTheLeadingWord_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("chinese");
        QTest::addColumn<QString>("english");
        const struct {
            int type;
            const char *chinese;
            const char *english;
        } rows[] = {
            {0, "设置设备参数", "Setting device parameters"},
            {1, "移动", "Move"},
            {2, "设置移动参数", "Setting move param"},
            {3, "推进", "Drive"},
            {4, "设置自动运行参数", "Setting drive param"},
            {5, "步进", "Jog"},
            {6, "设置步进参数", "Setting jog param"},
            {7, "还原", "Restore"},
            {8, "停止", "Stop"},
            {9, "使能设备", "Enable control"},
            {10, "", ""},
            {11, "", ""},
            {12, "当前运行次数", "current run count"},
            {13, "", ""},
            {98, "", ""},
            {99, "", ""},
            {-1, "", ""},
            {1000, "", ""},
        };
        for (const auto &row : rows)
            QTest::addRow("%d", row.type) << row.type << row.chinese << row.english;
    }
    void typeSelectsTheLeadingWord()
    {
        QFETCH(int, type);
        QFETCH(QString, chinese);
        QFETCH(QString, english);
        m_log->append(type, "x", OPERATION_STATE_NONE);
        QCOMPARE(entries(), QStringList{chinese + " x  "});
        const Catalogue catalogue;
        m_log->append(OPERATION_TYPE_GENERAL, "between", OPERATION_STATE_NONE);
        m_log->append(type, "x", OPERATION_STATE_NONE);
        QCOMPARE(entries().last(), english + " x  ");
    }
    void stateSelectsTheTrailingWord_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<QString>("chinese");
        QTest::addColumn<QString>("english");
        const struct {
            int state;
            const char *chinese;
            const char *english;
        } rows[] = {
            {0, "运行中", "Doing"},
            {1, "操作被取消", "Operation canceled"},
            {2, "操作失败", "operation failure"},
            {3, "操作成功", "operate successfully"},
            {4, "运行完成", "Operation completed"},
            {5, "", ""},
            {99, "", ""},
            {-1, "", ""},
        };
        for (const auto &row : rows)
            QTest::addRow("%d", row.state) << row.state << row.chinese << row.english;
    }
    void stateSelectsTheTrailingWord()
    {
        QFETCH(int, state);
        QFETCH(QString, chinese);
        QFETCH(QString, english);
        m_log->append(OPERATION_TYPE_GENERAL, "x", state);
        QCOMPARE(entries(), QStringList{" x " + chinese + ' '});
        const Catalogue catalogue;
        m_log->append(OPERATION_TYPE_GENERAL, "x", state);
        QCOMPARE(entries().last(), " x " + english + ' ');
    }

    void warningsAreRedAndAllOthersWhite_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QColor>("entry");
        QTest::addColumn<QColor>("trail");
        for (const int type : {0, 1, 8, 12, 97, 99})
            QTest::addRow("%d", type) << type << QColor(Qt::white) << QColor(Qt::red);
        QTest::newRow("98") << 98 << QColor(Qt::red) << QColor(Qt::black);
    }
    void warningsAreRedAndAllOthersWhite()
    {
        QFETCH(int, type);
        QFETCH(QColor, entry);
        QFETCH(QColor, trail);
        m_log->append(OPERATION_TYPE_WARNING, "a warning before it", OPERATION_STATE_NONE);
        m_log->append(type, "text", OPERATION_STATE_FAIL);
        const QTextBlock last = m_browser->document()->lastBlock();
        QCOMPARE(colours(last.previous()), (QVector<QColor>{entry}));
        QCOMPARE(colours(last), (QVector<QColor>{entry, trail}));
    }
    void keepsTheProgramsFont()
    {
        m_log->append(OPERATION_TYPE_MOVE, "text", OPERATION_STATE_OK);
        const QTextBlock last = m_browser->document()->lastBlock();
        QCOMPARE(last.begin().fragment().charFormat().font().family(), QGuiApplication::font().family());
    }
    void wrapsALongEntry()
    {
        m_browser->resize(300, 200);
        m_browser->show();
        m_log->append(OPERATION_TYPE_GENERAL, QString("a long text ").repeated(20), OPERATION_STATE_NONE);
        QCOMPARE(m_browser->horizontalScrollBar()->maximum(), 0);
        QVERIFY(m_browser->document()->lastBlock().layout()->lineCount() > 1);
    }
    void showsMarkupCharactersAsTheyAre()
    {
        const QString text = "<b>1 < 2</b> &amp; \"q\" %1 </pre>";
        m_log->append(OPERATION_TYPE_GENERAL, text, OPERATION_STATE_NONE);
        QCOMPARE(entries(), QStringList{' ' + text + "  "});
    }
    void keepsBlanksInATextAsTheyAre()
    {
        m_log->append(OPERATION_TYPE_WARNING, "负限位光耦失效 ", OPERATION_STATE_NONE);
        QCOMPARE(entries(), QStringList{" 负限位光耦失效   "});
    }

    void replacesTheRunCountBeforeIt_data() { languages(); }
    void replacesTheRunCountBeforeIt()
    {
        QFETCH(bool, english);
        std::optional<Catalogue> catalogue;
        if (english)
            catalogue.emplace();
        const QString word = english ? "current run count" : "当前运行次数";
        const QString running = english ? "Doing" : "运行中";
        const QString completed = english ? "Operation completed" : "运行完成";

        m_log->append(OPERATION_TYPE_MOVE, "first", OPERATION_STATE_OK);
        m_log->append(OPERATION_TYPE_WARNING, "second", OPERATION_STATE_NONE);
        const QString before = text();
        for (const QString count : {"1", "2", "30"}) {
            m_log->append(OPERATION_TYPE_RUN_COUNT, count, OPERATION_STATE_RUNNING);
            QVERIFY(text().startsWith(before + '\n'));
            QCOMPARE(lines().size(), 6);
            QCOMPARE(entries().last(), word + ' ' + count + ' ' + running + ' ');
        }
        m_log->append(OPERATION_TYPE_RUN_COUNT, "30", OPERATION_STATE_COMPLETED);
        QVERIFY(text().startsWith(before + '\n'));
        QCOMPARE(lines().size(), 6);
        QCOMPARE(entries().last(), word + " 30 " + completed + ' ');
    }
    void replacesARunCountThatIsTheFirstEntry()
    {
        for (const QString count : {"1", "2", "3"}) {
            m_log->append(OPERATION_TYPE_RUN_COUNT, count, OPERATION_STATE_RUNNING);
            QCOMPARE(entries(), QStringList{"当前运行次数 " + count + " 运行中 "});
        }
    }
    void keepsTheColoursWhenItReplaces()
    {
        m_log->append(OPERATION_TYPE_WARNING, "warning", OPERATION_STATE_NONE);
        m_log->append(OPERATION_TYPE_RUN_COUNT, "1", OPERATION_STATE_RUNNING);
        m_log->append(OPERATION_TYPE_RUN_COUNT, "2", OPERATION_STATE_RUNNING);
        m_log->append(OPERATION_TYPE_MOVE, "after", OPERATION_STATE_OK);
        QVector<QVector<QColor>> all;
        for (QTextBlock block = m_browser->document()->begin(); block.isValid(); block = block.next())
            all.append(colours(block));
        const QVector<QVector<QColor>> expected{{Qt::red},   {Qt::red, Qt::black}, {Qt::white}, {Qt::white, Qt::red},
                                                {Qt::white}, {Qt::white, Qt::red}};
        QCOMPARE(all, expected);
    }
    void anotherEntryEndsTheReplacing()
    {
        m_log->append(OPERATION_TYPE_RUN_COUNT, "1", OPERATION_STATE_RUNNING);
        m_log->append(OPERATION_TYPE_WARNING, "limit", OPERATION_STATE_NONE);
        m_log->append(OPERATION_TYPE_RUN_COUNT, "2", OPERATION_STATE_RUNNING);
        m_log->append(OPERATION_TYPE_RUN_COUNT, "3", OPERATION_STATE_RUNNING);
        QCOMPARE(entries(), (QStringList{"当前运行次数 1 运行中 ", " limit  ", "当前运行次数 3 运行中 "}));
    }
    void doesNotTakeATextForARunCount()
    {
        m_log->append(OPERATION_TYPE_GENERAL, "当前运行次数 7", OPERATION_STATE_NONE);
        m_log->append(OPERATION_TYPE_RUN_COUNT, "1", OPERATION_STATE_RUNNING);
        QCOMPARE(entries(), (QStringList{" 当前运行次数 7  ", "当前运行次数 1 运行中 "}));
    }
    void replacesTheRunCountAcrossAChangeOfLanguage()
    {
        m_log->append(OPERATION_TYPE_RUN_COUNT, "1", OPERATION_STATE_RUNNING);
        const Catalogue catalogue;
        m_log->append(OPERATION_TYPE_RUN_COUNT, "2", OPERATION_STATE_RUNNING);
        QCOMPARE(entries(), QStringList{"current run count 2 Doing "});
    }
    void replacingTouchesOnlyTheEndOfALongLog()
    {
        for (int k = 0; k < 5000; ++k)
            m_log->append(OPERATION_TYPE_GENERAL, QString::number(k), OPERATION_STATE_NONE);
        m_log->append(OPERATION_TYPE_RUN_COUNT, "1", OPERATION_STATE_RUNNING);
        const QTextDocument *document = m_browser->document();
        const int end = document->lastBlock().previous().position() - 1;
        int firstTouched = document->characterCount();
        connect(document, &QTextDocument::contentsChange, this, [&](int position, int, int) {
            firstTouched = qMin(firstTouched, position);
        });
        m_log->append(OPERATION_TYPE_RUN_COUNT, "2", OPERATION_STATE_RUNNING);
        QVERIFY2(firstTouched >= end, qPrintable(QString::number(firstTouched)));
        QVERIFY(firstTouched < document->characterCount());
        QCOMPARE(document->blockCount(), 2 * 5001);
        QCOMPARE(document->lastBlock().text(), QString("当前运行次数 2 运行中 "));
    }
    void leavesTheReadersSelectionAlone()
    {
        m_log->append(OPERATION_TYPE_MOVE, "kept", OPERATION_STATE_OK);
        m_browser->moveCursor(QTextCursor::Start);
        m_browser->moveCursor(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        const QString selected = m_browser->textCursor().selectedText();
        m_log->append(OPERATION_TYPE_RUN_COUNT, "1", OPERATION_STATE_RUNNING);
        m_log->append(OPERATION_TYPE_RUN_COUNT, "2", OPERATION_STATE_RUNNING);
        QVERIFY(!selected.isEmpty());
        QCOMPARE(m_browser->textCursor().selectedText(), selected);
    }
    void followsTheEndWhileTheReaderIsThere()
    {
        m_browser->resize(300, 200);
        m_browser->show();
        for (int k = 0; k < 100; ++k)
            m_log->append(OPERATION_TYPE_GENERAL, "x", OPERATION_STATE_NONE);
        QScrollBar *bar = m_browser->verticalScrollBar();
        QVERIFY(bar->maximum() > 0);
        QCOMPARE(bar->value(), bar->maximum());
        for (int k = 1; k < 10; ++k) {
            m_log->append(OPERATION_TYPE_RUN_COUNT, QString::number(k), OPERATION_STATE_RUNNING);
            QCOMPARE(bar->value(), bar->maximum());
        }
        bar->setValue(10);
        m_log->append(OPERATION_TYPE_RUN_COUNT, "10", OPERATION_STATE_RUNNING);
        QCOMPARE(bar->value(), 10);
    }

private:
    void languages()
    {
        QTest::addColumn<bool>("english");
        QTest::newRow("Chinese") << false;
        QTest::newRow("English") << true;
    }
    QString text() const { return m_browser->toPlainText(); }
    QStringList lines() const { return text().split('\n'); }
    /** Every second line, having made sure that the others are times. */
    QStringList entries() const
    {
        static const QRegularExpression time("^[0-2]\\d:[0-5]\\d:[0-5]\\d$");
        QStringList result;
        const QStringList all = lines();
        for (int k = 0; k < all.size(); ++k) {
            if (k % 2)
                result.append(all[k]);
            else if (!time.match(all[k]).hasMatch())
                return {"not a time: " + all[k]};
        }
        return result;
    }
    static QVector<QColor> colours(const QTextBlock &block)
    {
        QVector<QColor> result;
        for (auto it = block.begin(); !it.atEnd(); ++it)
            result.append(it.fragment().charFormat().foreground().color());
        return result;
    }

    std::optional<QTextBrowser> m_browser;
    std::optional<OperationLog> m_log;
};

QTEST_MAIN(tst_OperationLog)
#include "tst_OperationLog.moc"
