// SPDX-License-Identifier: MIT
#pragma once

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

/**
 * A program that runs as a process of its own, without a display. Each line of its debug log begins with the kind of
 * message: "debug|" for the program's own lines.
 */
class Child final
{
public:
    explicit Child(const QString &program, const QStringList &arguments = {})
    {
        process.setProgram(program);
        process.setArguments(arguments);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.insert(QStringLiteral("QT_MESSAGE_PATTERN"), QStringLiteral("%{type}|%{category}|%{message}"));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_folder.path());
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), m_folder.path());
        environment.remove(QStringLiteral("MOVER_SCENARIO"));
        process.setProcessEnvironment(environment);
    }
    ~Child()
    {
        if (process.state() != QProcess::NotRunning) {
            process.kill();
            process.waitForFinished();
        }
    }

    void set(const char *variable, const QString &value)
    {
        QProcessEnvironment environment = process.processEnvironment();
        environment.insert(QLatin1String(variable), value);
        process.setProcessEnvironment(environment);
    }
    void unset(const char *variable)
    {
        QProcessEnvironment environment = process.processEnvironment();
        environment.remove(QLatin1String(variable));
        process.setProcessEnvironment(environment);
    }

    void start() { process.start(); }
    /** Waits for its end. Its exit code, or -1 when it crashed or did not end in half a minute. */
    int wait()
    {
        const bool ended = process.state() == QProcess::NotRunning || process.waitForFinished(30000);
        return ended && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }
    int run()
    {
        start();
        return wait();
    }
    void takeDisplayAway()
    {
        for (const char *variable : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"})
            unset(variable);
    }
    void send(int signal) const { ::kill(pid_t(process.processId()), signal); }

    /** Whether the process has got as far as its event loop: that is when it begins to handle signals itself. */
    bool handles(int signal) const
    {
        const QString folder = QStringLiteral("/proc/%1/").arg(process.processId());
        if (QFile::symLinkTarget(folder + QStringLiteral("exe")) != QFileInfo(process.program()).canonicalFilePath())
            return false; // still this test, forked
        QFile status(folder + QStringLiteral("status"));
        if (!status.open(QIODevice::ReadOnly))
            return false;
        const QList<QByteArray> lines = status.readAll().split('\n');
        for (const QByteArray &line : lines) {
            if (line.startsWith("SigCgt:"))
                return line.mid(7).trimmed().toULongLong(nullptr, 16) & (1ULL << (signal - 1));
        }
        return false;
    }
    /** The files that the process has loaded. */
    QStringList loadedFiles() const
    {
        QFile maps(QStringLiteral("/proc/%1/maps").arg(process.processId()));
        QStringList files;
        if (maps.open(QIODevice::ReadOnly)) {
            const QStringList lines = QString::fromLocal8Bit(maps.readAll()).split(QLatin1Char('\n'));
            for (const QString &line : lines)
                files.append(line.section(QLatin1Char(' '), 5, -1, QString::SectionSkipEmpty));
        }
        files.removeDuplicates();
        return files;
    }

    /** What has come on standard output. */
    QByteArray output()
    {
        m_output += process.readAllStandardOutput();
        return m_output;
    }
    bool hasSaid(const char *text) { return output().contains(text); }
    /** The lines on standard error, but for the program's own debug lines. */
    QStringList complaints()
    {
        m_errors += process.readAllStandardError();
        QStringList lines = QString::fromUtf8(m_errors).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        lines.erase(
            std::remove_if(
                lines.begin(), lines.end(),
                [](const QString &line) {
                    // "profiling": a program that was killed has left its counts of reached lines half written.
                    return line.startsWith(QLatin1String("debug|")) || line.startsWith(QLatin1String("profiling: ")) ||
                           line.endsWith(QLatin1String("This plugin does not support propagateSizeHints()"));
                }),
            lines.end());
        return lines;
    }

    QProcess process;

private:
    QTemporaryDir m_folder;
    QByteArray m_output;
    QByteArray m_errors;
};
