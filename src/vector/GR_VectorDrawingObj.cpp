#include "vector/GR_VectorDrawingObj.h"

#include "colour/CM_BaseColorObj.h"
#include "colour/CM_PaletteList.h"
#include "core/DB_Archive.h"
#include "vector/GR_DrawingAccess.h"
#include "vector/GR_Layer.h"
#include "vector/GR_LayerNode.h"
#include "vector/GR_VectorStroke.h"

#include <map>

namespace {

// Groups nest; damaged data must not recurse without end.
constexpr int kMaxTreeDepth = 256;

enum NodeKind : uint32_t { kGroupNode = 1, kLayerNode = 2 };

// A colour entry on the stream: its id and a typed object.
constexpr size_t kMinColourBytes = 10;

GR_Layer* LayerOfNode(const UT_Node* node) {
    return node ? GR_LayerOf(node) : nullptr;
}

} // namespace

GR_VectorDrawingObj::GR_VectorDrawingObj() = default;

GR_VectorDrawingObj::~GR_VectorDrawingObj() {
    root_.reset();
}

void GR_VectorDrawingObj::Clear() {
    root_.reset();
}

GR_Box2d GR_VectorDrawingObj::GetBounds() {
    GR_Box2d box;
    for (GR_Layer* layer = FirstLayer(); layer; layer = NextLayer(layer))
        box.Merge(layer->Bounds());
    return box;
}

GR_Layer* GR_VectorDrawingObj::FirstLayer() const {
    for (UT_Node* node = root_.get(); node; node = node->NextInTree(root_.get()))
        if (GR_Layer* layer = LayerOfNode(node))
            return layer;
    return nullptr;
}

GR_Layer* GR_VectorDrawingObj::LastLayer() const {
    if (!root_)
        return nullptr;
    for (UT_Node* node = root_->LastInTree(); node; node = node->PreviousInTree(root_.get()))
        if (GR_Layer* layer = LayerOfNode(node))
            return layer;
    return nullptr;
}

GR_Layer* GR_VectorDrawingObj::NextLayer(const GR_Layer* layer) const {
    if (!layer || !layer->GetNode())
        return nullptr;
    for (UT_Node* node = layer->GetNode()->NextInTree(root_.get()); node;
         node = node->NextInTree(root_.get()))
        if (GR_Layer* next = LayerOfNode(node))
            return next;
    return nullptr;
}

GR_Layer* GR_VectorDrawingObj::PreviousLayer(const GR_Layer* layer) const {
    if (!layer || !layer->GetNode())
        return nullptr;
    for (UT_Node* node = layer->GetNode()->PreviousInTree(root_.get()); node;
         node = node->PreviousInTree(root_.get()))
        if (GR_Layer* previous = LayerOfNode(node))
            return previous;
    return nullptr;
}

size_t GR_VectorDrawingObj::LayerCount() const {
    size_t count = 0;
    for (GR_Layer* layer = FirstLayer(); layer; layer = NextLayer(layer))
        ++count;
    return count;
}

GR_Layer* GR_VectorDrawingObj::LayerAt(size_t index) const {
    GR_Layer* layer = FirstLayer();
    while (layer && index-- > 0)
        layer = NextLayer(layer);
    return layer;
}

long GR_VectorDrawingObj::IndexOf(const GR_Layer* target) const {
    long index = 0;
    for (GR_Layer* layer = FirstLayer(); layer; layer = NextLayer(layer), ++index)
        if (layer == target)
            return index;
    return -1;
}

UT_Node* GR_VectorDrawingObj::LayerNodeAt(const GR_LayerPath& path) const {
    if (path.empty() || path[0] != 0 || !root_)
        return nullptr;
    UT_Node* node = root_.get();
    for (size_t i = 1; i < path.size() && node; ++i)
        node = node->ChildAt(path[i]);
    return node;
}

GR_LayerPath GR_VectorDrawingObj::PathOf(const UT_Node* node) const {
    GR_LayerPath path;
    if (!node || !root_ || !root_->IsAncestorOf(node))
        return path;
    for (; node != root_.get(); node = node->Parent())
        path.push_back(static_cast<uint32_t>(node->IndexInParent()));
    path.push_back(0);
    return GR_LayerPath(path.rbegin(), path.rend());
}

GR_LayerPath GR_VectorDrawingObj::PathOf(const GR_Layer* layer) const {
    return layer ? PathOf(layer->GetNode()) : GR_LayerPath();
}

bool GR_VectorDrawingObj::CanInsert(const GR_LayerPath& path) const {
    if (path.size() < 2 || path[0] != 0)
        return false;
    if (!root_)
        return path.size() == 2 && path[1] == 0;
    const UT_Node* parent = LayerNodeAt(GR_LayerPath(path.begin(), path.end() - 1));
    return parent && path.back() <= parent->ChildCount();
}

bool GR_VectorDrawingObj::InsertNode(const GR_LayerPath& path, std::unique_ptr<UT_Node> node) {
    if (!node || !CanInsert(path))
        return false;
    if (!root_)
        root_ = std::make_unique<UT_Node>();
    UT_Node* parent = LayerNodeAt(GR_LayerPath(path.begin(), path.end() - 1));
    const uint32_t index = path.back();
    AttachLayers(*node);
    parent->InsertChild(std::move(node), index == 0 ? nullptr : parent->ChildAt(index - 1));
    return true;
}

void GR_VectorDrawingObj::AttachLayers(UT_Node& top) {
    for (UT_Node* node = &top; node; node = node->NextInTree(&top))
        if (GR_Layer* layer = LayerOfNode(node))
            layer->Attach(this);
}

std::unique_ptr<UT_Node> GR_VectorDrawingObj::TakeNode(UT_Node* node, bool detach) {
    if (!node)
        return nullptr;
    std::unique_ptr<UT_Node> taken = node == root_.get() ? std::move(root_) : node->Unlink();
    if (detach)
        for (UT_Node* n = taken.get(); n; n = n->NextInTree(taken.get()))
            if (GR_Layer* layer = LayerOfNode(n))
                layer->Detach();
    return taken;
}

UT_Node* GR_VectorDrawingObj::EmptiedGroup(const UT_Node* node) const {
    UT_Node* emptied = nullptr;
    for (UT_Node* parent = node->Parent(); parent && parent != root_.get(); parent = parent->Parent()) {
        if (parent->ChildCount() != 1 || LayerOfNode(parent))
            break;
        emptied = parent;
        node = parent;
    }
    return emptied;
}

void GR_VectorDrawingObj::DeleteNode(UT_Node* node) {
    if (!node)
        return;
    UT_Node* emptied = EmptiedGroup(node);
    TakeNode(emptied ? emptied : node, false).reset();
    if (root_ && !root_->FirstChild())
        root_.reset();
}

void GR_VectorDrawingObj::CopyDescriptions(std::vector<std::unique_ptr<GR_StrokeDesc>>& out) const {
    for (GR_Layer* layer = FirstLayer(); layer; layer = NextLayer(layer))
        for (const GR_VectorStroke* s = layer->FirstStroke(); s; s = s->next)
            out.push_back(std::make_unique<GR_StrokeDesc>(*s));
}

bool GR_VectorDrawingObj::UsesColor(UT_UniqueId id) const {
    for (GR_Layer* layer = FirstLayer(); layer; layer = NextLayer(layer))
        for (const GR_VectorStroke* s = layer->FirstStroke(); s; s = s->next) {
            if ((s->colour[0] && s->colour[0]->GetId() == id) ||
                (s->colour[1] && s->colour[1]->GetId() == id))
                return true;
            if (s->style.DrawsLine() && s->style.colour == id)
                return true;
        }
    return false;
}

bool GR_VectorDrawingObj::CheckZones() {
    for (GR_Layer* layer = FirstLayer(); layer; layer = NextLayer(layer))
        if (!layer->CheckZoneColors())
            return false;
    return true;
}

void GR_VectorDrawingObj::Read(DB_Archive& archive) {
    Clear();
    rebuild_ = kTrusted;
    if (archive.Version() < 32) {
        // Older drawings are a plain list of layers, rebuilt at first use.
        const uint32_t count = archive.ReadCount(8);
        std::vector<std::unique_ptr<GR_Layer>> layers;
        for (uint32_t i = 0; i < count; ++i) {
            auto layer = std::make_unique<GR_Layer>();
            layer->Attach(this);
            layer->Read(archive);
            layers.push_back(std::move(layer));
        }
        for (size_t i = layers.size(); i-- > 0;)
            InsertNode({0, 0}, std::make_unique<GR_LayerNode>(std::move(layers[i])));
        rebuild_ = kRebuildKeepZones;
    } else {
        rebuild_ = archive.ReadU8();
        if (archive.ReadBool())
            root_ = ReadTree(archive, 0);
    }

    // Copies of the palette entries that the drawing used, for a project that lacks them.
    const uint32_t colourCount = archive.ReadCount(kMinColourBytes);
    std::map<UT_UniqueId, std::unique_ptr<CM_BaseColorObj>> colours;
    for (uint32_t i = 0; i < colourCount; ++i) {
        const UT_UniqueId id = archive.ReadUniqueId();
        std::unique_ptr<CPersistentObjBase> object = archive.ReadNew();
        if (auto* entry = dynamic_cast<CM_BaseColorObj*>(object.get())) {
            object.release();
            colours[id].reset(entry);
        }
    }
    auto* palettes = static_cast<CM_PaletteList*>(archive.Context());
    if (palettes && !colours.empty()) {
        std::map<UT_UniqueId, const CM_BaseColorObj*> offered;
        for (const auto& [id, entry] : colours)
            offered.emplace(id, entry.get());
        palettes->Recover(offered);
    }
    RenewStamp();

    if (rebuild_ != kTrusted && palettes && !CheckZones()) {
        GR_DrawingAccess access(palettes);
        access.SetDrawing(this);
        access.SetDrawing(nullptr);
    }
}

std::unique_ptr<UT_Node> GR_VectorDrawingObj::ReadTree(DB_Archive& archive, int depth) {
    if (depth > kMaxTreeDepth)
        archive.ThrowUnexpected();
    std::unique_ptr<UT_Node> node;
    const uint32_t kind = archive.ReadU32();
    if (kind == kGroupNode) {
        node = std::make_unique<UT_Node>();
    } else if (kind == kLayerNode) {
        if (archive.ReadBool()) {
            auto layer = std::make_unique<GR_Layer>();
            layer->Attach(this);
            layer->Read(archive);
            node = std::make_unique<GR_LayerNode>(std::move(layer));
        } else {
            node = std::make_unique<UT_Node>();
        }
    } else {
        return nullptr;
    }
    const uint32_t children = archive.ReadCount(4);
    for (uint32_t i = 0; i < children; ++i)
        if (std::unique_ptr<UT_Node> child = ReadTree(archive, depth + 1))
            node->AppendChild(std::move(child));
    return node;
}

void GR_VectorDrawingObj::Write(DB_Archive& archive) {
    archive.WriteU8(rebuild_);
    archive.WriteBool(root_ != nullptr);
    if (root_)
        WriteTree(archive, *root_);

    // The palette entries of every zone colour and every line colour, so that the drawing
    // can bring its colours to another project. An id the palettes do not know is written
    // with the entry that stands for missing colours.
    std::map<UT_UniqueId, CM_BaseColorObj*> colours;
    if (auto* palettes = static_cast<CM_PaletteList*>(archive.Context())) {
        for (GR_Layer* layer = FirstLayer(); layer; layer = NextLayer(layer)) {
            for (GR_Zone* zone : layer->Zones())
                if (const GR_ColorRef& colour = zone->Color())
                    colours.emplace(colour->GetId(), palettes->Resolve(colour->GetId()));
            for (const GR_VectorStroke* s = layer->FirstStroke(); s; s = s->next)
                if (s->style.DrawsLine())
                    colours.emplace(s->style.colour, palettes->Resolve(s->style.colour));
        }
    }
    archive.WriteCount(colours.size());
    for (const auto& [id, entry] : colours) {
        archive.WriteUniqueId(id);
        archive.WriteTyped(*entry);
    }
}

void GR_VectorDrawingObj::WriteTree(DB_Archive& archive, UT_Node& node) {
    if (GR_Layer* layer = LayerOfNode(&node)) {
        archive.WriteU32(kLayerNode);
        archive.WriteBool(true);
        layer->Write(archive);
    } else {
        archive.WriteU32(kGroupNode);
    }
    archive.WriteCount(node.ChildCount());
    for (UT_Node* child = node.FirstChild(); child; child = child->Next())
        WriteTree(archive, *child);
}
