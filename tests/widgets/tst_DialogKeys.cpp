// SPDX-License-Identifier: MIT
#include "widgets/DialogKeys.h"

#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>
#include <QtTest>

class tst_DialogKeys : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        auto *layout = new QVBoxLayout(m_window.get());
        layout->addWidget(m_field = new QSpinBox);
        layout->addWidget(m_other = new QPushButton);
        layout->addWidget(m_confirm = new QPushButton);
        m_iClosed = m_iConfirmed = m_iOther = 0;
        connect(m_confirm, &QPushButton::clicked, this, [this] { ++m_iConfirmed; });
        connect(m_other, &QPushButton::clicked, this, [this] { ++m_iOther; });
        new DialogKeys(
            m_window.get(), [this] { ++m_iClosed; }, m_confirm);
        m_window->show();
        m_field->setFocus();
    }

    void escapeCloses()
    {
        QTest::keyClick(m_field, Qt::Key_Escape);
        QCOMPARE(m_iClosed, 1);
        QCOMPARE(m_iConfirmed, 0);
    }
    void enterConfirms_data() { enterKeys(); }
    void enterConfirms()
    {
        QFETCH(Qt::Key, key);
        QTest::keyClick(m_field, key);
        QCOMPARE(m_iConfirmed, 1);
        QCOMPARE(m_iClosed, 0);
    }
    void enterPressesTheButtonThatHasTheFocus_data() { enterKeys(); }
    void enterPressesTheButtonThatHasTheFocus()
    {
        QFETCH(Qt::Key, key);
        m_other->setFocus();
        QTest::keyClick(m_other, key);
        QCOMPARE(m_iOther, 1);
        QCOMPARE(m_iConfirmed, 0);
    }
    void aHeldKeyCountsOnce()
    {
        QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"), true);
        QCoreApplication::sendEvent(m_field, &repeated);
        QCOMPARE(m_iConfirmed, 0);
    }
    void aDisabledConfirmButtonIsNotPressed()
    {
        m_confirm->setEnabled(false);
        QTest::keyClick(m_field, Qt::Key_Return);
        QCOMPARE(m_iConfirmed, 0);
    }
    void withoutActionsTheKeysPassOn()
    {
        QWidget outer;
        new DialogKeys(
            &outer, [this] { ++m_iClosed; }, nullptr);
        QWidget inner(&outer);
        new DialogKeys(&inner);
        QTest::keyClick(&inner, Qt::Key_Escape);
        QCOMPARE(m_iClosed, 1);
        QTest::keyClick(&inner, Qt::Key_Return);
        QCOMPARE(m_iConfirmed, 0);
    }

private:
    static void enterKeys()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::newRow("return") << Qt::Key_Return;
        QTest::newRow("enter") << Qt::Key_Enter;
    }

    std::unique_ptr<QWidget> m_window;
    QSpinBox *m_field = nullptr;
    QPushButton *m_other = nullptr;
    QPushButton *m_confirm = nullptr;
    int m_iClosed = 0;
    int m_iConfirmed = 0;
    int m_iOther = 0;
};

QTEST_MAIN(tst_DialogKeys)
#include "tst_DialogKeys.moc"
