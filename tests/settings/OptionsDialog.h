// SPDX-License-Identifier: MIT
#pragma once

#include "device/LibraryLock.h"
#include "device/SerialComDev.h"
#include "device/moverLibrary.h"
#include "settings/OptionsWidget.h"
#include "controllers/simulated/SimulatorControl.h"
#include "support/DebugLog.h"

#include <QAbstractButton>
#include <QApplication>
#include <QSettings>
#include <QStackedWidget>
#include <QStandardPaths>
#include <QtTest>

#include <memory>

constexpr int controllerId = 1001;

/** A settings dialog in a program folder without settings file and catalogue, with no controller open. */
class OptionsDialog final
{
public:
    OptionsDialog()
    {
        QStandardPaths::setTestModeEnabled(true);
        QFile::remove(programFile("appConfig.ini"));
        QFile::remove(programFile("mover_en_US.qm"));
        QFile::remove(QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) + "/appConfig.ini");
        simulator::reset();
    }
    ~OptionsDialog()
    {
        m_dialog.reset();
        simulator::releaseHung();
        if (!SerialComDev::endThread(5000))
            qFatal("the worker hangs");
        const QStringList dead = m_log.lines().filter("connectSlotsByName");
        if (!dead.isEmpty())
            QTest::qFail(qPrintable(dead.join('\n')), __FILE__, __LINE__);
        if (!simulator::overlap().empty())
            QTest::qFail(simulator::overlap().c_str(), __FILE__, __LINE__);
    }

    static QString programFile(const QString &name) { return QCoreApplication::applicationDirPath() + '/' + name; }

    /** What the settings file holds; -100 without one. */
    static int stored()
    {
        return QSettings(programFile("appConfig.ini"), QSettings::IniFormat).value("language/type", -100).toInt();
    }
    static void store(int code)
    {
        QSettings(programFile("appConfig.ini"), QSettings::IniFormat).setValue("language/type", code);
    }

    /** The dialog, created on first use. */
    OptionsWidget *operator->()
    {
        if (!m_dialog)
            m_dialog = std::make_unique<OptionsWidget>();
        return m_dialog.get();
    }
    OptionsWidget *get() { return operator->(); }
    /** Ends the program and starts it again, as far as the dialog can tell. */
    void restart() { m_dialog.reset(); }

    template <typename Widget>
    Widget *find(const QString &name)
    {
        auto *widget = get()->findChild<Widget *>(name);
        if (!widget)
            qFatal("no %s", qPrintable(name));
        return widget;
    }
    void click(const QString &button)
    {
        auto *widget = find<QAbstractButton>(button);
        QTest::mouseClick(widget, Qt::LeftButton, {}, QPoint(8, widget->height() / 2));
    }
    /** Shows the dialog with this page. */
    void open(const QString &page)
    {
        find<QStackedWidget>("stackedWidget")->setCurrentWidget(find<QWidget>("page_" + page));
        get()->show();
        if (!QTest::qWaitForWindowExposed(get()))
            qFatal("the dialog is not shown");
        QApplication::setActiveWindow(get());
    }

    /** Opens the controller, unless it is open. */
    void connectController()
    {
        const auto worker = SerialComDev::instance();
        if (worker->deviceId() == 0 && worker->open(controllerId) != controllerId)
            qFatal("the controller cannot be opened");
        simulator::clearJournal();
    }

    /** The library calls since the controller was connected or clearCalls() was called, once all requests have run. */
    QStringList calls()
    {
        QMetaObject::invokeMethod(
            SerialComDev::instance().data(), [] {}, Qt::BlockingQueuedConnection);
        QStringList list;
        for (const simulator::Call &call : simulator::journal())
            list.append(QString::fromStdString(call.function + '(' + call.arguments + ')'));
        return list;
    }
    void clearCalls()
    {
        calls();
        simulator::clearJournal();
    }

    const DebugLog &log() const { return m_log; }

private:
    DebugLog m_log;
    std::unique_ptr<OptionsWidget> m_dialog;
};
