#pragma once

#include "QmsCli.h"

class CSketchrunDoc;

// Prints an open animation set: its properties, then each scene in sequence order with
// its elements and both composition orders (text, or JSON with context.json).
void QmsPrintProject(QmsContext& context, const CSketchrunDoc& document);
