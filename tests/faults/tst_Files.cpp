// SPDX-License-Identifier: MIT
// Every file that the program reads, in every wrong state, and settings that are saved when the machine does not let
// them.
#include "ShortRun.h"

#include "app/Child.h"
#include "device/ControllersFile.h"
#include "session/ParameterStore.h"
#include "session/Recorder.h"
#include "session/RecordingCsv.h"
#include "session/SequenceFiles.h"
#include "session/SmallFile.h"
#include "settings/LanguageStore.h"

#include <QDir>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSemaphore>

#include <csignal>
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr int limitMs = 120000;
constexpr qint64 hugeSize = qint64(1) << 30;
constexpr int nobody = 65534;

/** A file that the program reads, and what it makes of it: whole, and when it is no use. */
struct ReadFile {
    const char *name;
    const char *whole;
    const char *useless;
};

const ReadFile readFiles[] = {
    {"program/font.ttf", "font size: 16", "font size: -1"},
    {"program/deviceModelsParam", "models: ", "models: 0"},
    {"program/mover_en_US.qm", "title: Settings", "title: 设置"},
    {"program/appConfig.ini", "english: 1", "english: 0"},
    {"home/.qttest/config/mover/appConfig.ini", "english: 1", "english: 0"},
    {"program/qtbase_zh_CN.qm", "title: Settings", "title: Settings"},
    {"home/.qttest/config/mover/consolePlace", "title: Settings", "title: Settings"},
    {"program/help", "title: Settings", "title: Settings"},
};

QByteArray randomBytes(int count)
{
    QRandomGenerator random(1);
    QByteArray bytes(count, Qt::Uninitialized);
    for (char &byte : bytes)
        byte = char(random.generate());
    return bytes;
}

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
}

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/** Puts the file into a state; false when this machine has no such state. */
bool spoil(const QString &path, const QString &state)
{
    const QByteArray name = QFile::encodeName(path);
    if (state == QLatin1String("unreadable"))
        return chmod(name, 0) == 0;
    if (QFileInfo(path).isDir() && !QFileInfo(path).isSymLink())
        QDir(path).removeRecursively();
    else
        QFile::remove(path);
    if (state == QLatin1String("missing"))
        return true;
    if (state == QLatin1String("a folder"))
        return QDir().mkpath(path + QStringLiteral("/inner"));
    if (state == QLatin1String("a dangling link"))
        return symlink("/nowhere/at/all", name) == 0;
    if (state == QLatin1String("a pipe"))
        return mkfifo(name, 0666) == 0;
    if (state == QLatin1String("empty"))
        write(path, QByteArray());
    else if (state == QLatin1String("random bytes"))
        write(path, randomBytes(20000));
    else if (state == QLatin1String("huge"))
        write(path, QByteArray("{\n"));
    return state != QLatin1String("huge") || truncate(name, hugeSize) == 0;
}

/** A copy of the program's folder and of the user's, which may be spoilt. */
class Installation final
{
public:
    Installation()
        : m_folder(QStringLiteral(MOVER_SCRATCH "/filesXXXXXX"))
    {
        // Others have to get in: unreadable is tested as another user, since root may read everything.
        chmod(QFile::encodeName(m_folder.path()), 0755);
        QDir().mkpath(path("program/help"));
        QDir().mkpath(path("home/.qttest/config/mover"));
        if (::link(MOVER_DRIVEN_PROGRAM, QFile::encodeName(path("program/drivenProgram"))) != 0)
            qFatal("cannot link the program");
        for (const char *file : {"font.ttf", "deviceModelsParam", "mover_en_US.qm", "qtbase_zh_CN.qm"})
            QFile::copy(
                QStringLiteral(MOVER_PROGRAM_DIR "/") + QLatin1String(file), path("program/") + QLatin1String(file));
        write(path("program/appConfig.ini"), "[language]\ntype=1\n");
        write(path("home/.qttest/config/mover/consolePlace"), "no place");
    }
    ~Installation()
    {
        chmod(QFile::encodeName(path("program")), 0755);
        for (const ReadFile &file : readFiles)
            chmod(QFile::encodeName(path(file.name)), 0755);
    }

    QString path(const char *name) const { return m_folder.filePath(QLatin1String(name)); }

    /** Gives everything to somebody who is not root, who then runs the program. */
    void setUp(Child &child, bool asNobody) const
    {
        child.set("HOME", path("home"));
        child.set("READS", QStringLiteral("2"));
        if (!asNobody)
            return;
        QProcess::execute(QStringLiteral("chown"), {QStringLiteral("-R"), QString::number(nobody), m_folder.path()});
        chmod(QFile::encodeName(path("home")), 0700);
        child.set("XDG_RUNTIME_DIR", path("home"));
        child.set("GCOV_PREFIX", path("home")); // where a build that counts lines may write
        child.process.setArguments(
            QStringList{
                QStringLiteral("--reuid=%1").arg(nobody), QStringLiteral("--regid=%1").arg(nobody),
                QStringLiteral("--clear-groups"), child.process.program()} +
            child.process.arguments());
        child.process.setProgram(QStringLiteral("setpriv"));
    }

private:
    QTemporaryDir m_folder;
};

const QStringList arguments{QStringLiteral("reading"), QStringLiteral("button")};

ParameterSnapshot snapshotAt(int minute)
{
    ParameterSnapshot snapshot;
    snapshot.time = QDateTime(QDate(2026, 3, 1), QTime(0, 0), Qt::UTC).addSecs(60 * minute);
    snapshot.controller = QStringLiteral("SIM");
    snapshot.params = MotorParams{};
    return snapshot;
}

bool saveSequence(const QString &folder, int value)
{
    SequenceDocument document;
    for (int k = 0; k < 200; ++k)
        document.positions.append({QString::number(k), {{0, value}}});
    return SequenceStore(folder).save(QStringLiteral("SIM"), document);
}

/** A disk of a few pages, with a file that takes them up. */
class SmallDisk final
{
public:
    SmallDisk()
        : m_isThere(mount("tmpfs", QFile::encodeName(m_folder.path()), "tmpfs", 0, "size=128k") == 0)
    {
    }
    ~SmallDisk()
    {
        if (m_isThere)
            umount2(QFile::encodeName(m_folder.path()), MNT_DETACH);
    }
    bool isThere() const { return m_isThere; }
    QString filePath(const char *name) const { return m_folder.filePath(QLatin1String(name)); }
    /** But for `free` pages. */
    bool fill(int free) const
    {
        constexpr int page = 4096;
        QFile filler(filePath("filler"));
        if (!filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
            return false;
        while (filler.write(QByteArray(page, 'x')) == page) {
        }
        return filler.resize(filler.size() - page * free);
    }
    bool empty() const { return QFile::remove(filePath("filler")); }

private:
    Q_DISABLE_COPY(SmallDisk)

    const QTemporaryDir m_folder;
    const bool m_isThere;
};

} // namespace

class tst_Files : public QObject
{
    Q_OBJECT

private slots:
    void isReadWholeOrNotAtAll_data();
    void isReadWholeOrNotAtAll();
    void isReplacedWhileItIsRead_data();
    void isReplacedWhileItIsRead();
    void isDamagedInside_data();
    void isDamagedInside();
    void aSpoiltScenarioIsRefused_data();
    void aSpoiltScenarioIsRefused();
    void aKillAtAnySystemCallLosesNoSetting_data();
    void aKillAtAnySystemCallLosesNoSetting();
    void aFullDiskLosesNoSetting();
    void aFullDiskLosesNoFile_data();
    void aFullDiskLosesNoFile();
};

void tst_Files::isReadWholeOrNotAtAll_data()
{
    QTest::addColumn<int>("file");
    QTest::addColumn<QString>("state");
    int number = 0;
    for (int k = 0; k < int(std::size(readFiles)); ++k) {
        for (const char *state :
             {"whole", "missing", "unreadable", "a folder", "a dangling link", "a pipe", "empty", "huge",
              "random bytes"})
            if (!isShortRun() || ++number % 4 == 0)
                QTest::addRow("%s: %s", readFiles[k].name, state) << k << QString::fromLatin1(state);
    }
}

void tst_Files::isReadWholeOrNotAtAll()
{
    QFETCH(int, file);
    QFETCH(QString, state);
    const ReadFile &row = readFiles[file];
    const Installation installation;
    const bool isUserFile = qstrcmp(row.name, "home/.qttest/config/mover/appConfig.ini") == 0;
    if (isUserFile) { // it counts when the program's folder cannot be written
        QFile::remove(installation.path("program/appConfig.ini"));
        write(installation.path(row.name), "[language]\ntype=1\n");
        chmod(QFile::encodeName(installation.path("program")), 0555);
    }
    const bool whole = state == QLatin1String("whole");
    if (!whole && !spoil(installation.path(row.name), state))
        QSKIP("the file system here cannot make a file so: no rights, links, pipes or sparse files");

    Child child(installation.path("program/drivenProgram"), arguments);
    installation.setUp(child, (isUserFile || state == QLatin1String("unreadable")) && geteuid() == 0);
    QElapsedTimer timer;
    timer.start();
    child.start();
    QVERIFY2(child.process.waitForFinished(limitMs), qPrintable(child.process.errorString()));
    const QStringList complaints = child.complaints();
    QVERIFY2(child.process.exitStatus() == QProcess::NormalExit, qPrintable(complaints.join(QLatin1Char('\n'))));
    QVERIFY2(child.process.exitCode() == 0, qPrintable(complaints.join(QLatin1Char('\n'))));
    const QByteArray said = child.output();
    QVERIFY2(said.contains(whole ? row.whole : row.useless), said.constData());
    if (whole)
        QVERIFY2(!said.contains("models: 0"), said.constData());
    // Nothing of the huge one is kept in memory.
    static const QRegularExpression peak(QStringLiteral("peak: (\\d+) kB"));
    const qint64 peakBytes = peak.match(QString::fromUtf8(said)).captured(1).toLongLong() * 1024;
    QVERIFY2(peakBytes > 0 && peakBytes < hugeSize / 2, said.constData());
}

void tst_Files::isReplacedWhileItIsRead_data()
{
    QTest::addColumn<int>("file");
    QTest::addColumn<bool>("inPlace");
    for (int k = 0; k < 6; ++k) {
        QTest::addRow("%s: written again", readFiles[k].name) << k << true;
        QTest::addRow("%s: by another one", readFiles[k].name) << k << false;
    }
}

void tst_Files::isReplacedWhileItIsRead()
{
    QFETCH(int, file);
    QFETCH(bool, inPlace);
    const Installation installation;
    const QString path = installation.path(readFiles[file].name);
    QFile::remove(installation.path("home/.qttest/config/mover/appConfig.ini"));
    const QByteArray contents[] = {read(path), QByteArray(), randomBytes(5000), read(path).left(5000)};
    Child child(installation.path("program/drivenProgram"), arguments);
    installation.setUp(child, false);
    child.set("READS", QStringLiteral("25"));

    QSemaphore ends;
    std::thread replacing([&] {
        // In between the reader has its turn: a file that never stands still is never read.
        for (int k = 0; !ends.tryAcquire(1, 1); ++k) {
            const QString target = inPlace ? path : path + QStringLiteral(".new");
            QFile file(target);
            if (file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
                file.write(contents[k % 4]);
            file.close();
            if (!inPlace)
                std::rename(QFile::encodeName(target), QFile::encodeName(path));
        }
    });
    child.start();
    const bool finished = child.process.waitForFinished(limitMs);
    ends.release();
    replacing.join();
    QVERIFY(finished);
    const QStringList complaints = child.complaints();
    QVERIFY2(child.process.exitStatus() == QProcess::NormalExit, qPrintable(complaints.join(QLatin1Char('\n'))));
    QVERIFY2(child.process.exitCode() == 0, qPrintable(complaints.join(QLatin1Char('\n'))));
}

void tst_Files::isDamagedInside_data()
{
    QTest::addColumn<int>("file");
    for (int k = 0; k < 3; ++k)
        QTest::newRow(readFiles[k].name) << k;
}

/** It begins and is as long as it should, so that whoever reads it takes it for what it was. */
void tst_Files::isDamagedInside()
{
    QFETCH(int, file);
    const Installation installation;
    const QString path = installation.path(readFiles[file].name);
    const QByteArray whole = read(path);
    for (quint32 seed = 1; seed <= (isShortRun() ? 3U : 10U); ++seed) {
        QRandomGenerator random(seed);
        QByteArray damaged = whole;
        for (int k = 0; k < 200; ++k)
            damaged[random.bounded(16, damaged.size())] = char(random.generate());
        write(path, damaged);
        Child child(installation.path("program/drivenProgram"), arguments);
        installation.setUp(child, false);
        child.start();
        QVERIFY(child.process.waitForFinished(limitMs));
        const QByteArray complaints = child.complaints().join(QLatin1Char('\n')).toUtf8();
        QVERIFY2(child.process.exitStatus() == QProcess::NormalExit, complaints.constData());
        QVERIFY2(child.process.exitCode() == 0, complaints.constData());
    }
}

void tst_Files::aSpoiltScenarioIsRefused_data()
{
    QTest::addColumn<QString>("state");
    for (const char *state : {"missing", "unreadable", "a folder", "a dangling link", "empty", "huge", "random bytes"})
        QTest::newRow(state) << QString::fromLatin1(state);
}

void tst_Files::aSpoiltScenarioIsRefused()
{
    QFETCH(QString, state);
    const Installation installation;
    const QString scenario = installation.path("program/scenario.json");
    write(scenario, "{ \"controllers\": [] }");
    QVERIFY(spoil(scenario, state));
    Child child(QStringLiteral(MOVER_PROGRAM_DIR "/mover"), {QStringLiteral("--scenario"), scenario});
    installation.setUp(child, state == QLatin1String("unreadable") && geteuid() == 0);
    child.start();
    QVERIFY(child.process.waitForFinished(limitMs));
    QCOMPARE(child.process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(child.process.exitCode(), 2);
    const QStringList complaints = child.complaints();
    QCOMPARE(complaints.size(), 1);
    QVERIFY2(complaints.first().startsWith(scenario + QLatin1Char(':')), qPrintable(complaints.first()));
}

using Save = void (*)(const QString &folder, int value);
Q_DECLARE_METATYPE(Save)
using TrySave = bool (*)(const QString &folder, int value);
Q_DECLARE_METATYPE(TrySave)

/** Some 11 KiB of what an axis did: less than Qt would buffer. */
bool saveRecording(const QString &folder, int value)
{
    static const Recording recording = [] {
        Recorder recorder;
        recorder.begin(QStringLiteral("SIM"));
        const auto begin = AnswerListener::Time::clock::now();
        for (int k = 0; k < 220; ++k)
            recorder.positionAnswered(0, k, begin + std::chrono::milliseconds(100 * k));
        return recorder.recording();
    }();
    QString error;
    return RecordingCsv::save(
               recording, recording.startUs(), recording.endUs() - 100000 * value, RecordingCsv::Point,
               folder + QStringLiteral("/recording.csv"), &error) == RecordingCsv::Outcome::Written;
}

/** As the workbench saves PNG, SVG, the zip archive of the diagnostics and exported snapshots. */
bool savePicture(const QString &folder, int value)
{
    return SmallFile::save(folder + QStringLiteral("/picture or archive"), QByteArray(20000, char('0' + value)));
}

void tst_Files::aKillAtAnySystemCallLosesNoSetting_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<Save>("save");
    const Save language = [](const QString &folder, int value) {
        LanguageStore(folder, folder + QStringLiteral("/user")).save(value);
    };
    const Save controllers = [](const QString &folder, int value) {
        ControllersFile file(folder + QStringLiteral("/controllers.json"));
        file.setLibrary(value == 0 ? QStringLiteral("grbl") : QStringLiteral("simulated"));
        file.save();
    };
    QTest::newRow("language") << "appConfig.ini" << language;
    const Save history = [](const QString &folder, int value) { ParameterStore(folder).add({snapshotAt(value)}); };
    QTest::newRow("controllers") << "controllers.json" << controllers;
    QTest::newRow("parameter history") << "SIM-Axis1.json" << history;
    const Save recording = [](const QString &folder, int value) { saveRecording(folder, value); };
    QTest::newRow("recording") << "recording.csv" << recording;
    const Save picture = [](const QString &folder, int value) { savePicture(folder, value); };
    QTest::newRow("picture or archive") << "picture or archive" << picture;
    const Save sequence = [](const QString &folder, int value) { saveSequence(folder, value); };
    QTest::newRow("positions and steps") << "SIM.json" << sequence;
}

/** Every system call of a save is one after which the process may be gone. */
void tst_Files::aKillAtAnySystemCallLosesNoSetting()
{
    QFETCH(QString, name);
    QFETCH(Save, save);
    const QTemporaryDir model;
    save(model.path(), 0);
    const QByteArray before = read(model.filePath(name));
    save(model.path(), 1);
    const QByteArray after = read(model.filePath(name));
    QVERIFY(!before.isEmpty() && before != after);
    bool sawBefore = false;
    bool sawAfter = false;
    bool ended = false;
    int stops = 0;
    for (; !ended && stops < 1000; ++stops) {
        const QTemporaryDir folder;
        const QString program = folder.filePath(QStringLiteral("program"));
        QVERIFY(QDir().mkpath(program));
        save(program, 0);
        const pid_t child = fork();
        if (child == 0) {
            if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
                _exit(1);
            qputenv("TMPDIR", QFile::encodeName(folder.path())); // for what it leaves behind
            raise(SIGSTOP);
            save(program, 1);
            _exit(0);
        }
        int status = 0;
        QCOMPARE(waitpid(child, &status, 0), child);
        if (!WIFSTOPPED(status))
            QSKIP("nobody may be traced here");
        for (int k = 0; k < stops && !ended; ++k) { // each system call stops on its way in and on its way out
            QCOMPARE(ptrace(PTRACE_SYSCALL, child, nullptr, nullptr), 0L);
            QCOMPARE(waitpid(child, &status, 0), child);
            ended = WIFEXITED(status);
        }
        if (!ended) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
        }
        const QByteArray found = read(program + QLatin1Char('/') + name);
        QVERIFY2(found == before || found == after, found.constData());
        sawBefore = sawBefore || found == before;
        sawAfter = sawAfter || found == after;
    }
    QVERIFY(ended && sawBefore && sawAfter);
    std::printf("FIGURES a save killed at %d places\n", stops);
}

void tst_Files::aFullDiskLosesNoSetting()
{
    const SmallDisk disk;
    if (!disk.isThere())
        QSKIP("a disk cannot be mounted here; what a file that cannot grow does is tested with the settings");
    const QString program = disk.filePath("program");
    QVERIFY(QDir().mkpath(program));
    const LanguageStore store(program, disk.filePath("user"));
    store.save(1);
    for (int free = 0; free < 3; ++free) { // pages that are left
        QVERIFY(disk.fill(free));
        store.save(0);
        const QByteArray found = read(program + QStringLiteral("/appConfig.ini"));
        QVERIFY2(found == "[language]\ntype=1\n" || found == "[language]\ntype=0\n", found.constData());
        QCOMPARE(found.contains("type=1"), free == 0);
        store.save(1);
        QVERIFY(disk.empty());
        store.save(1);
        QCOMPARE(store.load(), 1);
    }
}

void tst_Files::aFullDiskLosesNoFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<TrySave>("save");
    QTest::newRow("parameter history") << "SIM-Axis1.json" << TrySave([](const QString &folder, int value) {
        QVector<ParameterSnapshot> snapshots; // more than the pages that are left
        for (int k = 0; k < 20; ++k)
            snapshots.append(snapshotAt(100 * value + k));
        return ParameterStore(folder).add(snapshots);
    });
    QTest::newRow("controllers") << "controllers.json" << TrySave([](const QString &folder, int value) {
        ControllersFile file(folder + QStringLiteral("/controllers.json"));
        for (int board = 0; board < 100; ++board)
            file.put(
                {0,
                 QStringLiteral("bench %1").arg(100 * value + board),
                 QStringLiteral("/dev/none"),
                 {{QStringLiteral("X"), {}}}});
        return file.save();
    });
    QTest::newRow("recording") << "recording.csv" << TrySave(saveRecording);
    QTest::newRow("picture or archive") << "picture or archive" << TrySave(savePicture);
    QTest::newRow("positions and steps") << "SIM.json" << TrySave(saveSequence);
}

/** It is refused, and what was there stays, with nothing beside it. */
void tst_Files::aFullDiskLosesNoFile()
{
    QFETCH(QString, name);
    QFETCH(TrySave, save);
    const SmallDisk disk;
    if (!disk.isThere())
        QSKIP("a disk cannot be mounted here");
    const QString folder = disk.filePath("files");
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(save(folder, 1));
    const QString path = folder + QLatin1Char('/') + name;
    const QByteArray before = read(path);
    QVERIFY(before.size() > 2 * 4096);
    for (int free = 0; free < 2; ++free) { // pages that are left: none of it can be written, or its beginning
        QVERIFY(disk.fill(free));
        QVERIFY(!save(folder, 2));
        QVERIFY(read(path) == before);
        QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden), QStringList{name});
        QVERIFY(disk.empty());
    }
    QVERIFY(save(folder, 2));
    QVERIFY(read(path) != before);
}

QTEST_GUILESS_MAIN(tst_Files)
#include "tst_Files.moc"
