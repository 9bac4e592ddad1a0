// SPDX-License-Identifier: MIT
#pragma once

#include "axis/MoverControlWidget.h"
#include "device/SerialComDev.h"
#include "models/AddControlsWidget.h"
#include "settings/OptionsWidget.h"
#include "shell/ConnectionWidget.h"
#include "shell/HelpWidget.h"
#include "shell/MoverWidget.h"
#include "shell/PlaceholderWidget.h"
#include "support/DebugLog.h"
#include "support/Robot.h"

#include "Scenario.h"

#include <QComboBox>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QTextBrowser>
#include <QtTest>

/** The main window on the simulated controller, and what a user sees and does there. */
class OpenWindow final
{
public:
    OpenWindow()
        : m_window(std::make_unique<MoverWidget>())
    {
        m_window->show();
        // A desktop that tells of it late would take its activity from a window that has come meanwhile.
        if (!QTest::qWaitForWindowActive(m_window.get()))
            qWarning("The main window does not become active.");
    }

    MoverWidget &window() { return *m_window; }
    void destroy() { m_window.reset(); }

    template <typename Widget = QPushButton>
    Widget *find(const char *name) const
    {
        return m_window->findChild<Widget *>(QLatin1String(name));
    }
    /** A button of the title bar; other windows have some of the same name. */
    QPushButton *titleButton(const char *name) const
    {
        return find<QWidget>("widget_titleBar")->findChild<QPushButton *>(QLatin1String(name));
    }
    template <typename Dialog>
    Dialog *dialog() const
    {
        return m_window->findChild<Dialog *>();
    }
    QRadioButton *rocker() const { return find<QRadioButton>("radioButton_Rocker"); }
    QWidget *content() const { return find<QWidget>("widget_controls"); }

    /** Through the connection dialog, like the user. */
    void connectTo(int id = 1001) { m_robot.connectTo(id); }
    void disconnect() { m_robot.disconnect(); }
    void addAxis(int axis, const QString &model = QStringLiteral("LIN-100")) { m_robot.addAxis(axis, model); }

    static void click(QAbstractButton *button) { QTest::mouseClick(button, Qt::LeftButton); }

    QStringList panelNames() const
    {
        QStringList names;
        for (const MoverControlWidget *panel : m_window->panelBoard().panels())
            names.append(panel->axisName());
        return names;
    }
    MoverControlWidget *panel(int axis) const { return m_robot.panel(axis); }
    QPushButton *tab(int axis) const
    {
        return find<QWidget>("widget_menuBar")->findChild<QPushButton *>(QStringLiteral("Axis%1").arg(axis + 1));
    }
    /** What stands in the menu bar, from left to right; "-" for a space. */
    QStringList menuBar() const
    {
        QStringList names;
        const QLayout *layout = find<QWidget>("widget_menuBar")->layout();
        for (int k = 0; k < layout->count(); ++k)
            names.append(layout->itemAt(k)->widget() ? layout->itemAt(k)->widget()->objectName() : QStringLiteral("-"));
        return names;
    }
    static QStringList menuBarWith(const QStringList &tabs)
    {
        return QStringList{QStringLiteral("pushButton_connect")} + tabs +
               QStringList{
                   QStringLiteral("pushButton_addAsix"), QStringLiteral("-"), QStringLiteral("radioButton_Rocker")};
    }

private:
    std::unique_ptr<MoverWidget> m_window;
    Robot m_robot{m_window.get(), &OpenWindow::click};
};

/** Qt's warnings, and the program's own. */
inline QStringList qtWarnings(const DebugLog &log)
{
    return log.warnings();
}

/** What the tests of whole windows stand on: a simulation begun again, and a log in which nothing may complain. */
class WindowTest : public QObject
{
protected:
    void begin()
    {
        QApplication::setWindowIcon(QPixmap(16, 16)); // where a desktop shows notices, each has the program's icon
        simulator::reset();
        m_log.reset(); // one at a time, also after a failure
        m_log = std::make_unique<DebugLog>();
    }
    void end()
    {
        simulator::clearFaults();
        simulator::releaseHung();
        QVERIFY(SerialComDev::endThread(5000));
        QCOMPARE(QString::fromStdString(simulator::overlap()), QString());
        QCOMPARE(qtWarnings(*m_log), QStringList());
        m_log.reset();
    }

    std::unique_ptr<DebugLog> m_log;
};

/** The text of a panel's log. */
inline QString logOf(const MoverControlWidget *panel)
{
    return panel->findChild<QTextBrowser *>(QStringLiteral("textBrowser_operatioInfo"))->toPlainText();
}
