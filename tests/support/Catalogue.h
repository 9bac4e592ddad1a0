// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QTranslator>

/** While it lives, the program is English, from the catalogue that it ships (link mover::resources). */
class Catalogue final
{
public:
    Catalogue()
    {
        if (!m_translator.load(QStringLiteral(":/i18n/mover_en_US.qm")))
            qFatal("no English catalogue");
        QCoreApplication::installTranslator(&m_translator);
        QCoreApplication::processEvents();
    }
    ~Catalogue()
    {
        QCoreApplication::removeTranslator(&m_translator);
        QCoreApplication::processEvents();
    }

private:
    Q_DISABLE_COPY(Catalogue)

    QTranslator m_translator;
};
