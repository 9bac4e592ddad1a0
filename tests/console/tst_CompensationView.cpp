// SPDX-License-Identifier: MIT
#include "console/CompensationView.h"

#include "console/CompensationModel.h"

#include <QClipboard>
#include <QItemSelection>
#include <QLineEdit>
#include <QtTest>

class tst_CompensationView : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_view = std::make_unique<CompensationView>();
        m_model = new CompensationModel(m_view.get());
        m_view->setModel(m_model);
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
        QGuiApplication::clipboard()->clear();
    }
    void cleanup() { m_view.reset(); }

    void pastesAtTheUpperLeftOfTheSelection()
    {
        QGuiApplication::clipboard()->setText(QStringLiteral("1\t2\n3\t4\n"));
        select(5, 1, 6, 2);
        QTest::keySequence(m_view.get(), QKeySequence::Paste);
        QCOMPARE(cell(5, 1), QString("1"));
        QCOMPARE(cell(5, 2), QString("2"));
        QCOMPARE(cell(6, 1), QString("3"));
        QCOMPARE(cell(6, 2), QString("4"));
        QCOMPARE(cell(5, 0), QString());
    }
    void pastesAtTheFirstCellWithoutASelection()
    {
        QGuiApplication::clipboard()->setText(QStringLiteral("7"));
        m_view->clearSelection();
        m_view->paste();
        QCOMPARE(cell(0, 0), QString("7"));
    }
    void anEmptyClipboardChangesNothing()
    {
        m_model->setData(m_model->index(0, 0), "7");
        select(0, 0, 0, 0);
        m_view->paste();
        QCOMPARE(cell(0, 0), QString("7"));
    }
    void copiesWhatCanBePastedBack()
    {
        m_model->setData(m_model->index(2, 1), "1.5");
        m_model->setData(m_model->index(3, 2), "-2");
        select(2, 1, 3, 2);
        QTest::keySequence(m_view.get(), QKeySequence::Copy);
        QCOMPARE(QGuiApplication::clipboard()->text(), QString("1.5\t\n\t-2\n"));
        select(7, 0, 7, 0);
        QTest::keySequence(m_view.get(), QKeySequence::Paste);
        QCOMPARE(cell(7, 0), QString("1.5"));
        QCOMPARE(cell(8, 1), QString("-2"));
    }
    void copyingNothingKeepsTheClipboard()
    {
        QGuiApplication::clipboard()->setText(QStringLiteral("kept"));
        m_view->clearSelection();
        m_view->copy();
        QCOMPARE(QGuiApplication::clipboard()->text(), QString("kept"));
    }
    void deleteEmptiesTheSelectedCells()
    {
        for (int column = 0; column < 4; ++column)
            m_model->setData(m_model->index(0, column), "1");
        select(0, 1, 0, 2);
        QTest::keyClick(m_view.get(), Qt::Key_Delete);
        QCOMPARE(cell(0, 0), QString("1"));
        QCOMPARE(cell(0, 1), QString());
        QCOMPARE(cell(0, 2), QString());
        QCOMPARE(cell(0, 3), QString("1"));
    }
    void typingEditsTheCurrentCell()
    {
        m_view->setCurrentIndex(m_model->index(1, 1));
        QTest::keyClick(m_view.get(), Qt::Key_4);
        auto *editor = m_view->findChild<QLineEdit *>();
        QVERIFY(editor);
        QTest::keyClicks(editor, ".5");
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_COMPARE(cell(1, 1), QString("4.5"));
    }

private:
    QString cell(int row, int column) const { return m_model->index(row, column).data().toString(); }
    void select(int top, int left, int bottom, int right)
    {
        m_view->selectionModel()->select(
            QItemSelection(m_model->index(top, left), m_model->index(bottom, right)),
            QItemSelectionModel::ClearAndSelect);
    }

    std::unique_ptr<CompensationView> m_view;
    CompensationModel *m_model = nullptr;
};

QTEST_MAIN(tst_CompensationView)
#include "tst_CompensationView.moc"
