#pragma once

#include "CamoOption.h"

class QDomElement;

// Reads the patterns of one customization.xml below its root element: no
// GL texture and no preview yet, which the loader adds. Descriptions are
// translated when the message catalogues exist.
//
// The children of "camouflages" count from 1, as a packed section's first
// child is its own text; a plain text file, which has no such node, loses
// its first pattern. Comments are skipped, and a pattern whose "notInShop"
// has any text (even "false") is left out.
CamoNation readCamoCatalogue(const QDomElement& root, const QString& nation);

// Blanks taken out, as the game's names and paths are compared.
QString withoutBlanks(QString text);
