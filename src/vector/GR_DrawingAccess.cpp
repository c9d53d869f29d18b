#include "vector/GR_DrawingAccess.h"

#include "vector/GR_Layer.h"
#include "vector/GR_LayerNode.h"
#include "vector/GR_Listener.h"
#include "vector/GR_VectorDrawingObj.h"
#include "vector/GR_VectorStroke.h"
#include "vector/detail/GR_CommitSteps.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdio>
#include <limits>

namespace {

bool Holds(const std::vector<GR_Layer*>& layers, const GR_Layer* layer) {
    return std::find(layers.begin(), layers.end(), layer) != layers.end();
}

void AddOnce(std::vector<GR_Layer*>& layers, GR_Layer* layer) {
    if (!Holds(layers, layer))
        layers.push_back(layer);
}

} // namespace

bool GR_DrawingAccess::LayerLess::operator()(const GR_Layer* a, const GR_Layer* b) const {
    return a->Serial() < b->Serial();
}

GR_DrawingAccess::GR_DrawingAccess(CM_PaletteList* palettes) : palettes_(palettes) {}

GR_DrawingAccess::~GR_DrawingAccess() {
    if (editing_)
        Commit();
}

void GR_DrawingAccess::SetDrawing(GR_VectorDrawingObj* drawing) {
    if (editing_)
        Commit();
    drawing_ = drawing;
    index_.Clear();
    stamp_ = 0;
    if (!drawing_)
        return;
    RefreshIndex();
    if (drawing_->GetRebuild() != GR_VectorDrawingObj::kTrusted)
        Rebuild();
}

void GR_DrawingAccess::AddListener(GR_Listener* listener) {
    if (std::find(listeners_.begin(), listeners_.end(), listener) == listeners_.end())
        listeners_.push_back(listener);
}

void GR_DrawingAccess::RemoveListener(GR_Listener* listener) {
    std::erase(listeners_, listener);
}

void GR_DrawingAccess::RefreshIndex() {
    if (drawing_ && (stamp_ != drawing_->GetStamp() || index_.Outgrown())) {
        index_.Build(*drawing_);
        stamp_ = drawing_->GetStamp();
    }
}

void GR_DrawingAccess::TreeChanged() {
    const bool fresh = stamp_ == drawing_->GetStamp();
    drawing_->MarkChanged();
    if (fresh)
        stamp_ = drawing_->GetStamp();
}

// Every stroke is replaced by an equal new one in its layer, so that the commit remakes
// every crossing, vertex and zone from the stored paths and sides.
void GR_DrawingAccess::Rebuild() {
    const uint8_t rebuild = drawing_->GetRebuild();
    BeginEdit(rebuild == GR_VectorDrawingObj::kRebuildLongestBoundary ? kLongestBoundary : kKeepZones);
    for (GR_Layer* layer = drawing_->FirstLayer(); layer; layer = drawing_->NextLayer(layer))
        for (GR_VectorStroke* s = layer->FirstStroke(); s; s = s->next) {
            auto* copy = new GR_VectorStroke(*s);
            copy->committedLayer = copy->targetLayer = layer;
            pending_[copy] = kAdded;
            pending_[s] = kRemoved;
        }
    Commit();
    drawing_->SetRebuild(GR_VectorDrawingObj::kTrusted);
}

void GR_DrawingAccess::BeginEdit(uint32_t mode) {
    if (editing_)
        Commit();
    mode_ = (mode == kKeepZones || mode == kKeepZonesByCount || mode == kLongestBoundary ||
             mode == kLongestBoundaryAgain)
                ? mode
                : kKeepZones;
    pending_.clear();
    touched_.clear();
    RefreshIndex();
    editing_ = true;
}

void GR_DrawingAccess::EnsureEditing() {
    if (!editing_)
        BeginEdit(kKeepZones);
}

void GR_DrawingAccess::Announce(UT_Node* node, const GR_LayerChange& change) {
    const std::vector<GR_Listener*> listeners = listeners_;
    for (GR_Listener* listener : listeners)
        listener->LayerChanged(*drawing_, node, change);
}

// The first change of a layer in a transaction is announced before the layer is touched.
void GR_DrawingAccess::Touch(GR_Layer* layer) {
    if (!layer || !touched_.emplace(layer, true).second)
        return;
    Announce(layer->GetNode(), {GR_ChangeKind::kChanged, drawing_->PathOf(layer), {}});
}

GR_DrawingAccess::State GR_DrawingAccess::StateOf(const GR_VectorStroke* stroke) const {
    auto found = pending_.find(const_cast<GR_VectorStroke*>(stroke));
    return found == pending_.end() ? kNone : static_cast<State>(found->second);
}

GR_VectorStroke* GR_DrawingAccess::AddStroke(const GR_StrokeDesc& desc, GR_Layer* layer) {
    if (!drawing_ || !layer)
        return nullptr;
    EnsureEditing();
    GR_SharedPathSet& paths = drawing_->Paths();
    // A path out of reach enters as an empty one: degenerate, dropped at the commit.
    GR_SharedPath* record =
        GR_SharedPathSet::IsUsable(desc) ? paths.Intern(desc) : paths.Intern(GR_BezierPath2d());
    auto* stroke =
        new GR_VectorStroke(record, desc.colour0, desc.colour1, desc.style, desc.endFlag0, desc.endFlag1);
    stroke->committedLayer = stroke->targetLayer = layer;
    pending_[stroke] = kAdded;
    return stroke;
}

GR_Layer* GR_DrawingAccess::AddStrokes(const std::vector<GR_StrokeDesc>& descs, uint16_t kind,
                                       const UT_Node* after) {
    if (!drawing_)
        return nullptr;
    if (editing_)
        Commit();
    BeginEdit(kKeepZones);
    GR_LayerPath path;
    if (after && after != drawing_->GetRoot() && drawing_->GetRoot() &&
        drawing_->GetRoot()->IsAncestorOf(after)) {
        path = drawing_->PathOf(after);
        ++path.back();
    } else {
        const UT_Node* root = drawing_->GetRoot();
        path = {0, root ? static_cast<uint32_t>(root->ChildCount()) : 0u};
    }
    GR_Layer* layer = AddLayer(kind, path);
    if (!layer) {
        Commit();
        return nullptr;
    }
    const uint64_t serial = layer->Serial();
    for (const GR_StrokeDesc& desc : descs)
        AddStroke(desc, layer);
    Commit();
    for (GR_Layer* l = drawing_->FirstLayer(); l; l = drawing_->NextLayer(l))
        if (l->Serial() == serial)
            return l;
    return nullptr;
}

GR_VectorStroke* GR_DrawingAccess::CopyStrokeTo(GR_VectorStroke* stroke, GR_Layer* layer) {
    if (!drawing_ || !stroke || !layer)
        return nullptr;
    EnsureEditing();
    auto* copy = new GR_VectorStroke(*stroke);
    copy->committedLayer = copy->targetLayer = layer;
    pending_[copy] = kAdded;
    return copy;
}

void GR_DrawingAccess::MoveStroke(GR_VectorStroke* stroke, GR_Layer* layer) {
    if (!drawing_ || !stroke || !layer)
        return;
    EnsureEditing();
    switch (StateOf(stroke)) {
    case kNone:
        if (layer != stroke->committedLayer) {
            stroke->targetLayer = layer;
            pending_[stroke] = kMoved;
        }
        break;
    case kAdded:
        stroke->committedLayer = stroke->targetLayer = layer;
        break;
    case kMoved:
        stroke->targetLayer = layer;
        break;
    default:
        break;
    }
}

void GR_DrawingAccess::RemoveStroke(GR_VectorStroke* stroke) {
    if (!drawing_ || !stroke)
        return;
    EnsureEditing();
    switch (StateOf(stroke)) {
    case kNone:
        pending_[stroke] = kRemoved;
        break;
    case kAdded:
        pending_[stroke] = kAddedRemoved;
        break;
    case kMoved:
        stroke->targetLayer = stroke->committedLayer;
        pending_[stroke] = kRemoved;
        break;
    default:
        break;
    }
}

void GR_DrawingAccess::SetStrokeStyle(GR_VectorStroke* stroke, const GR_LineStyle& style) {
    if (!drawing_ || !stroke)
        return;
    EnsureEditing();
    Touch(stroke->ListLayer() ? stroke->ListLayer() : stroke->targetLayer);
    stroke->style = style;
    stroke->style.SetWidth(style.width);
}

void GR_DrawingAccess::SetStrokeColor(GR_VectorStroke* stroke, int side, GR_ColorRef colour) {
    if (!drawing_ || !stroke)
        return;
    EnsureEditing();
    Touch(stroke->ListLayer() ? stroke->ListLayer() : stroke->targetLayer);
    stroke->colour[side == 0 ? 0 : 1] = std::move(colour);
}

void GR_DrawingAccess::SetZoneColor(GR_Zone* zone, GR_ColorRef colour) {
    if (!drawing_ || !zone)
        return;
    GR_Layer* layer = zone->first.stroke->ListLayer();
    if (!layer)
        return;
    EnsureEditing();
    Touch(layer);
    layer->SetZoneColor(*zone, colour);
}

GR_Layer* GR_DrawingAccess::AddLayer(uint16_t kind, const GR_LayerPath& path) {
    if (!drawing_)
        return nullptr;
    auto node = std::make_unique<GR_LayerNode>(std::make_unique<GR_Layer>(kind));
    GR_Layer* layer = node->GetLayer();
    UT_Node* raw = node.get();
    if (!drawing_->InsertNode(path, std::move(node)))
        return nullptr;
    TreeChanged();
    Announce(raw, {GR_ChangeKind::kAdded, drawing_->PathOf(raw), {}});
    return layer;
}

bool GR_DrawingAccess::RemoveLayer(const GR_LayerPath& path) {
    if (!drawing_)
        return false;
    UT_Node* node = drawing_->LayerNodeAt(path);
    if (!node || node == drawing_->GetRoot())
        return false;
    RemoveNode(node);
    TreeChanged();
    return true;
}

bool GR_DrawingAccess::MoveLayer(const GR_LayerPath& from, const GR_LayerPath& to) {
    if (!drawing_)
        return false;
    UT_Node* node = drawing_->LayerNodeAt(from);
    if (!node || node == drawing_->GetRoot())
        return false;
    UT_Node* oldParent = node->Parent();
    const size_t oldIndex = node->IndexInParent();
    std::unique_ptr<UT_Node> taken = drawing_->TakeNode(node, false);
    if (!drawing_->CanInsert(to)) {
        oldParent->InsertChild(std::move(taken), oldIndex == 0 ? nullptr : oldParent->ChildAt(oldIndex - 1));
        return false;
    }
    drawing_->InsertNode(to, std::move(taken));
    TreeChanged();
    Announce(node, {GR_ChangeKind::kMoved, drawing_->PathOf(node), from});
    PruneGroup(oldParent);
    return true;
}

GR_Layer* GR_DrawingAccess::CutWithStrokes(const std::vector<GR_StrokeDesc>& descs) {
    if (!drawing_)
        return nullptr;
    EnsureEditing();
    GR_Box2d box;
    for (const GR_StrokeDesc& desc : descs)
        box.Merge(desc.Bounds());
    std::vector<GR_Layer*> others;
    for (GR_Layer* layer = drawing_->FirstLayer(); layer; layer = drawing_->NextLayer(layer))
        if (layer->Bounds().Overlaps(box))
            others.push_back(layer);
    const UT_Node* root = drawing_->GetRoot();
    GR_Layer* cutting =
        AddLayer(GR_Layer::kDefault, {0, root ? static_cast<uint32_t>(root->ChildCount()) : 0u});
    if (!cutting)
        return nullptr;
    std::vector<GR_VectorStroke*> strokes;
    for (const GR_StrokeDesc& desc : descs)
        strokes.push_back(AddStroke(desc, cutting));
    for (GR_Layer* layer : others)
        for (GR_VectorStroke* s : strokes)
            CopyStrokeTo(s, layer);
    return cutting;
}

void GR_DrawingAccess::RemoveAllStrokes(GR_Layer* layer) {
    if (!layer)
        return;
    for (GR_VectorStroke* s = layer->FirstStroke(); s; s = s->next)
        RemoveStroke(s);
}

void GR_DrawingAccess::RemoveAllLayers() {
    if (!drawing_)
        return;
    while (GR_Layer* layer = drawing_->LastLayer())
        RemoveNode(layer->GetNode());
    TreeChanged();
}

void GR_DrawingAccess::MoveAllStrokes(GR_Layer* from, GR_Layer* to) {
    if (!from || !to || from == to)
        return;
    for (GR_VectorStroke* s = from->FirstStroke(); s; s = s->next)
        MoveStroke(s, to);
}

void GR_DrawingAccess::AppendDrawing(const GR_VectorDrawingObj& other) {
    if (!drawing_ || !other.GetRoot() || &other == drawing_)
        return;
    EnsureEditing();
    struct Copier {
        GR_DrawingAccess& access;
        void Copy(const UT_Node& source, GR_LayerPath path) {
            if (const GR_Layer* layer = GR_LayerOf(&source)) {
                GR_Layer* copy = access.AddLayer(layer->GetKind(), path);
                if (!copy)
                    return;
                for (const GR_VectorStroke* s = layer->FirstStroke(); s; s = s->next)
                    access.AddStroke(GR_StrokeDesc(*s), copy);
            } else {
                auto group = std::make_unique<UT_Node>();
                UT_Node* raw = group.get();
                if (!access.drawing_->InsertNode(path, std::move(group)))
                    return;
                access.TreeChanged();
                access.Announce(raw, {GR_ChangeKind::kAdded, access.drawing_->PathOf(raw), {}});
            }
            path.push_back(0);
            for (const UT_Node* child = source.FirstChild(); child; child = child->Next()) {
                Copy(*child, path);
                ++path.back();
            }
        }
    } copier{*this};
    for (const UT_Node* child = other.GetRoot()->FirstChild(); child; child = child->Next()) {
        const UT_Node* root = drawing_->GetRoot();
        copier.Copy(*child, {0, root ? static_cast<uint32_t>(root->ChildCount()) : 0u});
    }
}

GR_VectorStroke* GR_DrawingAccess::PickStroke(const GR_Point2d& point, double radius, double* parameter) {
    if (!drawing_ || !(radius >= 0.0))
        return nullptr;
    RefreshIndex();
    GR_Box2d box;
    box.Add(point);
    std::vector<GR_VectorStroke*> candidates;
    index_.Query(box, radius, candidates);
    double best = std::nextafter(radius * radius, std::numeric_limits<double>::infinity());
    GR_VectorStroke* picked = nullptr;
    for (GR_VectorStroke* s : candidates) {
        double t = 0.0;
        if (s->Path().NearestPoint(point, best, t)) {
            picked = s;
            if (parameter)
                *parameter = t;
        }
    }
    return picked;
}

void GR_DrawingAccess::StrokesInLasso(const std::vector<GR_Point2d>& polygon, GR_StrokeSet& out) {
    if (!drawing_ || polygon.size() < 3)
        return;
    RefreshIndex();
    std::vector<GR_Point2d> closed = polygon;
    closed.push_back(polygon.front());
    const GR_BezierPath2d outline = GR_BezierPath2d::Polyline(closed);
    std::vector<GR_VectorStroke*> candidates;
    index_.Query(outline.Bounds(), 0.0, candidates);
    for (GR_VectorStroke* s : candidates) {
        const GR_BezierPath2d& path = s->Path();
        if (outline.Contains(path.Point(0), false) ||
            outline.Contains(path.Point(path.points.size() - 1), false) || path.Intersects(outline, false))
            out.insert(s);
    }
}

void GR_DrawingAccess::CollectLogicalStroke(GR_VectorStroke* stroke, GR_StrokeSet& out) {
    if (!stroke || !stroke->ListLayer())
        return;
    std::vector<GR_VectorStroke*> work{stroke};
    out.insert(stroke);
    while (!work.empty()) {
        GR_VectorStroke* s = work.back();
        work.pop_back();
        for (uint8_t e = 0; e < 2; ++e) {
            if (s->endFlags[e] != 0)
                continue;
            const GR_StrokeEnd start{s, e};
            for (GR_StrokeEnd k = start.Next(); k != start; k = k.Next())
                if (k.stroke->style == s->style && out.insert(k.stroke).second)
                    work.push_back(k.stroke);
        }
    }
}

// ---------------------------------------------------------------------------------------
// Tree removals

void GR_DrawingAccess::ForgetLayer(GR_Layer* layer) {
    for (auto it = pending_.begin(); it != pending_.end();) {
        GR_VectorStroke* s = it->first;
        const uint8_t state = it->second;
        if ((state == kAdded || state == kAddedRemoved) && s->targetLayer == layer) {
            it = pending_.erase(it);
            delete s;
            continue;
        }
        if (state == kMoved && s->ListLayer() == layer) {
            // On its way out of the layer: it leaves now and enters its target at the commit.
            index_.Remove(s);
            layer->RemoveStroke(s);
            s->committedLayer = s->targetLayer;
            if (s->targetLayer == layer) {
                it = pending_.erase(it);
                delete s;
                continue;
            }
        } else if (state == kMoved && s->targetLayer == layer) {
            s->targetLayer = s->committedLayer;
            it = pending_.erase(it);
            continue;
        } else if (state == kRemoved && s->ListLayer() == layer) {
            it = pending_.erase(it);
            continue;
        }
        ++it;
    }
    touched_.erase(layer);
    for (GR_VectorStroke* s = layer->FirstStroke(); s; s = s->next)
        index_.Remove(s);
}

// Nodes go one at a time, children before their parent, each announced before it goes.
void GR_DrawingAccess::RemoveNode(UT_Node* node) {
    std::vector<UT_Node*> order;
    for (UT_Node* n = node; n; n = n->NextInTree(node))
        order.push_back(n);
    UT_Node* parent = node->Parent();
    for (size_t i = order.size(); i-- > 0;) {
        UT_Node* n = order[i];
        if (GR_Layer* layer = GR_LayerOf(n))
            ForgetLayer(layer);
        Announce(n, {GR_ChangeKind::kRemoved, drawing_->PathOf(n), {}});
        drawing_->TakeNode(n, false).reset();
    }
    PruneGroup(parent);
}

void GR_DrawingAccess::PruneGroup(UT_Node* parent) {
    UT_Node* root = drawing_->GetRoot();
    while (parent && parent != root && !parent->FirstChild() && !GR_LayerOf(parent)) {
        UT_Node* above = parent->Parent();
        Announce(parent, {GR_ChangeKind::kRemoved, drawing_->PathOf(parent), {}});
        drawing_->TakeNode(parent, false).reset();
        parent = above;
    }
    if (root && !root->FirstChild())
        drawing_->TakeNode(root, false).reset();
}

// ---------------------------------------------------------------------------------------
// Commit

void GR_DrawingAccess::Commit() {
    if (!editing_)
        return;
    editing_ = false;
    if (!drawing_) {
        for (auto& [stroke, state] : pending_)
            if (state == kAdded || state == kAddedRemoved)
                delete stroke;
        pending_.clear();
        touched_.clear();
        return;
    }
    // 1. Apply, cut and split until no piece is left to cut. Each round can only make
    // pieces of what the last one made; the guard stops a round that never ends.
    const size_t guard = 64 * std::max<size_t>(1, pending_.size());
    size_t rounds = 0;
    while (!pending_.empty()) {
        Apply();
        // New strokes far beyond the grid would crowd its border cells.
        if (index_.Outgrown())
            index_.Build(*drawing_);
        if (++rounds > guard) {
            assert(!"the commit of a drawing did not come to an end");
            pending_.clear();
            break;
        }
        SplitMap splits;
        Intersect(splits);
        Split(splits);
    }
    lastRounds_ = rounds;

    // 2. Colours, duplicates and contours of every changed layer.
    GR_detail::LayerRanks ranks;
    size_t rank = 0;
    for (GR_Layer* layer = drawing_->FirstLayer(); layer; layer = drawing_->NextLayer(layer))
        ranks[layer] = rank++;
    for (auto& [layer, unused] : touched_) {
        if (mode_ == kKeepZones || mode_ == kKeepZonesByCount)
            GR_detail::RecolorKeepZones(*layer, mode_, ranks);
        else
            GR_detail::RecolorLongestBoundary(*layer);
        GR_detail::CleanLayer(*layer, palettes_, index_);
        layer->EnsureZones();
        GR_detail::RefitZoneColors(*layer, palettes_);
#ifndef NDEBUG
        std::string report;
        if (!layer->CheckInvariants(&report) || !layer->CheckZoneColors()) {
            std::fprintf(stderr, "planar map broken after a commit:\n%s", report.c_str());
            assert(!"planar map broken after a commit");
        }
#endif
    }

    // 3. Layers left without strokes go, and groups left without layers.
    const bool changed = !touched_.empty();
    RemoveEmptyLayers();

    // 4. A new stamp; the index followed every change, so it stays valid.
    if (changed) {
        drawing_->MarkChanged();
        stamp_ = drawing_->GetStamp();
    }
    touched_.clear();
}

void GR_DrawingAccess::Apply() {
    const std::vector<std::pair<GR_VectorStroke*, uint8_t>> work(pending_.begin(), pending_.end());
    for (const auto& [s, state] : work) {
        switch (state) {
        case kAdded:
        case kMoved: {
            if (GR_Layer* from = s->ListLayer()) {
                Touch(from);
                index_.Remove(s);
                from->RemoveStroke(s);
            }
            GR_Layer* target = s->targetLayer;
            Touch(target);
            if (target->AddStroke(s)) {
                index_.Insert(s);
            } else {
                pending_.erase(s);
                delete s;
            }
            break;
        }
        case kRemoved:
            if (GR_Layer* from = s->ListLayer()) {
                Touch(from);
                index_.Remove(s);
                from->RemoveStroke(s);
            }
            pending_.erase(s);
            delete s;
            break;
        default:
            pending_.erase(s);
            delete s;
            break;
        }
    }
}

// Every pending path is cut once against the paths near it in the same target layers,
// leaving out pairs that were cut against each other before and paths whose own turn is
// still to come. One path stands for all the strokes that share it.
void GR_DrawingAccess::Intersect(SplitMap& splits) {
    std::vector<GR_VectorStroke*> candidates;
    std::vector<GR_Layer*> targets, committed;
    std::vector<GR_PathHit> hits;
    while (!pending_.empty()) {
        GR_VectorStroke* a = pending_.begin()->first;
        GR_SharedPath* pathA = a->SharedPath();
        index_.Query(pathA->Bounds(), 0.0, candidates);
        targets.clear();
        committed.clear();
        bool cutA = false;
        for (GR_VectorStroke* s : pathA->Strokes()) {
            AddOnce(targets, s->targetLayer);
            if (!s->HasFlag(GR_VectorStroke::kNew))
                AddOnce(committed, s->committedLayer);
            s->SetFlag(GR_VectorStroke::kNew, false);
            cutA = cutA || s->style.kind == GR_LineStyle::kCut;
            pending_.erase(s);
        }
        for (GR_VectorStroke* b : candidates)
            b->SetFlag(GR_VectorStroke::kIntersected, false);
        for (GR_VectorStroke* b : candidates) {
            if (b->HasFlag(GR_VectorStroke::kIntersected))
                continue;
            GR_SharedPath* pathB = b->SharedPath();
            bool sameLayer = false, done = false, cutB = false;
            for (GR_VectorStroke* t : pathB->Strokes()) {
                t->SetFlag(GR_VectorStroke::kIntersected, true);
                if (Holds(targets, t->targetLayer)) {
                    sameLayer = true;
                    cutB = cutB || t->style.kind == GR_LineStyle::kCut;
                }
                if ((!t->HasFlag(GR_VectorStroke::kNew) && Holds(committed, t->committedLayer)) ||
                    pending_.count(t))
                    done = true;
            }
            if (!sameLayer || done)
                continue;
            hits.clear();
            const bool self = pathB == pathA || pathB->Path() == pathA->Path();
            if (self)
                pathA->Path().IntersectSelf(hits);
            else
                pathA->Path().IntersectAll(pathB->Path(), false, hits);
            for (const GR_PathHit& hit : hits) {
                const GR_Point2f point = GR_SnapToGridF(hit.firstPoint);
                AddSplits(pathA->FirstStroke(), pathA->Path(), hit.firstParameter, point, cutB, splits);
                AddSplits(pathB->FirstStroke(), pathB->Path(), hit.secondParameter, point, cutA, splits);
            }
        }
    }
}

void GR_DrawingAccess::AddSplits(GR_VectorStroke* pathStroke, const GR_BezierPath2d& path, double parameter,
                                 const GR_Point2f& point, bool cut, SplitMap& splits) {
    // A parameter at either end of the path is an end, not a place to cut.
    if (!(parameter > 0.0) || !(parameter < static_cast<double>(path.SegmentCount())))
        return;
    auto [it, inserted] = splits[pathStroke].emplace(parameter, SplitRecord{point, cut});
    if (!inserted)
        it->second.cut = it->second.cut || cut;
}

// Each cut path is divided once; every stroke on it is replaced by pieces with its colours,
// style and layers. The pieces meet at the exact point of each cut, so that the pieces of
// all paths cut there share one vertex. Every piece counts as new, even one made of whole
// segments: a neighbour cut in the same round may have moved its chords across it.
void GR_DrawingAccess::Split(const SplitMap& splits) {
    GR_SharedPathSet& paths = drawing_->Paths();
    for (const auto& [first, records] : splits) {
        const GR_BezierPath2d& path = first->Path();
        std::vector<double> cuts{0.0};
        std::vector<const SplitRecord*> at{nullptr};
        for (const auto& [t, record] : records) {
            cuts.push_back(t);
            at.push_back(&record);
        }
        cuts.push_back(static_cast<double>(path.SegmentCount()));
        at.push_back(nullptr);
        const size_t pieces = cuts.size() - 1;
        std::vector<GR_BezierPath2d> shapes(pieces);
        for (size_t i = 0; i < pieces; ++i) {
            GR_BezierPath2d& piece = shapes[i];
            piece = path;
            piece.KeepRange(cuts[i], cuts[i + 1]);
            if (piece.points.empty())
                continue;
            if (at[i])
                piece.points.front() = at[i]->point;
            if (at[i + 1])
                piece.points.back() = at[i + 1]->point;
            piece = GR_SharedPathSet::NormalForm(piece);
        }
        const std::vector<GR_VectorStroke*> users(first->SharedPath()->Strokes().begin(),
                                                  first->SharedPath()->Strokes().end());
        for (GR_VectorStroke* s : users) {
            for (size_t i = 0; i < pieces; ++i) {
                const uint8_t flag0 = at[i] ? (at[i]->cut ? 1 : 0) : s->endFlags[0];
                const uint8_t flag1 = at[i + 1] ? (at[i + 1]->cut ? 1 : 0) : s->endFlags[1];
                auto* piece = new GR_VectorStroke(paths.InternNormal(GR_BezierPath2d(shapes[i])),
                                                  s->colour[0], s->colour[1], s->style, flag0, flag1);
                piece->committedLayer = s->committedLayer;
                piece->targetLayer = s->targetLayer;
                pending_[piece] = kAdded;
            }
            auto found = pending_.find(s);
            if (found != pending_.end() && found->second == kAdded)
                found->second = kAddedRemoved;
            else
                pending_[s] = kRemoved;
        }
    }
}

void GR_DrawingAccess::RemoveEmptyLayers() {
    std::vector<GR_Layer*> empty;
    for (auto& [layer, unused] : touched_)
        if (layer->StrokeCount() == 0 && layer->GetNode())
            empty.push_back(layer);
    for (GR_Layer* layer : empty)
        RemoveNode(layer->GetNode());
}
