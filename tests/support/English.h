// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QTranslator>

/** While it lives, the program's texts are English as far as this table goes; the windows are told of either change. */
class English final : public QTranslator
{
public:
    explicit English(QHash<QString, QString> texts)
        : m_texts(std::move(texts))
    {
        QCoreApplication::installTranslator(this);
        QCoreApplication::processEvents();
    }
    ~English() override
    {
        QCoreApplication::removeTranslator(this);
        QCoreApplication::processEvents();
    }

    QString translate(const char *, const char *source, const char *, int) const override
    {
        return m_texts.value(QString::fromUtf8(source));
    }
    bool isEmpty() const override { return false; }

private:
    QHash<QString, QString> m_texts;
};
