// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

/** Message catalogues as Qt's lrelease writes them ("qm"). */
namespace MessageCatalogue {

/**
 * Whether every message of the catalogue lies within it. QTranslator only looks at how the file begins and follows the
 * lengths in it wherever they lead. Catalogues that refer to others are refused.
 */
bool isWhole(const QByteArray &qm);

} // namespace MessageCatalogue
