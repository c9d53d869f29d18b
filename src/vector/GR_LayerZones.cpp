// Building the zones of a layer: components, boundary cycles, the outer cycle of each
// component, the nesting of components in zones, and the order of the result.

#include "vector/GR_Layer.h"
#include "vector/GR_VectorStroke.h"

#include <algorithm>
#include <set>

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
    const uint64_t mark = GR_VectorStroke::NewMark();
    double furthest = -1.0;
    GR_StrokeEnd found;
    GR_Zone* lastLooked = nullptr;
    std::vector<GR_LineCrossing> crossings;
    for (GR_Zone* zone : component.inner) {
        if (!zone->box.Overlaps(scan))
            continue;
        lastLooked = zone;
        zone->ForEachHalfEdge([&](const GR_StrokeEnd& h) {
            GR_VectorStroke* s = h.stroke;
            if (s->mark == mark)
                return;
            s->mark = mark;
            if (!s->SharedPath()->Bounds().Overlaps(scan))
                return;
            crossings.clear();
            s->Path().LineCrossings(a, z, crossings);
            for (const GR_LineCrossing& c : crossings) {
                if (c.line <= furthest)
                    continue;
                furthest = c.line;
                found = {s, static_cast<uint8_t>(GR_Cross(c.direction, direction) < 0.0 ? 1 : 0)};
            }
        });
    }
    if (!found.IsNull())
        return found.Zone();
    return lastLooked ? lastLooked : component.inner.back();
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
    zones_.clear();
    components_.clear();
    topComponents_.clear();
    for (GR_VectorStroke* s = first_; s; s = s->next) {
        s->zone[0] = s->zone[1] = nullptr;
        s->component = nullptr;
    }

    // 1. Components: strokes reached from one another through their rings.
    std::vector<std::unique_ptr<GR_Component>> components;
    const uint64_t mark = GR_VectorStroke::NewMark();
    std::vector<GR_VectorStroke*> stack;
    for (GR_VectorStroke* s = first_; s; s = s->next) {
        if (s->mark == mark)
            continue;
        auto component = std::make_unique<GR_Component>();
        component->index = static_cast<uint32_t>(components.size());
        s->mark = mark;
        stack.assign(1, s);
        while (!stack.empty()) {
            GR_VectorStroke* t = stack.back();
            stack.pop_back();
            component->strokes.push_back(t);
            t->component = component.get();
            for (uint8_t e = 0; e < 2; ++e) {
                const GR_StrokeEnd start{t, e};
                for (GR_StrokeEnd k = start.Next(); k != start; k = k.Next())
                    if (k.stroke->mark != mark) {
                        k.stroke->mark = mark;
                        stack.push_back(k.stroke);
                    }
            }
        }
        components.push_back(std::move(component));
    }

    // 2. Zones: each half-edge once, in stroke order, walked into its cycle.
    std::vector<std::unique_ptr<GR_Zone>> zones;
    for (GR_VectorStroke* s = first_; s; s = s->next)
        for (uint8_t e = 0; e < 2; ++e) {
            if (s->zone[e])
                continue;
            auto zone = std::make_unique<GR_Zone>();
            zone->index = static_cast<uint32_t>(zones.size());
            zone->first = {s, e};
            zone->component = s->component;
            GR_StrokeEnd h = zone->first;
            do {
                h.stroke->zone[h.end] = zone.get();
                zone->box.Merge(h.stroke->SharedPath()->Bounds());
                zone->knotBox.Merge(h.stroke->SharedPath()->KnotBounds());
                h = h.NextInZone();
            } while (h != zone->first);
            GR_Component& component = *zone->component;
            component.inner.push_back(zone.get());
            component.box.Merge(zone->box);
            component.knotBox.Merge(zone->knotBox);
            zones.push_back(std::move(zone));
        }

    // 3. The outer cycle of each component.
    for (auto& component : components) {
        if (component->inner.size() == 1) {
            component->outer = component->inner.front();
            component->inner.clear();
        } else if (component->inner.size() > 1) {
            GR_Zone* outer = FindOuterZone(*component);
            if (outer) {
                component->outer = outer;
                std::erase(component->inner, outer);
            }
        }
    }

    // 4. Nesting, by a sweep over the boxes in x: a component lies in the innermost zone of
    // another component that holds its test point.
    std::vector<NestEvent> events;
    for (auto& component : components) {
        if (!component->knotBox.empty)
            events.push_back({component->knotBox.xmin, component->knotBox.ymin, 0, component->index + 1});
        for (GR_Zone* zone : component->inner) {
            events.push_back({zone->box.xmin, zone->box.ymin, zone->index + 1, 0});
            events.push_back({zone->box.xmax, zone->box.ymin, zone->index + 1, 0});
        }
    }
    std::sort(events.begin(), events.end());
    std::set<uint32_t> active;
    for (const NestEvent& event : events) {
        if (event.zoneKey != 0) {
            if (!active.erase(event.zoneKey - 1))
                active.insert(event.zoneKey - 1);
            continue;
        }
        GR_Component& component = *components[event.componentKey - 1];
        if (!component.outer)
            continue;
        const GR_Point2d test = component.outer->first.stroke->Path().Point(0);
        GR_Zone* best = nullptr;
        double bestX = 0.0;
        for (uint32_t index : active) {
            GR_Zone& zone = *zones[index];
            if (zone.component == &component || !StrictlyInside(component.knotBox, zone.box))
                continue;
            double x = 0.0;
            if (ZoneContains(zone, test, true, &x) && (!best || x < bestX)) {
                best = &zone;
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
    std::vector<GR_Component*> flatComponents;
    std::vector<GR_Zone*> flatZones;
    std::vector<bool> placed(components.size(), false);
    const auto flatten = [&](GR_Component* top) {
        std::vector<std::pair<GR_Component*, GR_Zone*>> work{{top, nullptr}};
        while (!work.empty()) {
            auto [component, zone] = work.back();
            work.pop_back();
            if (zone) {
                flatZones.push_back(zone);
                for (size_t i = zone->children.size(); i-- > 0;)
                    work.push_back({zone->children[i], nullptr});
                continue;
            }
            if (placed[component->index])
                continue;
            placed[component->index] = true;
            flatComponents.push_back(component);
            if (component->outer)
                flatZones.push_back(component->outer);
            for (size_t i = component->inner.size(); i-- > 0;)
                work.push_back({nullptr, component->inner[i]});
        }
    };
    for (auto& component : components)
        if (!component->parent) {
            topComponents_.push_back(component.get());
            flatten(component.get());
        }
    // Damaged data can nest components in a circle; such a component becomes a top one.
    for (auto& component : components)
        if (!placed[component->index]) {
            std::erase(component->parent->children, component.get());
            component->parent = nullptr;
            topComponents_.push_back(component.get());
            flatten(component.get());
        }

    for (GR_Zone* zone : flatZones) {
        const uint32_t created = zone->index;
        zone->index = static_cast<uint32_t>(zones_.size());
        zones_.push_back(std::move(zones[created]));
    }
    for (GR_Component* component : flatComponents) {
        const uint32_t created = component->index;
        component->index = static_cast<uint32_t>(components_.size());
        components_.push_back(std::move(components[created]));
    }
}
