#pragma once

#include "core/UT_UniqueId.h"
#include "vector/GR_Box2d.h"
#include "vector/GR_Component.h"
#include "vector/GR_SharedPath.h"
#include "vector/GR_StrokeDesc.h"
#include "vector/GR_StrokeEnd.h"
#include "vector/GR_Zone.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

class DB_Archive;
class GR_LayerNode;
class GR_VectorDrawingObj;

// One layer of a drawing as a planar map. Strokes are the edges; the ends of strokes that
// meet at one point form a vertex, a ring of ends sorted counter-clockwise by tangent; the
// cycles of the walk h := Twin(Next(h)) are the zones. Zones and components are derived,
// built on demand and dropped at every change of the strokes.
//
// A layer outside a drawing keeps its paths in a set of its own; when its node enters a
// drawing, its strokes move to the drawing's shared records.
class GR_Layer {
public:
    // Layer kinds: what made the layer. Stored kinds are kept whatever their value.
    enum Kind : uint16_t {
        kDefault = 0,
        kPaintGaps = 1,
        kBrush = 2,
        kPencil = 3,
        kRectangle = 4,
        kEllipse = 5,
        kLine = 6,
        kStrokeTool = 7,
        kGapBridges = 8,
        kCenterLine = 9,
        // Layers of this imported kind are drawn before all others.
        kImportedBackground = 104,
    };

    // The vertices, keyed by point: x, then y.
    struct PointLess {
        bool operator()(const GR_Point2f& a, const GR_Point2f& b) const {
            return a.x < b.x || (a.x == b.x && a.y < b.y);
        }
    };
    using VertexMap = std::map<GR_Point2f, GR_StrokeEnd, PointLess>;

    explicit GR_Layer(uint16_t kind = kDefault);
    GR_Layer(const GR_Layer&) = delete;
    GR_Layer& operator=(const GR_Layer&) = delete;
    ~GR_Layer();

    // A copy outside any drawing: same kind, and strokes equal in path, colours, style and
    // end flags, in the same order. The colours are shared with this layer.
    std::unique_ptr<GR_Layer> Clone() const;

    uint16_t GetKind() const { return kind_; }
    void SetKind(uint16_t kind) { kind_ = kind; }
    GR_VectorDrawingObj* GetDrawing() const { return drawing_; }
    GR_LayerNode* GetNode() const { return node_; }
    // The records the strokes' paths live in: the drawing's, or the layer's own.
    GR_SharedPathSet& Paths();
    // Creation order, which stands in for identity wherever layers are sorted.
    uint64_t Serial() const { return serial_; }
    // Cache identifier of the render cache; 0 when none was given.
    uint32_t GetIdentifier() const { return identifier_; }
    void SetIdentifier(uint32_t identifier) { identifier_ = identifier; }

    // Strokes, in insertion order.
    GR_VectorStroke* FirstStroke() const { return first_; }
    GR_VectorStroke* LastStroke() const { return last_; }
    size_t StrokeCount() const { return count_; }

    // A new stroke from a description, in this layer's path records; nullptr, and nothing
    // added, when it is degenerate.
    GR_VectorStroke* AddStroke(const GR_StrokeDesc& desc);
    // Takes the stroke in: its ends join their rings, it goes to the end of the list. False,
    // and the caller keeps it, when it is degenerate. A stroke without layers takes this one
    // as committed and target layer.
    bool AddStroke(GR_VectorStroke* stroke);
    // Takes the stroke out of the rings and the list; the caller owns it afterwards.
    void RemoveStroke(GR_VectorStroke* stroke);
    // Removes and deletes.
    void DeleteStroke(GR_VectorStroke* stroke);

    const VertexMap& Vertices() const { return vertices_; }
    // The head of the ring at a point, or a null end.
    GR_StrokeEnd VertexAt(const GR_Point2f& point) const;

    // Zones and components, built when they are not valid.
    bool ZonesValid() const { return zonesValid_; }
    void EnsureZones();
    // Drops the zones; the next request builds them again.
    void InvalidateZones();
    // All zones and components in nesting order: a zone stands after the zones around it.
    const std::vector<GR_Zone*>& Zones();
    const std::vector<GR_Component*>& Components();
    const std::vector<GR_Component*>& TopComponents();
    // The deepest bounded zone that holds the point (non-zero rule), or nullptr.
    GR_Zone* ZoneAt(const GR_Point2d& point);
    GR_Zone* ZoneOf(const GR_StrokeEnd& halfEdge);
    GR_Component* ComponentOf(const GR_VectorStroke* stroke);
    // The zone and the outer zones of the components nested in it.
    void SetZoneColor(GR_Zone& zone, const GR_ColorRef& colour);
    // Bounds of all strokes' control points.
    GR_Box2d Bounds();
    // The colour id shared by every stroke that draws a line, or the invalid id when they
    // differ or there are none.
    UT_UniqueId SingleLineColor() const;

    // Whether a point lies in a zone's cycle: its box holds the point, and the ray in +x
    // has a weighted crossing sum that passes the rule (non-zero when winding, else
    // even-odd). nearestX, when given, gets the x of the nearest crossing.
    bool ZoneContains(const GR_Zone& zone, const GR_Point2d& point, bool winding, double* nearestX = nullptr);

    // True when every half-edge of every zone carries that zone's colour, and so do the
    // outer zones of the components nested in it.
    bool CheckZoneColors();
    // The invariants of the map: the list, every ring closed and sorted around its vertex,
    // the vertex entries; with valid zones, every half-edge in exactly one zone, zones
    // inside their components, Euler's formula per component. Appends what is wrong.
    bool CheckInvariants(std::string* report = nullptr) const;

    // The body in the drawing stream; strokes that turn out degenerate are dropped.
    void Read(DB_Archive& archive);
    void Write(DB_Archive& archive);

private:
    friend class GR_LayerNode;
    friend class GR_VectorDrawingObj;

    // Moves the strokes' paths to the drawing's records, or back to a set of the layer's own.
    void Attach(GR_VectorDrawingObj* drawing);
    void Detach();
    void InsertEnd(const GR_StrokeEnd& end);
    void RemoveEnd(const GR_StrokeEnd& end);
    void BuildZones();
    // Empties the zones, components and their stores.
    void ClearZones();

    GR_VectorDrawingObj* drawing_ = nullptr;
    GR_LayerNode* node_ = nullptr;
    uint16_t kind_;
    std::unique_ptr<GR_SharedPathSet> ownPaths_;
    GR_VectorStroke* first_ = nullptr;
    GR_VectorStroke* last_ = nullptr;
    size_t count_ = 0;
    VertexMap vertices_;
    bool zonesValid_ = false;
    std::vector<GR_Component*> topComponents_;
    std::vector<GR_Component*> components_;
    std::vector<GR_Zone*> zones_;
    // The zones and components themselves, in the order they were made, with room for as
    // many as the strokes can make, so that their places never move while they are built;
    // the strokes of every component lie in one vector.
    std::vector<GR_Zone> zoneStore_;
    std::vector<GR_Component> componentStore_;
    std::vector<GR_VectorStroke*> componentStrokes_;
    GR_Box2d bounds_;
    bool boundsValid_ = false;
    uint32_t identifier_ = 0;
    uint64_t serial_;
};
