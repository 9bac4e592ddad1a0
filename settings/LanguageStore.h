// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/**
 * Where the chosen language is kept between runs: "appConfig.ini" in the program's folder, an INI file as QSettings
 * reads and writes it, group "language", key "type", 0 Chinese, 1 English. When that folder cannot be written, the file
 * of the same name in the user's folder takes its place, and the program's is the default until the user has one. The
 * file is replaced as a whole or stays as it was; the other entries in it are kept.
 */
class LanguageStore final
{
public:
    /** Tries whether the program's folder can be written: that holds as long as this lives. */
    LanguageStore(const QString &programFolder, const QString &userFolder);

    /** The stored code; Chinese when there is none, or no number. */
    int load() const;
    /** Stores any code. A failure is not reported: the choice then holds for this run only. */
    void save(int code) const;

private:
    QString m_sDefaultFile;
    QString m_sFile;
};
