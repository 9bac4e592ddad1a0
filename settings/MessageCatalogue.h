// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

/** Message catalogues as Qt's lrelease writes them ("qm"). */
namespace MessageCatalogue {

/**
 * Whether QTranslator (Qt 5.15) reads nothing beside the catalogue: it only looks at how the file begins and follows
 * the lengths and places in it wherever they lead. Catalogues that refer to others are refused, because it maps those
 * without a look at them.
 */
bool isWhole(const QByteArray &qm);

} // namespace MessageCatalogue
