// SPDX-License-Identifier: MIT
#include "settings/LanguageStore.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <functional>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

void writeFile(const QString &name, const QByteArray &bytes)
{
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

QByteArray readFile(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(cannot be opened)");
}

/** Runs `part` in a process of its own and returns its exit code, or -1 when it did not exit by itself. */
int inOtherProcess(const std::function<int()> &part)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(part());
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}

} // namespace

class tst_LanguageStore : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_folder.reset(); }

    void isChineseWithoutAFileAndWritesNone();
    void keepsTheCode_data();
    void keepsTheCode();
    void writesAnIniFile();
    void damagedFileReadsAsChinese_data();
    void damagedFileReadsAsChinese();
    void savingRepairsADamagedFile();
    void savingKeepsTheOtherEntries_data();
    void savingKeepsTheOtherEntries();
    void savingReplacesAFileThatIsTooLarge_data();
    void savingReplacesAFileThatIsTooLarge();
    void eachFileKeepsItsOwnEntries();
    void readsWhatAnEditorMakesOfIt_data();
    void readsWhatAnEditorMakesOfIt();
    void replacesTheFileAsAWhole();
    void fullDiskLosesNothing();
    void killInTheMiddleLosesNothing();
    void usesTheUserFolderWhenTheProgramFolderCannotBeWritten();
    void theProgramsFileCountsInAFolderThatCanBeWritten();
    void decidesOnceWhichFileCounts();
    void failsSilentlyWhenNeitherFolderCanBeWritten();

private:
    LanguageStore store() const { return {m_sProgram, m_sUser}; }
    QString programFile() const { return m_sProgram + "/appConfig.ini"; }
    QString userFile() const { return m_sUser + "/appConfig.ini"; }

    const QString m_base = QDir::tempPath() + "/tst_LanguageStore-XXXXXX";
    const QTemporaryDir m_copies;
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_sProgram;
    QString m_sUser;
};

void tst_LanguageStore::init()
{
    m_folder = std::make_unique<QTemporaryDir>(m_base);
    QVERIFY(m_folder->isValid());
    QVERIFY(m_copies.isValid());
    QFile::setPermissions(m_copies.path(), QFile::Permissions(0x7777));
    qputenv("TMPDIR", QFile::encodeName(m_copies.path())); // killed ones leave their copies there
    m_sProgram = m_folder->filePath("program");
    m_sUser = m_folder->filePath("user/config");
    QVERIFY(QDir().mkpath(m_sProgram));
}

void tst_LanguageStore::isChineseWithoutAFileAndWritesNone()
{
    QCOMPARE(store().load(), 0);
    QVERIFY(QDir(m_sProgram).isEmpty());
    QVERIFY(!QFile::exists(m_sUser));
}

void tst_LanguageStore::keepsTheCode_data()
{
    QTest::addColumn<int>("code");
    for (const int code : {0, 1, 7, -1})
        QTest::addRow("%d", code) << code;
}

void tst_LanguageStore::keepsTheCode()
{
    QFETCH(int, code);
    store().save(code);
    QCOMPARE(store().load(), code);
    QVERIFY(!QFile::exists(m_sUser)); // the program's folder is enough
}

void tst_LanguageStore::writesAnIniFile()
{
    store().save(1);
    QCOMPARE(readFile(programFile()), QByteArray("[language]\ntype=1\n"));
    store().save(0);
    QCOMPARE(readFile(programFile()), QByteArray("[language]\ntype=0\n"));
    QCOMPARE(QDir(m_sProgram).entryList(QDir::Files), QStringList("appConfig.ini")); // and leaves nothing beside it
    QCOMPARE(QSettings(programFile(), QSettings::IniFormat).value("language/type").toInt(), 0);
}

void tst_LanguageStore::damagedFileReadsAsChinese_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("type 1");
    QTest::newRow("zeros") << QByteArray(19, '\0');
    QTest::newRow("cut off") << QByteArray("[language]\nty");
    QTest::newRow("no number") << QByteArray("[language]\ntype=english\n");
    QTest::newRow("number with rubbish") << QByteArray("[language]\ntype=1\x01\n");
    QTest::newRow("nothing but a quote") << QByteArray("[language]\ntype=\"\n");
    QTest::newRow("mark inside") << QByteArray("\n\xEF\xBB\xBF[language]\ntype=1\n");
    QTest::newRow("other group") << QByteArray("[langage]\ntype=1\n");
}

void tst_LanguageStore::damagedFileReadsAsChinese()
{
    QFETCH(QByteArray, bytes);
    writeFile(programFile(), bytes);
    QCOMPARE(store().load(), 0);
}

void tst_LanguageStore::savingRepairsADamagedFile()
{
    writeFile(programFile(), "[language]\n\x80\xff\ntype=english\n");
    store().save(1);
    QCOMPARE(readFile(programFile()), QByteArray("[language]\ntype=1\n"));
    QCOMPARE(store().load(), 1);
}

void tst_LanguageStore::savingKeepsTheOtherEntries_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    const auto row = [](const char *name, const char *before, const char *after) {
        QTest::newRow(name) << QByteArray(before) << QByteArray(after);
    };
    row("of the group", "[language]\nx=3\ntype=0\ny=4\n", "[language]\ntype=1\nx=3\ny=4\n");
    row("of other groups", "[a]\ntype=2\n[language]\ntype=0\n[b]\ntype=4\n",
        "[a]\ntype=2\n\n[b]\ntype=4\n\n[language]\ntype=1\n");
    row("without the entry", "[a]\nx=2\n[language]\nx=3\n", "[a]\nx=2\n\n[language]\ntype=1\nx=3\n");
    row("without the group", "[a]\nx=2\n", "[a]\nx=2\n\n[language]\ntype=1\n");
    row("without the last line end", "[a]\nx=2", "[a]\nx=2\n\n[language]\ntype=1\n");
    row("line ends", "[language]\r\ntype=0\r\nx=3\r\n", "[language]\ntype=1\nx=3\n");
    row("byte order mark", "\xEF\xBB\xBF[language]\ntype=0\n", "[language]\ntype=1\n");
    row("entry twice", "[language]\ntype=7\ntype=0\n", "[language]\ntype=1\n");
    row("line without an equals sign", "[a]\nx\ny=2\n[language]\ntype=0\nz\n", "[a]\ny=2\n\n[language]\ntype=1\n");
    row("comments behind values", "[a]\nx=2 ; two\n[language]\ntype=0 ; Chinese\n", "[a]\nx=2\n\n[language]\ntype=1\n");
}

void tst_LanguageStore::savingKeepsTheOtherEntries()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    writeFile(programFile(), before);
    store().save(1);
    QCOMPARE(readFile(programFile()), after);
    QCOMPARE(store().load(), 1);
}

void tst_LanguageStore::savingReplacesAFileThatIsTooLarge_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("before") << 64 * 1024 + 1;
    QTest::newRow("with the entry") << 64 * 1024;
}

void tst_LanguageStore::savingReplacesAFileThatIsTooLarge()
{
    QFETCH(int, size);
    writeFile(programFile(), "[a]\nx=" + QByteArray(size - 7, '1') + '\n');
    store().save(1);
    QCOMPARE(readFile(programFile()), QByteArray("[language]\ntype=1\n"));
}

void tst_LanguageStore::eachFileKeepsItsOwnEntries()
{
    QVERIFY(QDir().mkpath(m_sUser));
    writeFile(programFile(), "[program]\nx=2\n");
    writeFile(userFile(), "[user]\nx=3\n");
    store().save(1);
    QCOMPARE(readFile(programFile()), QByteArray("[language]\ntype=1\n\n[program]\nx=2\n"));
    QCOMPARE(readFile(userFile()), QByteArray("[user]\nx=3\n"));

    const LanguageStore userOnly(programFile(), m_sUser); // nothing can be written below a file
    userOnly.save(1);
    QCOMPARE(readFile(userFile()), QByteArray("[language]\ntype=1\n\n[user]\nx=3\n"));
}

void tst_LanguageStore::readsWhatAnEditorMakesOfIt_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("blanks") << QByteArray(" [language] \n\n type = 1 \n");
    QTest::newRow("line ends") << QByteArray("[language]\r\ntype=1\r\n");
    QTest::newRow("no line end") << QByteArray("[language]\ntype=1");
    QTest::newRow("comment behind the value") << QByteArray("[language]\ntype=1 ; English\n");
    QTest::newRow("line without an equals sign") << QByteArray("[a]\nx\n[language]\ny\ntype=1\n\x80\xff\n");
    QTest::newRow("comment") << QByteArray("; English\n[language]\ntype=1\n");
    QTest::newRow("byte order mark") << QByteArray("\xEF\xBB\xBF[language]\ntype=1\n");
    QTest::newRow("quotes") << QByteArray("[language]\ntype=\"1\"\n");
    QTest::newRow("other entries") << QByteArray("[a]\ntype=2\n[language]\nx=3\ntype=1\n[b]\ntype=4\n");
}

void tst_LanguageStore::readsWhatAnEditorMakesOfIt()
{
    QFETCH(QByteArray, bytes);
    writeFile(programFile(), bytes);
    QCOMPARE(store().load(), 1);
}

void tst_LanguageStore::replacesTheFileAsAWhole()
{
    store().save(0);
    const QString old = m_folder->filePath("old.ini");
    QCOMPARE(link(QFile::encodeName(programFile()), QFile::encodeName(old)), 0);
    store().save(1);
    QCOMPARE(readFile(programFile()), QByteArray("[language]\ntype=1\n"));
    QCOMPARE(readFile(old), QByteArray("[language]\ntype=0\n")); // written in place, it would be the new one
}

void tst_LanguageStore::fullDiskLosesNothing()
{
    store().save(1);
    const int exitCode = inOtherProcess([this] {
        // Files cannot grow beyond this many bytes: as on a full disk, a write ends with an error half-way.
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {5, 5};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
            return 1;
        store().save(0);
        QFile probe(m_sProgram + "/probe");
        if (probe.open(QIODevice::WriteOnly) && probe.write(QByteArray(100, 'x')) == 100 && probe.flush())
            return 2;
        return 0;
    });
    QCOMPARE(exitCode, 0);
    QCOMPARE(readFile(programFile()), QByteArray("[language]\ntype=1\n"));
    QCOMPARE(store().load(), 1);
}

void tst_LanguageStore::killInTheMiddleLosesNothing()
{
    const QByteArrayList whole = {"[language]\ntype=0\n", "[language]\ntype=1\n"};
    for (int round = 0; round < 30; ++round) {
        int progress[2];
        QCOMPARE(pipe(progress), 0);
        const pid_t child = fork();
        if (child == 0) {
            for (int code = 0;; code = 1 - code) {
                store().save(code);
                if (write(progress[1], "", 1) != 1)
                    _exit(1);
            }
        }
        ::close(progress[1]);
        // Killed somewhere in the save after the one that has just ended.
        char saved = 0;
        for (int i = 0; i <= round % 5; ++i)
            QCOMPARE(read(progress[0], &saved, 1), ssize_t(1));
        QCOMPARE(kill(child, SIGKILL), 0);
        QCOMPARE(waitpid(child, nullptr, 0), child);
        ::close(progress[0]);
        QVERIFY2(whole.contains(readFile(programFile())), readFile(programFile()).constData());
    }
    // What the killed ones left behind keeps nobody from saving, nor waiting.
    QElapsedTimer elapsed;
    elapsed.start();
    store().save(1);
    QVERIFY(elapsed.elapsed() < 5000);
    QCOMPARE(readFile(programFile()), whole[1]);
}

void tst_LanguageStore::usesTheUserFolderWhenTheProgramFolderCannotBeWritten()
{
    writeFile(programFile(), "[language]\ntype=2\n"); // the default until the user has one
    QFile::setPermissions(m_sProgram, QFile::Permissions(0x5555));
    QFile::setPermissions(programFile(), QFile::Permissions(0x4444));
    QVERIFY(QDir().mkpath(m_sUser));
    for (const QString &folder : {m_folder->path(), m_folder->filePath("user"), m_sUser})
        QFile::setPermissions(folder, QFile::Permissions(0x7777));

    const int exitCode = inOtherProcess([this] {
        if (geteuid() == 0 && seteuid(65534) != 0) // root may write everywhere
            return 10;
        if (store().load() != 2)
            return 11;
        store().save(1);
        return store().load();
    });
    QCOMPARE(exitCode, 1);
    QCOMPARE(readFile(programFile()), QByteArray("[language]\ntype=2\n"));
    QCOMPARE(readFile(userFile()), QByteArray("[language]\ntype=1\n"));
    QFile::setPermissions(m_sProgram, QFile::Permissions(0x7777));
}

void tst_LanguageStore::theProgramsFileCountsInAFolderThatCanBeWritten()
{
    QVERIFY(QDir().mkpath(m_sUser));
    writeFile(userFile(), "[language]\ntype=1\n");
    QCOMPARE(store().load(), 0); // also when there is none
    writeFile(programFile(), "[language]\ntype=3\n");
    QCOMPARE(store().load(), 3);
}

void tst_LanguageStore::decidesOnceWhichFileCounts()
{
    const QString folder = m_folder->filePath("later");
    const LanguageStore early(folder, m_sUser); // not there: cannot be written
    QVERIFY(QDir().mkpath(folder));
    early.save(1);
    QVERIFY(QDir(folder).isEmpty());
    QCOMPARE(readFile(userFile()), QByteArray("[language]\ntype=1\n"));
    QCOMPARE(early.load(), 1);
}

void tst_LanguageStore::failsSilentlyWhenNeitherFolderCanBeWritten()
{
    writeFile(m_folder->filePath("file"), "");
    const QString none = m_folder->filePath("file/folder");
    const LanguageStore nowhere(none, none);
    nowhere.save(1);
    QVERIFY(!QFile::exists(none));
}

QTEST_GUILESS_MAIN(tst_LanguageStore)
#include "tst_LanguageStore.moc"
