// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/**
 * Where the chosen language is kept between runs: "appConfig.ini" in the program's folder, group "language", key
 * "type", 0 Chinese, 1 English. When that folder cannot be written, a file of the same name in the user's folder takes
 * its place. The newer of the two counts. A file is replaced as a whole or stays as it was; what else stands in it is
 * kept, unless it is damaged.
 */
class LanguageStore final
{
public:
    LanguageStore(const QString &programFolder, const QString &userFolder);

    /** The stored code; Chinese when there is none or the file is damaged. */
    int load() const;
    /** Stores any code. A failure is not reported: the choice then holds for this run only. */
    void save(int code) const;

private:
    QString m_sProgramFile;
    QString m_sUserFile;
};
