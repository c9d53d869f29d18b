#pragma once

#include "QmsCli.h"

class CDopeSheetObj;
class CSketchrunDoc;

// Prints an open animation set: its properties, then each scene in sequence order with
// its elements and both composition orders (text, or JSON with context.json).
void QmsPrintProject(QmsContext& context, const CSketchrunDoc& document);
// Both composition orders of a scene as trees, each row indented by its depth.
void QmsPrintOrdersText(std::ostream& out, const CDopeSheetObj& scene);
// Both orders as the fields "drawingOrder" and "sceneplanningOrder" of an open object.
void QmsPrintOrdersJson(QmsJson& json, const CDopeSheetObj& scene);
