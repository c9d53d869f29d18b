// Building the zones of a layer: components, boundary cycles, the outer cycle of each
// component, the nesting of components in zones, and the order of the result.

#include "vector/GR_Layer.h"
#include "vector/GR_VectorStroke.h"

#include <algorithm>

namespace {

// Half a grid step: a scan line this far inside the knot box runs between grid points, so
// it never passes through a vertex or a chord end.
constexpr double kHalfGrid = 0.00048828125;

bool StrictlyInside(const GR_Box2d& inner, const GR_Box2d& outer) {
    return !inner.empty && !outer.empty && outer.xmin < inner.xmin && inner.xmax < outer.xmax &&
           outer.ymin < inner.ymin && inner.ymax < outer.ymax;
}

// Finds the cycle of a component with several zones that bounds it from outside: a scan
// segment runs just inside the knot box along the side where the control box reaches
// furthest beyond it, and the crossing furthest along the scan lies on the outer cycle.
GR_Zone* FindOuterZone(GR_Component& component) {
    const GR_Box2d& b = component.box;
    const GR_Box2d& k = component.knotBox;
    if (b.empty || k.empty)
        return nullptr;
    const double margins[4] = {k.xmin - b.xmin, b.xmax - k.xmax, k.ymin - b.ymin, b.ymax - k.ymax};
    int side = 0;
    for (int i = 1; i < 4; ++i)
        if (margins[i] > margins[side])
            side = i;
    GR_Point2d a, z;
    switch (side) {
    case 0:
        a = {k.xmin + kHalfGrid, b.ymin - 1.0};
        z = {k.xmin + kHalfGrid, b.ymax + 1.0};
        break;
    case 1:
        a = {k.xmax - kHalfGrid, b.ymin - 1.0};
        z = {k.xmax - kHalfGrid, b.ymax + 1.0};
        break;
    case 2:
        a = {b.xmin - 1.0, k.ymin + kHalfGrid};
        z = {b.xmax + 1.0, k.ymin + kHalfGrid};
        break;
    default:
        a = {b.xmin - 1.0, k.ymax - kHalfGrid};
        z = {b.xmax + 1.0, k.ymax - kHalfGrid};
        break;
    }
    GR_Box2d scan;
    scan.Add(a);
    scan.Add(z);
    const GR_Point2d direction = z - a;
    double furthest = -1.0;
    GR_StrokeEnd found;
    std::vector<GR_LineCrossing> crossings;
    // Every stroke whose box reaches the segment is cut with it; the others cannot cross it.
    for (GR_VectorStroke* s : component.strokes) {
        const GR_Box2d& box = s->SharedPath()->Bounds();
        if (box.xmax < scan.xmin || box.xmin > scan.xmax || box.ymax < scan.ymin || box.ymin > scan.ymax)
            continue;
        crossings.clear();
        s->Path().LineCrossings(a, z, crossings);
        for (const GR_LineCrossing& c : crossings) {
            if (c.line <= furthest)
                continue;
            furthest = c.line;
            found = {s, static_cast<uint8_t>(GR_Cross(c.direction, direction) < 0.0 ? 1 : 0)};
        }
    }
    if (!found.IsNull())
        return found.Zone();
    // Without a crossing, the last zone that reaches the segment.
    GR_Zone* lastLooked = component.inner.back();
    for (GR_Zone* zone : component.inner)
        if (zone->box.Overlaps(scan))
            lastLooked = zone;
    return lastLooked;
}

struct NestEvent {
    double x, y;
    uint32_t zoneKey;      // creation index + 1 of a zone event, else 0
    uint32_t componentKey; // creation index + 1 of a component event, else 0
    bool operator<(const NestEvent& o) const {
        if (x != o.x)
            return x < o.x;
        if (y != o.y)
            return y < o.y;
        if (zoneKey != o.zoneKey)
            return zoneKey < o.zoneKey;
        return componentKey < o.componentKey;
    }
};

} // namespace

void GR_Layer::BuildZones() {
    ClearZones();
    zoneStore_.reserve(2 * count_);
    componentStore_.reserve(count_);
    componentStrokes_.reserve(count_);

    // 1. Components: strokes reached from one another through their rings.
    const uint64_t mark = GR_VectorStroke::NewMark();
    std::vector<GR_VectorStroke*> stack;
    for (GR_VectorStroke* s = first_; s; s = s->next) {
        if (s->mark == mark)
            continue;
        GR_Component& component = componentStore_.emplace_back();
        component.index = static_cast<uint32_t>(componentStore_.size() - 1);
        const size_t begin = componentStrokes_.size();
        s->mark = mark;
        stack.assign(1, s);
        while (!stack.empty()) {
            GR_VectorStroke* t = stack.back();
            stack.pop_back();
            componentStrokes_.push_back(t);
            t->component = &component;
            t->zone[0] = t->zone[1] = nullptr;
            for (uint8_t e = 0; e < 2; ++e) {
                const GR_StrokeEnd start{t, e};
                for (GR_StrokeEnd k = start.Next(); k != start; k = k.Next())
                    if (k.stroke->mark != mark) {
                        k.stroke->mark = mark;
                        stack.push_back(k.stroke);
                    }
            }
        }
        component.strokes = std::span<GR_VectorStroke* const>(componentStrokes_.data() + begin,
                                                              componentStrokes_.size() - begin);
    }

    // 2. Zones: each half-edge once, in stroke order, walked into its cycle.
    for (GR_VectorStroke* s = first_; s; s = s->next)
        for (uint8_t e = 0; e < 2; ++e) {
            if (s->zone[e])
                continue;
            GR_Zone& zone = zoneStore_.emplace_back();
            zone.index = static_cast<uint32_t>(zoneStore_.size() - 1);
            zone.first = {s, e};
            zone.component = s->component;
            GR_StrokeEnd h = zone.first;
            do {
                h.stroke->zone[h.end] = &zone;
                const GR_SharedPath& path = *h.stroke->SharedPath();
                zone.box.Merge(path.Bounds());
                zone.knotBox.Merge(path.KnotBounds());
                h = h.NextInZone();
            } while (h != zone.first);
            GR_Component& component = *zone.component;
            component.inner.push_back(&zone);
            component.box.Merge(zone.box);
            component.knotBox.Merge(zone.knotBox);
        }

    // 3. The outer cycle of each component.
    for (GR_Component& component : componentStore_) {
        if (component.inner.size() == 1) {
            component.outer = component.inner.front();
            component.inner.clear();
        } else if (component.inner.size() > 1) {
            GR_Zone* outer = FindOuterZone(component);
            if (outer) {
                component.outer = outer;
                std::erase(component.inner, outer);
            }
        }
    }

    // 4. Nesting, by a sweep over the boxes in x: a component lies in the innermost zone of
    // another component that holds its test point. The zones whose x range the sweep is in
    // are kept in a vector, with each zone's place in it.
    std::vector<NestEvent> events;
    for (GR_Component& component : componentStore_) {
        if (!component.knotBox.empty)
            events.push_back({component.knotBox.xmin, component.knotBox.ymin, 0, component.index + 1});
        for (GR_Zone* zone : component.inner) {
            events.push_back({zone->box.xmin, zone->box.ymin, zone->index + 1, 0});
            events.push_back({zone->box.xmax, zone->box.ymin, zone->index + 1, 0});
        }
    }
    std::sort(events.begin(), events.end());
    std::vector<GR_Zone*> active;
    std::vector<int32_t> place(zoneStore_.size(), -1);
    for (const NestEvent& event : events) {
        if (event.zoneKey != 0) {
            const uint32_t index = event.zoneKey - 1;
            if (place[index] < 0) {
                place[index] = static_cast<int32_t>(active.size());
                active.push_back(&zoneStore_[index]);
            } else {
                GR_Zone* moved = active.back();
                active[place[index]] = moved;
                place[moved->index] = place[index];
                active.pop_back();
                place[index] = -1;
            }
            continue;
        }
        GR_Component& component = componentStore_[event.componentKey - 1];
        if (!component.outer)
            continue;
        const GR_Point2d test = component.outer->first.stroke->Path().Point(0);
        GR_Zone* best = nullptr;
        double bestX = 0.0;
        for (GR_Zone* zone : active) {
            if (zone->component == &component || !StrictlyInside(component.knotBox, zone->box))
                continue;
            double x = 0.0;
            if (ZoneContains(*zone, test, true, &x) &&
                (!best || x < bestX || (x == bestX && zone->index < best->index))) {
                best = zone;
                bestX = x;
            }
        }
        if (best) {
            best->children.push_back(&component);
            component.parent = best;
        }
    }

    // 5. Depth first from the top components: a component, its outer zone, then each inner
    // zone followed by what is nested in it. A zone always stands after the zones around it.
    std::vector<bool> placed(componentStore_.size(), false);
    const auto flatten = [&](GR_Component* top) {
        std::vector<std::pair<GR_Component*, GR_Zone*>> work{{top, nullptr}};
        while (!work.empty()) {
            auto [component, zone] = work.back();
            work.pop_back();
            if (zone) {
                zones_.push_back(zone);
                for (size_t i = zone->children.size(); i-- > 0;)
                    work.push_back({zone->children[i], nullptr});
                continue;
            }
            if (placed[component->index])
                continue;
            placed[component->index] = true;
            components_.push_back(component);
            if (component->outer)
                zones_.push_back(component->outer);
            for (size_t i = component->inner.size(); i-- > 0;)
                work.push_back({nullptr, component->inner[i]});
        }
    };
    for (GR_Component& component : componentStore_)
        if (!component.parent) {
            topComponents_.push_back(&component);
            flatten(&component);
        }
    // Damaged data can nest components in a circle; such a component becomes a top one.
    for (GR_Component& component : componentStore_)
        if (!placed[component.index]) {
            std::erase(component.parent->children, &component);
            component.parent = nullptr;
            topComponents_.push_back(&component);
            flatten(&component);
        }
    for (size_t i = 0; i < zones_.size(); ++i)
        zones_[i]->index = static_cast<uint32_t>(i);
    for (size_t i = 0; i < components_.size(); ++i)
        components_[i]->index = static_cast<uint32_t>(i);
}
