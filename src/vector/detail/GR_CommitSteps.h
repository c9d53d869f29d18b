#pragma once

#include "vector/GR_Color.h"

#include <cstdint>
#include <unordered_map>

class CM_PaletteList;
class GR_Layer;
class GR_SpatialIndex;

// The per-layer steps of a commit: recolouring, cleaning, and the placement of colours.
namespace GR_detail {

// The position of each layer of the drawing in drawing order: comparing these compares the
// layers' tree paths.
using LayerRanks = std::unordered_map<const GR_Layer*, size_t>;

// Whether a colour id stands for a plain colour: a solid palette colour, whose placement
// does not matter. Without palettes every id does.
bool IsPlainColour(const CM_PaletteList* palettes, UT_UniqueId id);

// Walks the zones from the outside in; the colour of each zone comes from a tally of the
// colours on both sides of the strokes crossed to reach it (mode 1 or 3).
void RecolorKeepZones(GR_Layer& layer, uint32_t mode, const LayerRanks& ranks);
// Rebuilds zone colours from stored sides, for drawings in the older form.
void RecolorLongestBoundary(GR_Layer& layer);
// Merges strokes stored several times, turns lines between different colours into
// contours, and removes what no longer bounds anything. Removed strokes leave the index.
void CleanLayer(GR_Layer& layer, const CM_PaletteList* palettes, GR_SpatialIndex& index);
// Gives each painted zone one placed colour fitted to its box.
void RefitZoneColors(GR_Layer& layer, const CM_PaletteList* palettes);

} // namespace GR_detail
