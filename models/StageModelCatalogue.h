// SPDX-License-Identifier: MIT
#pragma once

#include "models/MoverDevParam.h"

#include <QMap>
#include <QStringList>

#include <array>
#include <optional>

class QJsonDocument;

/**
 * The stage models that the program knows, as the model file lists them (docs/model-file.md). Whatever is wrong with a
 * file goes to the debug log only, and the models that were known before stay. GUI thread.
 */
class StageModelCatalogue final
{
public:
    /** Size in bytes above which a file is not read: 64 MiB, some 80,000 models. */
    static constexpr qint64 MaxFileSize = qint64(64) * 1024 * 1024;

    /**
     * Replaces the models by those of the file at `path`. False when there is no such file or it may not be read; true
     * otherwise, also when its contents are of no use.
     */
    bool loadFile(const QString &path);

    /** Replaces the models by those of a parsed model file; an empty top-level object, or none, changes nothing. */
    void load(const QJsonDocument &document);

    /** Names of the models of a StageType, in the order of the file. */
    QStringList names(int moveType) const;

    /**
     * The record of the model `name` of the given StageType. One record is kept per name. When another type's model has
     * taken the name, the next model in name order is returned instead, of whatever type; nothing when there is none.
     */
    std::optional<MoverDevParam> find(const QString &name, int moveType) const;

private:
    /** The mistakes in the document. */
    QStringList fill(const QJsonDocument &document);

    QMap<QString, MoverDevParam> m_models;
    std::array<QStringList, StageTypeCount> m_names;
};
