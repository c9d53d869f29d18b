#pragma once

#include <string>

class CM_PaletteList;
class GR_Layer;

// A picture of a layer's planar map for debugging, as an SVG document: every stroke with an
// arrow from end 0 to end 1 and the ids of the zones on its left and right; the ring order
// at every vertex as numbers along the tangents; every bounded zone filled with its colour
// and labelled with its id. Colours come from the palettes when given.
std::string GR_LayerSvg(GR_Layer& layer, const CM_PaletteList* palettes = nullptr);
