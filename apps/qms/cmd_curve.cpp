// qms curve and qms path: function curves and motion paths evaluated frame by frame,
// printed as CSV or JSON and drawn as SVG.
//
// A curve or path comes as JSON text, as a file holding such text, or as a file that
// --store wrote (the type id and the stored body).
//
//   curve: {"kind": "spline" | "interpolation" | "velocity",
//           "keys": [[x, y], ...] or [{"x": .., "y": .., "in": [x, y], "out": [x, y]}, ...],
//           "preset": 0..6 (splines: the shape of every segment, default 0, "Linear"),
//           "reference": curve (velocity kind: the curve whose progress it follows)}
//   path:  {"kind": "catmull" | "linear",
//           "keys": [[frame, x, y, z], ...] or
//                   [{"frame": .., "pos": [x, y, z], "locked": true, "tcb": [t, c, b]}, ...],
//           "smoothness": samples per segment (catmull, default 40),
//           "velocity": curve (catmull, default the new peg's: 0 to 100, eased)}

#include "QmsCommands.h"
#include "QmsJsonValue.h"
#include "core/DB_Archive.h"
#include "core/DB_BufferFile.h"
#include "core/DB_File.h"
#include "motion/C3DInterpolation.h"
#include "motion/CCatmullCurve.h"
#include "motion/CInterpolation.h"
#include "motion/CSpline.h"
#include "motion/CVelocityBased.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iomanip>
#include <optional>
#include <sstream>

namespace {

std::string Kind(const QmsJsonValue& description, const char* fallback) {
    const QmsJsonValue* kind = description.Find("kind");
    if (!kind)
        return fallback;
    if (kind->type != QmsJsonValue::Type::String)
        throw QmsFailure("\"kind\" must be a string");
    return kind->text;
}

const QmsJsonValue& Keys(const QmsJsonValue& description, size_t minimum) {
    const QmsJsonValue* keys = description.Find("keys");
    if (!keys || keys->type != QmsJsonValue::Type::Array)
        throw QmsFailure("the description needs an array \"keys\"");
    if (keys->items.size() < minimum)
        throw QmsFailure("at least " + std::to_string(minimum) + " keys are needed");
    if (keys->items.size() > 32768)
        throw QmsFailure("too many keys");
    return *keys;
}

// ---- Building curves and paths from their descriptions. ----

// A curve and the places it leans on: a velocity-based curve keeps a pointer to the
// place of its reference, which must live as long as it does.
struct CurveHolder {
    CFunctionPlace curve;
    std::unique_ptr<CurveHolder> reference;
};

std::unique_ptr<CurveHolder> BuildCurve(const QmsJsonValue& description, int depth = 0);

// The velocity curve that a new peg of the given length gets.
std::unique_ptr<CurveHolder> DefaultVelocity(double lastFrame) {
    auto holder = std::make_unique<CurveHolder>();
    const auto last = static_cast<int16_t>(std::clamp(lastFrame, 1.0, 32767.0));
    holder->curve = std::make_unique<CSpline>(0, 0.0, last, 100.0);
    return holder;
}

std::unique_ptr<CurveHolder> BuildCurve(const QmsJsonValue& description, int depth) {
    if (description.type != QmsJsonValue::Type::Object)
        throw QmsFailure("a curve description must be a JSON object");
    if (depth > 4)
        throw QmsFailure("reference curves nested too deeply");
    const std::string kind = Kind(description, "spline");
    const QmsJsonValue& keys = Keys(description, 2);
    std::vector<double> xs, ys;
    for (const QmsJsonValue& key : keys.items) {
        if (key.type == QmsJsonValue::Type::Array) {
            const std::vector<double> xy = QmsJsonNumbers(key, 2, "a key [x, y]");
            xs.push_back(xy[0]);
            ys.push_back(xy[1]);
        } else if (key.type == QmsJsonValue::Type::Object && key.Find("x") && key.Find("y")) {
            xs.push_back(QmsJsonNumber(*key.Find("x"), "\"x\""));
            ys.push_back(QmsJsonNumber(*key.Find("y"), "\"y\""));
        } else {
            throw QmsFailure("a key must be [x, y] or {\"x\": .., \"y\": ..}");
        }
        if (xs.back() < -32768.0 || xs.back() > 32767.0)
            throw QmsFailure("key frames must lie within -32768 ... 32767");
        if (xs.size() > 1 && !(xs.back() > xs[xs.size() - 2]))
            throw QmsFailure("key frames must rise strictly");
    }
    auto holder = std::make_unique<CurveHolder>();
    if (kind == "spline") {
        holder->curve = std::make_unique<CSpline>();
    } else if (kind == "interpolation") {
        holder->curve = std::make_unique<CInterpolation>();
    } else if (kind == "velocity") {
        const QmsJsonValue* reference = description.Find("reference");
        holder->reference = reference ? BuildCurve(*reference, depth + 1) : DefaultVelocity(xs.back());
        holder->curve = std::make_unique<CVelocityBased>(&holder->reference->curve);
    } else {
        throw QmsFailure("unknown curve kind '" + kind + "' (spline, interpolation or velocity)");
    }
    CFunctionBase& curve = *holder->curve;
    curve.SetFromValues(ys.data(), 0, static_cast<int>(ys.size()));
    for (size_t i = 0; i < xs.size(); ++i)
        curve.GetKey(static_cast<int>(i))->x = xs[i];
    if (curve.HasHandles()) {
        int preset = CSpline::kLinear;
        if (const QmsJsonValue* p = description.Find("preset")) {
            const double n = QmsJsonNumber(*p, "\"preset\"");
            if (n != std::floor(n) || n < 0 || n > 6)
                throw QmsFailure("\"preset\" must be a whole number from 0 to 6");
            preset = static_cast<int>(n);
        }
        curve.ReshapeAll(preset);
        for (size_t i = 0; i < keys.items.size(); ++i) {
            const QmsJsonValue& key = keys.items[i];
            CFunctionPoint& point = *curve.GetKey(static_cast<int>(i));
            for (const char* side : {"in", "out"}) {
                const QmsJsonValue* handle = key.Find(side);
                if (!handle)
                    continue;
                const std::vector<double> xy = QmsJsonNumbers(*handle, 2, std::string("\"") + side + "\"");
                CUIControlPoint* target = side[0] == 'i' ? point.GetInHandle() : point.GetOutHandle();
                target->Set(xy[0], xy[1]);
            }
        }
    }
    return holder;
}

struct PathHolder {
    C3DFunctionPlace path;
    std::unique_ptr<CurveHolder> velocity;
};

struct PathKey {
    double frame;
    C3DPoint position;
    bool locked = true;
    float tcb[3] = {0.0f, 0.0f, 0.0f};
};

std::vector<PathKey> PathKeys(const QmsJsonValue& description) {
    std::vector<PathKey> result;
    for (const QmsJsonValue& key : Keys(description, 2).items) {
        PathKey k;
        if (key.type == QmsJsonValue::Type::Array) {
            const std::vector<double> v = QmsJsonNumbers(key, 4, "a key [frame, x, y, z]");
            k.frame = v[0];
            k.position.Set(v[1], v[2], v[3]);
        } else if (key.type == QmsJsonValue::Type::Object && key.Find("frame") && key.Find("pos")) {
            k.frame = QmsJsonNumber(*key.Find("frame"), "\"frame\"");
            const std::vector<double> p = QmsJsonNumbers(*key.Find("pos"), 3, "\"pos\"");
            k.position.Set(p[0], p[1], p[2]);
            if (const QmsJsonValue* locked = key.Find("locked")) {
                if (locked->type != QmsJsonValue::Type::Bool)
                    throw QmsFailure("\"locked\" must be true or false");
                k.locked = locked->flag;
            }
            if (const QmsJsonValue* tcb = key.Find("tcb")) {
                const std::vector<double> shape = QmsJsonNumbers(*tcb, 3, "\"tcb\"");
                for (int i = 0; i < 3; ++i) {
                    if (shape[static_cast<size_t>(i)] < -1.0 || shape[static_cast<size_t>(i)] > 1.0)
                        throw QmsFailure("tension, continuity and bias lie within -1 ... 1");
                    k.tcb[i] = static_cast<float>(shape[static_cast<size_t>(i)]);
                }
            }
        } else {
            throw QmsFailure("a path key must be [frame, x, y, z] or {\"frame\": .., \"pos\": [x, y, z]}");
        }
        if (k.frame < 0.0 || k.frame > 32767.0)
            throw QmsFailure("path frames must lie within 0 ... 32767");
        if (!result.empty() && !(k.frame > result.back().frame))
            throw QmsFailure("path key frames must rise strictly");
        result.push_back(k);
    }
    if (result.front().frame != std::floor(result.front().frame) ||
        result.back().frame != std::floor(result.back().frame))
        throw QmsFailure("the first and the last key of a path lie on whole frames");
    return result;
}

void ApplyShape(C3DFunctionPoint& key, const PathKey& from) {
    if (auto* catmull = dynamic_cast<CCatmullPoint*>(&key)) {
        catmull->tension = from.tcb[0];
        catmull->continuity = from.tcb[1];
        catmull->bias = from.tcb[2];
    }
}

std::unique_ptr<PathHolder> BuildPath(const QmsJsonValue& description) {
    if (description.type != QmsJsonValue::Type::Object)
        throw QmsFailure("a path description must be a JSON object");
    const std::string kind = Kind(description, "catmull");
    const std::vector<PathKey> keys = PathKeys(description);
    auto holder = std::make_unique<PathHolder>();
    const auto f0 = static_cast<int16_t>(keys.front().frame);
    const auto f1 = static_cast<int16_t>(keys.back().frame);
    if (kind == "catmull") {
        const QmsJsonValue* velocity = description.Find("velocity");
        holder->velocity = velocity ? BuildCurve(*velocity) : DefaultVelocity(f1 - f0);
        auto path = std::make_unique<CCatmullCurve>(f0, keys.front().position, f1, keys.back().position,
                                                    &holder->velocity->curve, 0);
        if (const QmsJsonValue* smoothness = description.Find("smoothness")) {
            const double n = QmsJsonNumber(*smoothness, "\"smoothness\"");
            if (n != std::floor(n) || n < 1 || n > C3DFunction::kMaxSmoothness)
                throw QmsFailure("\"smoothness\" must be a whole number from 1 to " +
                                 std::to_string(C3DFunction::kMaxSmoothness));
            path->SetSmoothness(static_cast<int>(n));
        }
        holder->path = std::move(path);
    } else if (kind == "linear") {
        holder->path =
            std::make_unique<C3DInterpolation>(f0, keys.front().position, f1, keys.back().position, 0);
    } else {
        throw QmsFailure("unknown path kind '" + kind + "' (catmull or linear)");
    }
    C3DFunction& path = *holder->path;
    ApplyShape(*path.GetKey(0), keys.front());
    ApplyShape(*path.GetKey(1), keys.back());
    for (size_t i = 1; i + 1 < keys.size(); ++i) {
        std::unique_ptr<C3DFunctionPoint> point = path.NewPoint();
        point->SetPosition(keys[i].position);
        ApplyShape(*point, keys[i]);
        int index = -1;
        path.AddKey(*point, keys[i].frame, &index, keys[i].locked);
        if (index < 0)
            throw QmsFailure("the key at frame " + std::to_string(keys[i].frame) + " cannot be added");
    }
    return holder;
}

// ---- Sources: JSON text, a JSON file or a stored object. ----

bool LooksLikeJson(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t\r\n");
    return first != std::string::npos && text[first] == '{';
}

// The JSON text of a source, or the bytes of a stored object in `stored`.
std::string ReadSource(const std::string& source, std::vector<uint8_t>& stored) {
    if (LooksLikeJson(source))
        return source;
    std::ifstream in(source, std::ios::binary);
    if (!in)
        throw QmsFailure("unable to read " + source);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    std::string text = bytes.str();
    if (LooksLikeJson(text))
        return text;
    stored.assign(text.begin(), text.end());
    return {};
}

std::unique_ptr<CPersistentObjBase> ReadStored(const std::vector<uint8_t>& stored,
                                               const std::string& source) {
    DB_BufferFile buffer(stored.data(), stored.size());
    DB_Archive in(&buffer, true);
    std::unique_ptr<CPersistentObjBase> object = in.ReadNew();
    if (!object)
        throw QmsFailure(source + " holds no object");
    return object;
}

std::unique_ptr<CurveHolder> LoadCurve(const std::string& source) {
    std::vector<uint8_t> stored;
    const std::string text = ReadSource(source, stored);
    if (!text.empty())
        return BuildCurve(QmsJsonValue::Parse(text));
    std::unique_ptr<CPersistentObjBase> object = ReadStored(stored, source);
    auto* curve = dynamic_cast<CFunctionBase*>(object.get());
    if (!curve)
        throw QmsFailure(source + " holds no function curve");
    object.release();
    auto holder = std::make_unique<CurveHolder>();
    holder->curve.reset(curve);
    // A stored velocity-based curve follows the default velocity of its length.
    if (auto* based = dynamic_cast<CVelocityBased*>(curve)) {
        holder->reference = DefaultVelocity(curve->KeyCount() > 0 ? curve->GetKeys().back()->x : 1.0);
        based->reference = &holder->reference->curve;
    }
    return holder;
}

std::unique_ptr<PathHolder> LoadPath(const std::string& source, const std::optional<std::string>& velocity) {
    std::vector<uint8_t> stored;
    const std::string text = ReadSource(source, stored);
    std::unique_ptr<PathHolder> holder;
    if (!text.empty()) {
        holder = BuildPath(QmsJsonValue::Parse(text));
    } else {
        std::unique_ptr<CPersistentObjBase> object = ReadStored(stored, source);
        auto* path = dynamic_cast<C3DFunction*>(object.get());
        if (!path)
            throw QmsFailure(source + " holds no motion path");
        object.release();
        holder = std::make_unique<PathHolder>();
        holder->path.reset(path);
        const int frames = path->GetDurationInFrames();
        holder->velocity = DefaultVelocity(frames > 1 ? frames - 1 : 1);
    }
    if (velocity)
        holder->velocity = LoadCurve(*velocity);
    if (auto* catmull = dynamic_cast<CCatmullCurve*>(holder->path.get())) {
        catmull->velocityPlace = &holder->velocity->curve;
        catmull->SetDirty();
    }
    return holder;
}

void Store(CPersistentObjBase& object, const std::string& file) {
    DB_File out;
    if (!out.Open(UT_FilePath(file.c_str()), DB_File::Mode::Write))
        throw QmsFailure("unable to write " + file);
    DB_Archive archive(&out, true);
    if (!archive.WriteTyped(object))
        throw QmsFailure("this kind cannot be stored");
    out.Close();
}

// ---- Frames and output. ----

struct FrameRange {
    double first = 0.0;
    double last = 0.0;
    double step = 1.0;
    size_t Count() const { return static_cast<size_t>(std::floor((last - first) / step + 1e-9)) + 1; }
    double At(size_t i) const { return first + static_cast<double>(i) * step; }
};

FrameRange ParseFrames(const QmsArgs& args, double defaultFirst, double defaultLast) {
    FrameRange range{defaultFirst, std::max(defaultFirst, defaultLast), 1.0};
    if (auto frames = args.Option("frames")) {
        const size_t dots = frames->find("..");
        if (dots == std::string::npos)
            throw QmsUsageError("--frames takes A..B, not '" + *frames + "'");
        range.first = static_cast<double>(QmsArgs::ParseInt(frames->substr(0, dots), "the first frame"));
        range.last = static_cast<double>(QmsArgs::ParseInt(frames->substr(dots + 2), "the last frame"));
        if (range.last < range.first)
            throw QmsUsageError("--frames needs A <= B");
    }
    if (auto step = args.Option("step")) {
        range.step = QmsArgs::ParseDouble(*step, "the step");
        if (!(range.step > 0.0))
            throw QmsUsageError("the step must be above 0");
    }
    if ((range.last - range.first) / range.step > 1e6)
        throw QmsUsageError("more than a million frames asked for");
    return range;
}

std::string Num(double v) {
    std::ostringstream s;
    s << std::setprecision(10) << v;
    return s.str();
}

// Maps curve or scene coordinates into an SVG canvas of fixed size, y upward.
class SvgCanvas {
public:
    SvgCanvas(double minX, double minY, double maxX, double maxY) {
        if (!(maxX > minX)) {
            minX -= 1.0;
            maxX += 1.0;
        }
        if (!(maxY > minY)) {
            minY -= 1.0;
            maxY += 1.0;
        }
        minX_ = minX;
        minY_ = minY;
        scaleX_ = (kWidth - 2 * kMargin) / (maxX - minX);
        scaleY_ = (kHeight - 2 * kMargin) / (maxY - minY);
        out_ << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << kWidth << "\" height=\"" << kHeight
             << "\" viewBox=\"0 0 " << kWidth << " " << kHeight << "\">\n"
             << "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n";
    }
    double X(double x) const { return kMargin + (x - minX_) * scaleX_; }
    double Y(double y) const { return kHeight - kMargin - (y - minY_) * scaleY_; }
    void Polyline(const std::vector<std::pair<double, double>>& points, const char* colour, double width) {
        out_ << "<polyline fill=\"none\" stroke=\"" << colour << "\" stroke-width=\"" << width
             << "\" points=\"";
        for (const auto& [x, y] : points)
            out_ << Num(X(x)) << "," << Num(Y(y)) << " ";
        out_ << "\"/>\n";
    }
    void Line(double x0, double y0, double x1, double y1, const char* colour) {
        out_ << "<line x1=\"" << Num(X(x0)) << "\" y1=\"" << Num(Y(y0)) << "\" x2=\"" << Num(X(x1))
             << "\" y2=\"" << Num(Y(y1)) << "\" stroke=\"" << colour << "\"/>\n";
    }
    void Circle(double x, double y, double radius, const char* fill) {
        out_ << "<circle cx=\"" << Num(X(x)) << "\" cy=\"" << Num(Y(y)) << "\" r=\"" << radius << "\" fill=\""
             << fill << "\" stroke=\"black\"/>\n";
    }
    void Square(double x, double y, const char* fill) {
        out_ << "<rect x=\"" << Num(X(x) - 3) << "\" y=\"" << Num(Y(y) - 3)
             << "\" width=\"6\" height=\"6\" fill=\"" << fill << "\" stroke=\"black\"/>\n";
    }
    void Save(const std::string& file) {
        out_ << "</svg>\n";
        std::ofstream svg(file, std::ios::binary);
        svg << out_.str();
        if (!svg.flush())
            throw QmsFailure("unable to write " + file);
    }

private:
    static constexpr double kWidth = 800.0;
    static constexpr double kHeight = 500.0;
    static constexpr double kMargin = 20.0;
    std::ostringstream out_;
    double minX_ = 0.0, minY_ = 0.0, scaleX_ = 1.0, scaleY_ = 1.0;
};

// The curve drawn densely, its keys as circles, its handles as squares tied to their keys.
void DrawCurve(CFunctionBase& curve, const FrameRange& range, const std::string& file) {
    const auto& keys = curve.GetKeys();
    const double x0 = std::min(range.first, keys.empty() ? range.first : keys.front()->x);
    const double x1 = std::max(range.last, keys.empty() ? range.last : keys.back()->x);
    std::vector<std::pair<double, double>> line;
    const int samples = 2000;
    for (int i = 0; i <= samples; ++i) {
        const double x = x0 + (x1 - x0) * i / samples;
        line.emplace_back(x, curve.Evaluate(x));
    }
    const int n = static_cast<int>(keys.size());
    auto visibleHandle = [n](int key, bool in) { return in ? key > 0 : key + 1 < n; };
    double minY = 0.0, maxY = 0.0;
    bool first = true;
    auto widen = [&](double y) {
        minY = first ? y : std::min(minY, y);
        maxY = first ? y : std::max(maxY, y);
        first = false;
    };
    for (const auto& point : line)
        widen(point.second);
    for (int i = 0; i < n; ++i) {
        for (bool in : {true, false}) {
            CUIControlPoint* handle = in ? keys[static_cast<size_t>(i)]->GetInHandle()
                                         : keys[static_cast<size_t>(i)]->GetOutHandle();
            if (handle && visibleHandle(i, in))
                widen(handle->y);
        }
    }
    SvgCanvas svg(x0, minY, x1, maxY);
    svg.Polyline(line, "#1f5fbf", 2.0);
    for (int i = 0; i < n; ++i) {
        CFunctionPoint& key = *keys[static_cast<size_t>(i)];
        for (bool in : {true, false}) {
            CUIControlPoint* handle = in ? key.GetInHandle() : key.GetOutHandle();
            if (!handle || !visibleHandle(i, in))
                continue;
            svg.Line(key.x, key.y, handle->x, handle->y, "#888888");
            svg.Square(handle->x, handle->y, "#f0c020");
        }
        svg.Circle(key.x, key.y, 5.0, "#d03030");
    }
    svg.Save(file);
}

// The path seen from the front (x to the right, y upward): its samples, its keys
// (filled when locked in time) and one dot per evaluated frame.
void DrawPath(C3DFunction& path, const std::vector<C3DPoint>& positions, const std::string& file) {
    path.Discretize(0);
    std::vector<std::pair<double, double>> line;
    for (const C3DCurvePoint& sample : path.GetCache().Samples())
        line.emplace_back(sample.x, sample.y);
    double minX = 0.0, minY = 0.0, maxX = 0.0, maxY = 0.0;
    bool first = true;
    auto widen = [&](double x, double y) {
        minX = first ? x : std::min(minX, x);
        maxX = first ? x : std::max(maxX, x);
        minY = first ? y : std::min(minY, y);
        maxY = first ? y : std::max(maxY, y);
        first = false;
    };
    for (const auto& [x, y] : line)
        widen(x, y);
    for (const auto& key : path.GetKeys())
        widen(key->x, key->y);
    for (const C3DPoint& p : positions)
        widen(p.x, p.y);
    SvgCanvas svg(minX, minY, maxX, maxY);
    svg.Polyline(line, "#1f5fbf", 2.0);
    for (const C3DPoint& p : positions)
        svg.Circle(p.x, p.y, 2.0, "#30a030");
    for (const auto& key : path.GetKeys())
        svg.Circle(key->x, key->y, 5.0, key->lockedInTime ? "#d03030" : "white");
    svg.Save(file);
}

const char* CurveKind(const CFunctionBase& curve) {
    if (dynamic_cast<const CSpline*>(&curve))
        return "spline";
    if (dynamic_cast<const CVelocityBased*>(&curve))
        return "velocity";
    return "interpolation";
}

void CheckSubcommand(const QmsArgs& args) {
    if (args.At(0, "sub-command (eval)") != "eval")
        throw QmsUsageError("unknown sub-command '" + args.At(0, "") + "'");
}

} // namespace

int QmsRunCurve(QmsContext& context, const std::vector<std::string>& words) {
    QmsArgs args(words, {"frames", "step", "svg", "store"});
    args.Check(2, 2);
    CheckSubcommand(args);
    std::unique_ptr<CurveHolder> holder = LoadCurve(args.At(1, "FILE|JSON"));
    CFunctionBase& curve = *holder->curve;
    const auto& keys = curve.GetKeys();
    const FrameRange range = ParseFrames(args, keys.empty() ? 0.0 : std::trunc(keys.front()->x),
                                         keys.empty() ? 0.0 : std::trunc(keys.back()->x));
    if (auto file = args.Option("store"))
        Store(curve, *file);
    if (auto file = args.Option("svg"))
        DrawCurve(curve, range, *file);
    if (context.json) {
        QmsJson json(context.out);
        json.BeginObject().Field("kind", CurveKind(curve)).Field("keys", curve.KeyCount());
        json.Key("frames").BeginArray();
        for (size_t i = 0; i < range.Count(); ++i) {
            const double frame = range.At(i);
            json.BeginObject().Field("frame", frame).Field("value", curve.Evaluate(frame)).EndObject();
        }
        json.EndArray().EndObject();
        context.out << "\n";
    } else {
        context.out << "frame,value\n";
        for (size_t i = 0; i < range.Count(); ++i) {
            const double frame = range.At(i);
            context.out << Num(frame) << "," << Num(curve.Evaluate(frame)) << "\n";
        }
    }
    return 0;
}

int QmsRunPath(QmsContext& context, const std::vector<std::string>& words) {
    QmsArgs args(words, {"frames", "step", "svg", "store", "velocity"});
    args.Check(2, 2);
    CheckSubcommand(args);
    std::unique_ptr<PathHolder> holder = LoadPath(args.At(1, "FILE|JSON"), args.Option("velocity"));
    C3DFunction& path = *holder->path;
    const auto& keys = path.GetKeys();
    const FrameRange range = ParseFrames(args, keys.empty() ? 0.0 : std::trunc(keys.front()->frame),
                                         keys.empty() ? 0.0 : std::trunc(keys.back()->frame));
    if (auto file = args.Option("store"))
        Store(path, *file);
    std::vector<C3DPoint> positions;
    for (size_t i = 0; i < range.Count(); ++i)
        positions.push_back(path.Evaluate(range.At(i)));
    if (auto file = args.Option("svg"))
        DrawPath(path, positions, *file);
    if (context.json) {
        QmsJson json(context.out);
        json.BeginObject()
            .Field("kind", dynamic_cast<CCatmullCurve*>(&path) ? "catmull" : "linear")
            .Field("keys", path.KeyCount());
        json.Key("frames").BeginArray();
        for (size_t i = 0; i < positions.size(); ++i) {
            json.BeginObject()
                .Field("frame", range.At(i))
                .Field("x", static_cast<double>(positions[i].x))
                .Field("y", static_cast<double>(positions[i].y))
                .Field("z", static_cast<double>(positions[i].z))
                .EndObject();
        }
        json.EndArray().EndObject();
        context.out << "\n";
    } else {
        context.out << "frame,x,y,z\n";
        for (size_t i = 0; i < positions.size(); ++i)
            context.out << Num(range.At(i)) << "," << Num(positions[i].x) << "," << Num(positions[i].y) << ","
                        << Num(positions[i].z) << "\n";
    }
    return 0;
}
