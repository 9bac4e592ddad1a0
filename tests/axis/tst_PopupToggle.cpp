// SPDX-License-Identifier: MIT
#include "axis/PopupToggle.h"

#include <QPushButton>
#include <QWidget>
#include <QtTest>

#include <memory>

namespace {

/** A toggle and its popup, joined as a panel joins them. */
class Pair final : public QWidget
{
public:
    Pair()
    {
        button.setCheckable(true);
        button.resize(40, 40);
        resize(200, 100);
        connect(&button, &QPushButton::clicked, this, [this](bool checked) {
            if (checked && toggle.opensPopup())
                popup.show();
            else if (!checked)
                popup.hide();
        });
        show();
    }

    /** What a deactivation does to the popup. */
    void closePopup()
    {
        popup.hide();
        toggle.popupClosed();
    }

    QPushButton button{this};
    QWidget popup;
    PopupToggle toggle{&button, &popup};
};

} // namespace

class tst_PopupToggle : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_pair = std::make_unique<Pair>(); }
    void cleanup() { m_pair.reset(); }

    void closingReleasesTheToggle()
    {
        QTest::mouseClick(&m_pair->button, Qt::LeftButton);
        m_pair->closePopup();
        QVERIFY(!m_pair->button.isChecked());
    }
    void pressThatClosesBeforeItReachesTheToggleDoesNotReopen()
    {
        QTest::mouseClick(&m_pair->button, Qt::LeftButton);
        m_pair->closePopup();
        QTest::mouseClick(&m_pair->button, Qt::LeftButton);
        QVERIFY(!m_pair->popup.isVisible());
        QVERIFY(!m_pair->button.isChecked());
    }
    void pressThatClosesAfterItReachedTheToggleDoesNotReopen()
    {
        QTest::mouseClick(&m_pair->button, Qt::LeftButton);
        QTest::mousePress(&m_pair->button, Qt::LeftButton);
        m_pair->closePopup();
        QTest::mouseRelease(&m_pair->button, Qt::LeftButton);
        QVERIFY(!m_pair->popup.isVisible());
        QVERIFY(!m_pair->button.isChecked());
    }
    void clickWithoutADeactivationCloses()
    {
        QTest::mouseClick(&m_pair->button, Qt::LeftButton);
        QVERIFY(m_pair->popup.isVisible());
        QVERIFY(m_pair->button.isChecked());
        QTest::mouseClick(&m_pair->button, Qt::LeftButton);
        QVERIFY(!m_pair->popup.isVisible());
        QVERIFY(!m_pair->button.isChecked());
    }
    void laterClickOpensAgain()
    {
        QTest::mouseClick(&m_pair->button, Qt::LeftButton);
        m_pair->closePopup();
        // The next press of a person, however soon a machine could make it.
        QTRY_VERIFY((QTest::mouseClick(&m_pair->button, Qt::LeftButton), m_pair->popup.isVisible()));
        QVERIFY(m_pair->button.isChecked());
    }
    void keyOpensAtOnceAfterAClosing()
    {
        QTest::mouseClick(&m_pair->button, Qt::LeftButton);
        m_pair->closePopup();
        QTest::keyClick(&m_pair->button, Qt::Key_Space);
        QVERIFY(m_pair->popup.isVisible());
    }
    void keyOpensAfterAPressThatWasDrawnOffTheToggle()
    {
        QTest::mouseClick(&m_pair->button, Qt::LeftButton);
        m_pair->closePopup();
        QTest::mousePress(&m_pair->button, Qt::LeftButton);
        QTest::mouseRelease(&m_pair->button, Qt::LeftButton, {}, QPoint(150, 90));
        QVERIFY(!m_pair->button.isChecked());
        QTest::keyClick(&m_pair->button, Qt::Key_Space);
        QVERIFY(m_pair->popup.isVisible());
    }

private:
    std::unique_ptr<Pair> m_pair;
};

QTEST_MAIN(tst_PopupToggle)
#include "tst_PopupToggle.moc"
