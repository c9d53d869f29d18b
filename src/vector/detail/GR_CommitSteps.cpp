#include "vector/detail/GR_CommitSteps.h"

#include "colour/CM_BaseColorObj.h"
#include "colour/CM_Color.h"
#include "colour/CM_PaletteList.h"
#include "vector/GR_Layer.h"
#include "vector/GR_SpatialIndex.h"
#include "vector/GR_VectorStroke.h"

#include <algorithm>
#include <map>
#include <vector>

namespace GR_detail {

namespace {

size_t RankOf(const LayerRanks& ranks, const GR_StrokeEnd& h) {
    auto found = ranks.find(h.stroke->committedLayer);
    if (found == ranks.end())
        found = ranks.find(h.stroke->ListLayer());
    return found == ranks.end() ? 0 : found->second;
}

// The signed counts of (layer, colour) pairs met on the way in. Layers sort by drawing
// order, colours by reference; null colours are not counted, and an entry that comes back
// to 0 is dropped. It rarely holds more than a few entries: a sorted vector.
class Tally {
public:
    struct Entry {
        size_t rank;
        uint64_t serial;
        int count;
        GR_ColorRef colour;
    };

    void Add(size_t rank, const GR_ColorRef& colour, int delta) {
        if (!colour)
            return;
        const uint64_t serial = colour->Serial();
        auto it =
            std::lower_bound(entries_.begin(), entries_.end(), std::make_pair(rank, serial),
                             [](const Entry& e, const std::pair<size_t, uint64_t>& key) {
                                 return e.rank < key.first || (e.rank == key.first && e.serial < key.second);
                             });
        if (it == entries_.end() || it->rank != rank || it->serial != serial) {
            entries_.insert(it, Entry{rank, serial, delta, colour});
            return;
        }
        it->count += delta;
        if (it->count == 0)
            entries_.erase(it);
    }

    // The colour of a zone and the layer it comes from; a null colour when there is none.
    GR_ColorRef Choose(uint32_t mode, size_t& rank) const {
        if (entries_.empty())
            return nullptr;
        const Entry& last = entries_.back();
        if (mode != 3) {
            rank = last.rank;
            return last.colour;
        }
        const Entry* best = &last;
        for (size_t i = entries_.size(); i-- > 0 && entries_[i].rank == last.rank;)
            if (entries_[i].count > best->count)
                best = &entries_[i];
        rank = best->rank;
        return best->count > 0 ? best->colour : nullptr;
    }

private:
    std::vector<Entry> entries_;
};

class KeepZones {
public:
    KeepZones(uint32_t mode, const LayerRanks& ranks) : mode_(mode), ranks_(ranks) {}

    void Run(GR_Layer& layer) {
        layer.EnsureZones();
        for (GR_VectorStroke* s = layer.FirstStroke(); s; s = s->next)
            s->flags &= ~(GR_VectorStroke::kVisitedEnd0 | GR_VectorStroke::kVisitedEnd1);
        for (GR_Component* component : layer.TopComponents())
            if (component->outer)
                Visit(*component->outer);
    }

private:
    static uint16_t VisitBit(const GR_StrokeEnd& h) {
        return h.end == 0 ? GR_VectorStroke::kVisitedEnd0 : GR_VectorStroke::kVisitedEnd1;
    }
    static bool Visited(const GR_StrokeEnd& h) { return h.stroke->HasFlag(VisitBit(h)); }
    static void PushCycle(const GR_StrokeEnd& start, std::vector<GR_StrokeEnd>& stack) {
        GR_StrokeEnd h = start;
        do {
            h.stroke->flags |= VisitBit(h);
            stack.push_back(h);
            h = h.NextInZone();
        } while (h != start);
    }

    // A walk from a zone over every stroke not yet crossed, depth first; the way back over
    // the stroke by which a zone was entered finishes that zone.
    void Visit(GR_Zone& zone) {
        std::vector<GR_StrokeEnd> walk, entries;
        PushCycle(zone.first, walk);
        while (!walk.empty()) {
            const GR_StrokeEnd h = walk.back();
            walk.pop_back();
            const size_t rank = RankOf(ranks_, h);
            if (Visited(h.Twin())) {
                if (entries.empty() || entries.back() != h)
                    continue;
                const GR_ColorRef left = h.LeftColor(), right = h.RightColor();
                GR_Zone* entered = h.Zone();
                for (GR_Component* child : entered->children)
                    if (child->outer)
                        Visit(*child->outer);
                Finish(*entered);
                tally_.Add(rank, left, -1);
                tally_.Add(rank, right, +1);
                entries.pop_back();
                continue;
            }
            tally_.Add(rank, h.LeftColor(), -1);
            tally_.Add(rank, h.RightColor(), +1);
            entries.push_back(h.Twin());
            PushCycle(h.Twin(), walk);
        }
        Finish(zone);
    }

    void Finish(GR_Zone& zone) {
        size_t rank = 0;
        GR_ColorRef choice = tally_.Choose(mode_, rank);
        if (choice && choice->GetId() == kCM_EraserColorId)
            choice = nullptr;
        zone.ForEachHalfEdge([&](const GR_StrokeEnd& h) { h.SetLeftColor(choice); });
        if (!choice)
            return;
        // Paint of an upper layer covers the lines of the layers below it.
        zone.ForEachHalfEdge([&](const GR_StrokeEnd& h) {
            if (RankOf(ranks_, h) < rank)
                h.stroke->style = GR_LineStyle::Contour();
        });
    }

    uint32_t mode_;
    const LayerRanks& ranks_;
    Tally tally_;
};

// The colour that the longest stretch of a zone's boundary carries on its side, counting
// every copy of a curve stored more than once. Of equal lengths the later colour wins.
GR_ColorRef LongestBoundaryColour(const GR_Zone& zone) {
    std::map<uint64_t, std::pair<double, GR_ColorRef>> lengths;
    zone.ForEachHalfEdge([&](const GR_StrokeEnd& h) {
        GR_Point2f t0, t1;
        h.Tangents(t0, t1);
        GR_StrokeEnd k = h;
        do {
            GR_Point2f u0, u1;
            k.Tangents(u0, u1);
            if (u0 == t0 && u1 == t1) {
                auto& entry = lengths[GR_ColorKey(k.LeftColor())];
                entry.first += k.stroke->SharedPath()->Length();
                entry.second = k.LeftColor();
            }
            k = k.Next();
        } while (k != h);
    });
    const std::pair<double, GR_ColorRef>* best = nullptr;
    for (const auto& [key, entry] : lengths)
        if (!best || entry.first >= best->first)
            best = &entry;
    return best ? best->second : nullptr;
}

// Translation to (x0, (y0 + y1) / 2) after a scaling by the width; a radial gradient is
// centred on the box and scaled by half its extents.
GR_Affine2d FittedMatrix(const GR_Box2d& box, bool radial) {
    if (radial) {
        const double sx = (box.xmax - box.xmin) / 2.0, sy = (box.ymax - box.ymin) / 2.0;
        return {sx, 0.0, 0.0, sy, (box.xmin + box.xmax) / 2.0, (box.ymin + box.ymax) / 2.0};
    }
    const double w = box.xmax - box.xmin;
    return {w, 0.0, 0.0, w, box.xmin, (box.ymin + box.ymax) / 2.0};
}

void Refit(GR_Layer& layer, GR_Zone& zone, const CM_PaletteList* palettes) {
    const GR_ColorRef colour = zone.Color();
    if (!colour) {
        layer.SetZoneColor(zone, nullptr);
    } else {
        const CM_BaseColorObj* entry = palettes ? palettes->Resolve(colour->GetId()) : nullptr;
        const auto* paletteColour = dynamic_cast<const CM_Color*>(entry);
        if (entry && !paletteColour) {
            layer.SetZoneColor(zone, colour);
        } else {
            bool holds = colour->IsPlaced();
            const auto check = [&](const GR_StrokeEnd& h) { holds = holds && h.LeftColor() == colour; };
            zone.ForEachHalfEdge(check);
            for (GR_Component* child : zone.children)
                if (child->outer)
                    child->outer->ForEachHalfEdge(check);
            if (!holds) {
                const bool radial = paletteColour && paletteColour->GetGradientKind() == CM_Color::kRadial;
                layer.SetZoneColor(
                    zone, std::make_shared<GR_Color>(colour->GetId(), FittedMatrix(zone.box, radial)));
            }
        }
    }
    for (GR_Component* child : zone.children)
        for (GR_Zone* inner : child->inner)
            Refit(layer, *inner, palettes);
}

bool SameColour(const CM_PaletteList* palettes, const GR_ColorRef& a, const GR_ColorRef& b) {
    if (a == b)
        return true;
    return a && b && a->SameValue(*b, IsPlainColour(palettes, a->GetId()));
}

} // namespace

bool IsPlainColour(const CM_PaletteList* palettes, UT_UniqueId id) {
    if (!palettes)
        return true;
    const auto* colour = dynamic_cast<const CM_Color*>(palettes->Resolve(id));
    return colour && colour->GetGradientKind() == CM_Color::kSolid;
}

void RecolorKeepZones(GR_Layer& layer, uint32_t mode, const LayerRanks& ranks) {
    KeepZones(mode, ranks).Run(layer);
}

void RecolorLongestBoundary(GR_Layer& layer) {
    layer.EnsureZones();
    // Outer zones carry no paint: if every one of them comes out coloured, the sides were
    // stored the other way round.
    bool swap = true;
    for (GR_Component* component : layer.TopComponents())
        if (component->outer && !LongestBoundaryColour(*component->outer))
            swap = false;
    if (swap)
        for (GR_VectorStroke* s = layer.FirstStroke(); s; s = s->next)
            std::swap(s->colour[0], s->colour[1]);
    for (GR_Zone* zone : layer.Zones()) {
        if (zone->IsOuter()) {
            if (zone->component->parent)
                continue;
            // A colour found outside belongs to the zone across the stroke, if that side has
            // none; a stroke with the outside on both sides keeps nothing.
            std::vector<GR_StrokeEnd> cycle;
            zone->ForEachHalfEdge([&](const GR_StrokeEnd& h) { cycle.push_back(h); });
            if (!swap)
                for (const GR_StrokeEnd& h : cycle)
                    if (h.LeftColor() && !h.RightColor() && h.Twin().Zone() != zone)
                        h.SetRightColor(h.LeftColor());
            for (const GR_StrokeEnd& h : cycle)
                h.SetLeftColor(nullptr);
            continue;
        }
        layer.SetZoneColor(*zone, LongestBoundaryColour(*zone));
    }
}

void CleanLayer(GR_Layer& layer, const CM_PaletteList* palettes, GR_SpatialIndex& index) {
    // 1. A run of neighbouring ends of a ring along the same curve is one curve stored
    // several times: one copy of the last replaces them, with the colour that the first
    // had on its far side.
    std::vector<GR_VectorStroke*> removed, copies;
    const uint64_t inRun = GR_VectorStroke::NewMark();
    // Only the rings where an end is followed by the same curve hold a run.
    std::vector<GR_StrokeEnd> heads;
    for (GR_VectorStroke* s = layer.FirstStroke(); s; s = s->next)
        for (uint8_t e = 0; e < 2; ++e) {
            const GR_StrokeEnd end{s, e}, next = end.Next();
            if (next.stroke != s && end.SameCurve(next))
                heads.push_back(layer.VertexAt(end.Point()));
        }
    std::sort(heads.begin(), heads.end(), [](const GR_StrokeEnd& a, const GR_StrokeEnd& b) {
        return GR_Layer::PointLess()(a.Point(), b.Point());
    });
    heads.erase(std::unique(heads.begin(), heads.end()), heads.end());
    std::vector<GR_StrokeEnd> ring;
    for (const GR_StrokeEnd& head : heads) {
        ring.clear();
        GR_StrokeEnd walk = head;
        do {
            ring.push_back(walk);
            walk = walk.Next();
        } while (walk != head);
        for (size_t i = 0; i < ring.size();) {
            size_t j = i;
            while (j + 1 < ring.size() && ring[j + 1].stroke != ring[j].stroke &&
                   ring[j + 1].SameCurve(ring[j]))
                ++j;
            bool fresh = j > i;
            for (size_t k = i; k <= j && fresh; ++k)
                fresh = ring[k].stroke->mark != inRun;
            if (fresh) {
                const GR_StrokeEnd first = ring[i], last = ring[j];
                auto* copy = new GR_VectorStroke(*last.stroke);
                GR_StrokeEnd(copy, last.end).SetRightColor(first.RightColor());
                for (size_t k = i; k <= j; ++k) {
                    GR_VectorStroke* s = ring[k].stroke;
                    if (s->style.kind != GR_LineStyle::kContour)
                        copy->style = s->style;
                    if (s->mark != inRun) {
                        s->mark = inRun;
                        removed.push_back(s);
                    }
                }
                copies.push_back(copy);
            }
            i = j + 1;
        }
    }
    for (GR_VectorStroke* s : removed) {
        index.Remove(s);
        layer.DeleteStroke(s);
    }
    // 2. The copies take their place.
    for (GR_VectorStroke* copy : copies) {
        copy->flags = 0;
        copy->committedLayer = copy->targetLayer = &layer;
        if (layer.AddStroke(copy))
            index.Insert(copy);
        else
            delete copy;
    }
    // 3. Lines between equal colours that exist only as boundaries go; a cut stroke without
    // colour goes; cut strokes and strokes between different colours become contours.
    std::vector<GR_VectorStroke*> gone;
    for (GR_VectorStroke* s = layer.FirstStroke(); s; s = s->next) {
        s->committedLayer = s->targetLayer = &layer;
        const bool same = SameColour(palettes, s->colour[0], s->colour[1]);
        switch (s->style.kind) {
        case GR_LineStyle::kContour:
            if (same)
                gone.push_back(s);
            break;
        case GR_LineStyle::kCut:
            if (!s->colour[0] && !s->colour[1])
                gone.push_back(s);
            else if (!same)
                s->style.kind = GR_LineStyle::kContour;
            break;
        case GR_LineStyle::kStroke:
            if (!same)
                s->style.kind = GR_LineStyle::kContour;
            break;
        default:
            break;
        }
    }
    // 4. Out they go.
    for (GR_VectorStroke* s : gone) {
        index.Remove(s);
        layer.DeleteStroke(s);
    }
}

void RefitZoneColors(GR_Layer& layer, const CM_PaletteList* palettes) {
    layer.EnsureZones();
    const std::vector<GR_Component*> tops = layer.TopComponents();
    for (GR_Component* component : tops)
        for (GR_Zone* zone : component->inner)
            Refit(layer, *zone, palettes);
}

} // namespace GR_detail
