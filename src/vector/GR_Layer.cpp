#include "vector/GR_Layer.h"

#include "colour/CM_BaseColorObj.h"
#include "core/DB_Archive.h"
#include "vector/GR_VectorDrawingObj.h"
#include "vector/GR_VectorStroke.h"

#include <set>
#include <sstream>

namespace {

uint64_t g_layerSerial = 0;

// The smallest stroke on a stream: style, two null colour references, end flags and a
// path reference.
constexpr size_t kMinStrokeBytes = 28;

bool SameColour(const GR_ColorRef& a, const GR_ColorRef& b) {
    return a == b || (a && b && a->SameValue(*b, false));
}

} // namespace

GR_Layer::GR_Layer(uint16_t kind)
    : kind_(kind), ownPaths_(std::make_unique<GR_SharedPathSet>()), serial_(++g_layerSerial) {}

GR_Layer::~GR_Layer() {
    GR_VectorStroke* stroke = first_;
    while (stroke) {
        GR_VectorStroke* following = stroke->next;
        delete stroke;
        stroke = following;
    }
}

std::unique_ptr<GR_Layer> GR_Layer::Clone() const {
    auto copy = std::make_unique<GR_Layer>(kind_);
    for (const GR_VectorStroke* s = first_; s; s = s->next) {
        GR_SharedPath* record = copy->Paths().InternNormal(GR_BezierPath2d(s->Path()));
        auto* stroke =
            new GR_VectorStroke(record, s->colour[0], s->colour[1], s->style, s->endFlags[0], s->endFlags[1]);
        stroke->flags = 0;
        if (!copy->AddStroke(stroke))
            delete stroke;
    }
    return copy;
}

GR_SharedPathSet& GR_Layer::Paths() {
    return drawing_ ? drawing_->Paths() : *ownPaths_;
}

GR_VectorStroke* GR_Layer::AddStroke(const GR_StrokeDesc& desc) {
    if (!GR_SharedPathSet::IsUsable(desc))
        return nullptr;
    auto* stroke = new GR_VectorStroke(Paths().Intern(desc), desc.colour0, desc.colour1, desc.style,
                                       desc.endFlag0, desc.endFlag1);
    if (!AddStroke(stroke)) {
        delete stroke;
        return nullptr;
    }
    return stroke;
}

bool GR_Layer::AddStroke(GR_VectorStroke* stroke) {
    if (stroke->IsDegenerate())
        return false;
    if (stroke->SharedPath()->Owner() != &Paths())
        stroke->SetSharedPath(Paths().InternNormal(GR_BezierPath2d(stroke->Path())));
    InsertEnd({stroke, 0});
    InsertEnd({stroke, 1});
    stroke->previous = last_;
    stroke->next = nullptr;
    if (last_)
        last_->next = stroke;
    else
        first_ = stroke;
    last_ = stroke;
    ++count_;
    stroke->listLayer_ = this;
    if (!stroke->committedLayer)
        stroke->committedLayer = this;
    if (!stroke->targetLayer)
        stroke->targetLayer = this;
    InvalidateZones();
    return true;
}

void GR_Layer::RemoveStroke(GR_VectorStroke* stroke) {
    if (stroke->listLayer_ != this)
        return;
    RemoveEnd({stroke, 0});
    RemoveEnd({stroke, 1});
    if (stroke->previous)
        stroke->previous->next = stroke->next;
    else
        first_ = stroke->next;
    if (stroke->next)
        stroke->next->previous = stroke->previous;
    else
        last_ = stroke->previous;
    stroke->previous = stroke->next = nullptr;
    stroke->listLayer_ = nullptr;
    --count_;
    InvalidateZones();
    stroke->zone[0] = stroke->zone[1] = nullptr;
    stroke->component = nullptr;
}

void GR_Layer::DeleteStroke(GR_VectorStroke* stroke) {
    RemoveStroke(stroke);
    delete stroke;
}

GR_StrokeEnd GR_Layer::VertexAt(const GR_Point2f& point) const {
    auto found = vertices_.find(point);
    return found == vertices_.end() ? GR_StrokeEnd() : found->second;
}

// A ring is sorted from its head, the member that the vertex entry names: the new end goes
// after the last member that comes before it, and becomes the head when none does.
void GR_Layer::InsertEnd(const GR_StrokeEnd& end) {
    const GR_Point2f point = end.Point();
    auto found = vertices_.find(point);
    if (found == vertices_.end()) {
        end.SetNext(end);
        vertices_.emplace(point, end);
        return;
    }
    const GR_StrokeEnd head = found->second;
    GR_StrokeEnd previous, walk = head;
    do {
        if (!GR_StrokeEnd::Before(walk, end))
            break;
        previous = walk;
        walk = walk.Next();
    } while (walk != head);
    if (previous.IsNull()) {
        const GR_StrokeEnd tail = head.Previous();
        end.SetNext(head);
        tail.SetNext(end);
        found->second = end;
        return;
    }
    end.SetNext(previous.Next());
    previous.SetNext(end);
}

void GR_Layer::RemoveEnd(const GR_StrokeEnd& end) {
    const GR_StrokeEnd following = end.Next();
    auto found = vertices_.find(end.Point());
    if (following == end) {
        if (found != vertices_.end() && found->second == end)
            vertices_.erase(found);
        return;
    }
    end.Previous().SetNext(following);
    end.SetNext(end);
    if (found != vertices_.end() && found->second == end)
        found->second = following;
}

// The zone and component pointers of the strokes are left as they are: they are read only
// while the zones are valid, and the next build sets them all.
void GR_Layer::InvalidateZones() {
    boundsValid_ = false;
    if (!zonesValid_ && zones_.empty())
        return;
    zonesValid_ = false;
    ClearZones();
}

void GR_Layer::ClearZones() {
    zones_.clear();
    components_.clear();
    topComponents_.clear();
    zoneStore_.clear();
    componentStore_.clear();
    componentStrokes_.clear();
}

void GR_Layer::EnsureZones() {
    if (!zonesValid_) {
        BuildZones();
        zonesValid_ = true;
    }
}

const std::vector<GR_Zone*>& GR_Layer::Zones() {
    EnsureZones();
    return zones_;
}

const std::vector<GR_Component*>& GR_Layer::Components() {
    EnsureZones();
    return components_;
}

const std::vector<GR_Component*>& GR_Layer::TopComponents() {
    EnsureZones();
    return topComponents_;
}

GR_Zone* GR_Layer::ZoneAt(const GR_Point2d& point) {
    EnsureZones();
    if (!Bounds().Contains(point))
        return nullptr;
    for (size_t i = zones_.size(); i-- > 0;) {
        GR_Zone& zone = *zones_[i];
        if (!zone.IsOuter() && ZoneContains(zone, point, true))
            return &zone;
    }
    return nullptr;
}

GR_Zone* GR_Layer::ZoneOf(const GR_StrokeEnd& halfEdge) {
    if (halfEdge.IsNull() || halfEdge.stroke->ListLayer() != this)
        return nullptr;
    EnsureZones();
    return halfEdge.Zone();
}

GR_Component* GR_Layer::ComponentOf(const GR_VectorStroke* stroke) {
    if (!stroke || stroke->ListLayer() != this)
        return nullptr;
    EnsureZones();
    return stroke->component;
}

void GR_Layer::SetZoneColor(GR_Zone& zone, const GR_ColorRef& colour) {
    zone.ForEachHalfEdge([&](const GR_StrokeEnd& h) { h.SetLeftColor(colour); });
    for (GR_Component* child : zone.children)
        if (child->outer)
            child->outer->ForEachHalfEdge([&](const GR_StrokeEnd& h) { h.SetLeftColor(colour); });
}

GR_Box2d GR_Layer::Bounds() {
    if (!boundsValid_) {
        bounds_ = GR_Box2d();
        for (const GR_VectorStroke* s = first_; s; s = s->next)
            bounds_.Merge(s->SharedPath()->Bounds());
        boundsValid_ = true;
    }
    return bounds_;
}

UT_UniqueId GR_Layer::SingleLineColor() const {
    bool found = false;
    UT_UniqueId colour = kCM_NoColorId;
    for (const GR_VectorStroke* s = first_; s; s = s->next) {
        if (!s->style.DrawsLine())
            continue;
        if (found && s->style.colour != colour)
            return kCM_NoColorId;
        colour = s->style.colour;
        found = true;
    }
    return colour;
}

bool GR_Layer::ZoneContains(const GR_Zone& zone, const GR_Point2d& point, bool winding, double* nearestX) {
    if (!zone.box.Contains(point))
        return false;
    const GR_Point2d end{point.x + (zone.box.xmax - zone.box.xmin) + 1.0, point.y};
    int sum = 0;
    double nearest = 2.0;
    zone.ForEachHalfEdge([&](const GR_StrokeEnd& h) {
        const GR_Box2d& box = h.stroke->SharedPath()->Bounds();
        if (box.ymax < point.y || box.ymin > point.y || box.xmax < point.x)
            return;
        bool touched = false;
        const int count = h.stroke->Path().CountCrossings(point, end, touched, nearest);
        sum += h.end == 1 ? count : -count;
    });
    const bool inside = winding ? (sum != 0 && sum % 4 == 0) : (sum % 8 == 4 || sum % 8 == -4);
    if (inside && nearestX)
        *nearestX = point.x + nearest * (end.x - point.x);
    return inside;
}

bool GR_Layer::CheckZoneColors() {
    EnsureZones();
    for (const GR_Zone* zone : zones_) {
        const GR_ColorRef colour = zone->Color();
        bool same = true;
        const auto check = [&](const GR_StrokeEnd& h) { same = same && SameColour(h.LeftColor(), colour); };
        zone->ForEachHalfEdge(check);
        for (GR_Component* child : zone->children)
            if (child->outer)
                child->outer->ForEachHalfEdge(check);
        if (!same)
            return false;
    }
    return true;
}

bool GR_Layer::CheckInvariants(std::string* report) const {
    std::ostringstream out;
    bool ok = true;
    const auto fail = [&](const std::string& what) {
        ok = false;
        out << what << '\n';
    };
    // The list.
    size_t counted = 0;
    const GR_VectorStroke* previous = nullptr;
    for (const GR_VectorStroke* s = first_; s; s = s->next) {
        if (s->previous != previous)
            fail("broken list link at stroke " + std::to_string(s->Serial()));
        if (s->ListLayer() != this)
            fail("stroke " + std::to_string(s->Serial()) + " names another layer");
        if (s->IsDegenerate())
            fail("degenerate stroke " + std::to_string(s->Serial()));
        previous = s;
        if (++counted > count_)
            break;
    }
    if (counted != count_ || previous != last_)
        fail("stroke count or list end is wrong");
    // Rings and vertices.
    size_t ends = 0;
    for (const auto& [point, head] : vertices_) {
        if (head.IsNull() || head.stroke->ListLayer() != this) {
            fail("vertex entry names a stroke of no layer");
            continue;
        }
        if (!(head.Point() == point))
            fail("vertex entry at the wrong point");
        GR_StrokeEnd walk = head;
        size_t degree = 0, descents = 0;
        do {
            const GR_StrokeEnd following = walk.Next();
            if (!(walk.Point() == point))
                fail("ring member away from its vertex");
            if (following != head && !GR_StrokeEnd::Before(walk, following))
                ++descents;
            walk = following;
            if (++degree > 2 * count_ + 1)
                break;
        } while (walk != head);
        if (walk != head)
            fail("ring does not close");
        if (descents != 0)
            fail("ring out of order");
        ends += degree;
    }
    if (ends != 2 * count_)
        fail("ends in rings: " + std::to_string(ends) + ", expected " + std::to_string(2 * count_));
    // Zones.
    if (zonesValid_) {
        size_t halfEdges = 0;
        std::set<const GR_Zone*> listed(zones_.begin(), zones_.end());
        for (const GR_Zone* zone : zones_) {
            size_t length = 0;
            zone->ForEachHalfEdge([&](const GR_StrokeEnd& h) {
                ++length;
                if (h.Zone() != zone)
                    fail("half-edge in two zones");
            });
            halfEdges += length;
            if (!zone->component)
                fail("zone without component");
        }
        if (halfEdges != 2 * count_)
            fail("zones hold " + std::to_string(halfEdges) + " half-edges, expected " +
                 std::to_string(2 * count_));
        for (const GR_Component* component : components_) {
            std::set<GR_Point2f, PointLess> points;
            for (const GR_VectorStroke* s : component->strokes) {
                points.insert(s->Path().points.front());
                points.insert(s->Path().points.back());
                if (s->component != component)
                    fail("stroke names another component");
            }
            const long faces = static_cast<long>(component->inner.size()) + (component->outer ? 1 : 0);
            const long euler =
                static_cast<long>(points.size()) - static_cast<long>(component->strokes.size()) + faces;
            if (euler != 2)
                fail("Euler's formula fails for component " + std::to_string(component->index) +
                     ": V - E + F = " + std::to_string(euler));
            for (const GR_Zone* zone : component->inner)
                if (zone->component != component || !listed.count(zone))
                    fail("inner zone of another component");
            if (component->parent &&
                std::find(component->parent->children.begin(), component->parent->children.end(),
                          component) == component->parent->children.end())
                fail("component missing from its parent's children");
        }
    }
    if (report)
        *report += out.str();
    return ok;
}

void GR_Layer::Attach(GR_VectorDrawingObj* drawing) {
    drawing_ = drawing;
    GR_SharedPathSet& paths = drawing->Paths();
    for (GR_VectorStroke* s = first_; s; s = s->next)
        if (s->SharedPath()->Owner() != &paths)
            s->SetSharedPath(paths.InternNormal(GR_BezierPath2d(s->Path())));
    ownPaths_.reset();
}

void GR_Layer::Detach() {
    if (!drawing_)
        return;
    drawing_ = nullptr;
    ownPaths_ = std::make_unique<GR_SharedPathSet>();
    for (GR_VectorStroke* s = first_; s; s = s->next)
        s->SetSharedPath(ownPaths_->InternNormal(GR_BezierPath2d(s->Path())));
}

void GR_Layer::Read(DB_Archive& archive) {
    if (archive.Version() >= 32) {
        kind_ = archive.ReadU16();
    } else {
        archive.ReadU32();
        kind_ = kDefault;
    }
    const uint32_t count = archive.ReadCount(kMinStrokeBytes);
    DB_ObjectTable& table = archive.Table();
    for (uint32_t i = 0; i < count; ++i) {
        const uint8_t kind = archive.ReadU8();
        const float width =
            archive.Version() <= 22 ? static_cast<float>(archive.ReadU8()) : archive.ReadF32();
        const UT_UniqueId lineColour = archive.ReadUniqueId();
        GR_ColorRef colour0 = archive.ReadSharedAs<GR_Color>();
        GR_ColorRef colour1 = archive.ReadSharedAs<GR_Color>();
        const uint8_t endFlag0 = archive.ReadBool() ? 1 : 0;
        const uint8_t endFlag1 = archive.ReadBool() ? 1 : 0;
        GR_BezierPath2d path;
        if (archive.Version() < 32) {
            path.Read(archive);
        } else if (archive.ReadBool()) {
            const uint32_t index = archive.ReadU32();
            const auto* seen = index < table.read.size()
                                   ? dynamic_cast<const GR_SharedPath*>(table.read[index].get())
                                   : nullptr;
            if (!seen)
                archive.ThrowUnexpected();
            path = seen->Path();
        } else {
            auto record = std::make_shared<GR_SharedPath>();
            record->Read(archive);
            table.read.push_back(record);
            path = record->Path();
        }
        if (!GR_SharedPathSet::IsUsable(path))
            archive.ThrowUnexpected();
        auto* stroke = new GR_VectorStroke(Paths().Intern(path), std::move(colour0), std::move(colour1),
                                           GR_LineStyle(kind, width, lineColour), endFlag0, endFlag1);
        stroke->flags = 0;
        if (!AddStroke(stroke))
            delete stroke;
    }
}

void GR_Layer::Write(DB_Archive& archive) {
    archive.WriteU16(kind_);
    archive.WriteCount(count_);
    auto& written = archive.Table().written;
    for (GR_VectorStroke* s = first_; s; s = s->next) {
        archive.WriteU8(s->style.kind);
        archive.WriteF32(s->style.width);
        archive.WriteUniqueId(s->style.colour);
        archive.WriteShared(s->colour[0].get());
        archive.WriteShared(s->colour[1].get());
        archive.WriteBool(s->endFlags[0] != 0);
        archive.WriteBool(s->endFlags[1] != 0);
        GR_SharedPath* record = s->SharedPath();
        auto seen = written.find(record);
        archive.WriteBool(seen != written.end());
        if (seen != written.end()) {
            archive.WriteU32(seen->second);
            continue;
        }
        record->Write(archive);
        const auto index = static_cast<uint32_t>(written.size());
        written.emplace(record, index);
    }
}
