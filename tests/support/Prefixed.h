// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QTranslator>

/** While it lives, every text of the program reads "T:" and its source; the windows are told of either change. */
class Prefixed final : public QTranslator
{
public:
    Prefixed()
    {
        QCoreApplication::installTranslator(this);
        QCoreApplication::processEvents();
    }
    ~Prefixed() override
    {
        QCoreApplication::removeTranslator(this);
        QCoreApplication::processEvents();
    }

    QString translate(const char *, const char *source, const char *, int) const override
    {
        return QLatin1String("T:") + QString::fromUtf8(source);
    }
    bool isEmpty() const override { return false; }
};
