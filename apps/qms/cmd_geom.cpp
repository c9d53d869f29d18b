// qms geom: a developer's window on the geometry kernel. Reads points or paths as JSON,
// fits, intersects or flattens them, and prints the result as text or JSON, with an
// optional SVG picture of input and result.
//
// Input: a list of points [[x, y], ...], or {"paths": [...]} where each path is a list
// of points (straight edges) or {"points": [[x, y], ...], "knots": [0, 3, ...]}.

#include "QmsCommands.h"
#include "QmsJsonValue.h"
#include "vector/GR_BezierFlattener.h"
#include "vector/GR_BezierPath2d.h"
#include "vector/GR_BezierPath2dFitter.h"

#include <cmath>
#include <fstream>
#include <iomanip>
#include <memory>
#include <sstream>

namespace {

GR_Point2d ReadPoint(const QmsJsonValue& v) {
    if (v.type != QmsJsonValue::Type::Array || v.items.size() != 2 ||
        v.items[0].type != QmsJsonValue::Type::Number || v.items[1].type != QmsJsonValue::Type::Number)
        throw QmsFailure("a point must be [x, y] with two numbers");
    return {v.items[0].number, v.items[1].number};
}

GR_BezierPath2d ReadPath(const QmsJsonValue& v) {
    const QmsJsonValue* pointList = &v;
    const QmsJsonValue* knotList = nullptr;
    if (v.type == QmsJsonValue::Type::Object) {
        pointList = v.Find("points");
        if (!pointList)
            throw QmsFailure("a path object needs \"points\"");
        knotList = v.Find("knots");
    }
    if (pointList->type != QmsJsonValue::Type::Array)
        throw QmsFailure("a path must be a list of points");
    std::vector<GR_Point2d> points;
    for (const QmsJsonValue& p : pointList->items)
        points.push_back(ReadPoint(p));
    if (points.size() > GR_BezierPath2d::kMaxPoints)
        throw QmsFailure("a path holds at most 65536 points");
    GR_BezierPath2d path = GR_BezierPath2d::Polyline(points);
    if (knotList) {
        if (knotList->type != QmsJsonValue::Type::Array)
            throw QmsFailure("\"knots\" must be a list of point indices");
        path.step = 0;
        path.knots.clear();
        for (const QmsJsonValue& k : knotList->items) {
            const double index = k.number;
            const double previous = path.knots.empty() ? -1.0 : path.knots.back();
            if (k.type != QmsJsonValue::Type::Number || index != std::floor(index) || index <= previous ||
                index >= static_cast<double>(points.size()) || (previous >= 0.0 && index - previous > 3.0))
                throw QmsFailure("knots must be increasing point indices at most 3 apart");
            path.knots.push_back(static_cast<uint16_t>(index));
        }
        if (!points.empty() &&
            (path.knots.empty() || path.knots.front() != 0 || path.knots.back() + 1u != points.size()))
            throw QmsFailure("the first and last points must be knots");
        path.CompressKnots();
    }
    return path;
}

std::vector<GR_BezierPath2d> ReadInput(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw QmsFailure("cannot read " + file);
    std::stringstream buffer;
    buffer << in.rdbuf();
    const std::string text = buffer.str();
    const QmsJsonValue document = QmsJsonValue::Parse(text);
    std::vector<GR_BezierPath2d> paths;
    if (document.type == QmsJsonValue::Type::Object) {
        const QmsJsonValue* list = document.Find("paths");
        if (!list || list->type != QmsJsonValue::Type::Array)
            throw QmsFailure("the input object needs a \"paths\" list");
        for (const QmsJsonValue& p : list->items)
            paths.push_back(ReadPath(p));
    } else {
        paths.push_back(ReadPath(document));
    }
    return paths;
}

void WritePath(QmsJson& json, const GR_BezierPath2d& path) {
    json.BeginObject().Key("points").BeginArray();
    for (size_t i = 0; i < path.points.size(); ++i)
        json.BeginArray().Value(path.Point(i).x).Value(path.Point(i).y).EndArray();
    json.EndArray().Key("knots").BeginArray();
    for (size_t k = 0; k < path.KnotCount(); ++k)
        json.Value(static_cast<int64_t>(path.KnotPoint(k)));
    json.EndArray().EndObject();
}

// An SVG picture in drawing coordinates (y up): inputs in grey, results in colour, hits
// as red rings.
class SvgPicture {
public:
    void AddPath(const GR_BezierPath2d& path, const char* colour) {
        std::ostringstream d;
        d << std::setprecision(10);
        for (size_t i = 0; i < path.SegmentCount(); ++i) {
            GR_Bezier2d s;
            path.Segment(i, s);
            if (i == 0)
                d << "M" << s.control[0].x << "," << s.control[0].y;
            d << (s.degree == 1 ? " L" : s.degree == 2 ? " Q" : " C");
            for (uint32_t k = 1; k <= s.degree; ++k)
                d << " " << s.control[k].x << "," << s.control[k].y;
            for (uint32_t k = 0; k <= s.degree; ++k)
                box_.Add(s.control[k]);
        }
        shapes_.push_back("<path d=\"" + d.str() + "\" fill=\"none\" stroke=\"" + colour +
                          "\" stroke-width=\"W1\"/>");
    }
    void AddPolyline(const std::vector<GR_Point2d>& points, const char* colour) {
        std::ostringstream d;
        d << std::setprecision(10);
        for (const GR_Point2d& p : points) {
            d << p.x << "," << p.y << " ";
            box_.Add(p);
        }
        shapes_.push_back("<polyline points=\"" + d.str() + "\" fill=\"none\" stroke=\"" + colour +
                          "\" stroke-width=\"W1\"/>");
        for (const GR_Point2d& p : points)
            shapes_.push_back("<circle cx=\"" + Number(p.x) + "\" cy=\"" + Number(p.y) +
                              "\" r=\"W2\" fill=\"" + colour + "\"/>");
    }
    void AddMark(const GR_Point2d& p) {
        box_.Add(p);
        shapes_.push_back("<circle cx=\"" + Number(p.x) + "\" cy=\"" + Number(p.y) +
                          "\" r=\"W4\" fill=\"none\" stroke=\"red\" stroke-width=\"W1\"/>");
    }
    void Save(const std::string& file) const {
        const double w = box_.empty ? 1.0 : std::max(box_.xmax - box_.xmin, 1e-6);
        const double h = box_.empty ? 1.0 : std::max(box_.ymax - box_.ymin, 1e-6);
        const double margin = 0.05 * std::max(w, h), unit = std::max(w, h) / 400.0;
        std::ofstream out(file);
        if (!out)
            throw QmsFailure("cannot write " + file);
        out << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"800\" height=\""
            << static_cast<int>(800.0 * (h + 2 * margin) / (w + 2 * margin)) << "\" viewBox=\""
            << Number(box_.xmin - margin) << " " << Number(-box_.ymax - margin) << " "
            << Number(w + 2 * margin) << " " << Number(h + 2 * margin)
            << "\">\n<g transform=\"scale(1,-1)\">\n";
        for (std::string shape : shapes_) {
            for (const auto& [key, factor] : {std::pair{"W1", 1.0}, {"W2", 1.5}, {"W4", 4.0}}) {
                const size_t at = shape.find(key);
                if (at != std::string::npos)
                    shape.replace(at, 2, Number(unit * factor));
            }
            out << shape << "\n";
        }
        out << "</g>\n</svg>\n";
        if (!out)
            throw QmsFailure("cannot write " + file);
    }

private:
    static std::string Number(double v) {
        std::ostringstream s;
        s << std::setprecision(10) << v;
        return s.str();
    }
    GR_Box2d box_;
    std::vector<std::string> shapes_;
};

// Raw points as dots on their polyline, curves as they are.
void AddInput(SvgPicture& svg, const GR_BezierPath2d& path) {
    if (path.step != 1) {
        svg.AddPath(path, "#bbbbbb");
        return;
    }
    std::vector<GR_Point2d> points;
    for (size_t i = 0; i < path.points.size(); ++i)
        points.push_back(path.Point(i));
    svg.AddPolyline(points, "#bbbbbb");
}

const char* kColours[] = {"#1f77b4", "#2ca02c", "#9467bd", "#ff7f0e", "#17becf"};

int Fit(QmsContext& context, const std::vector<GR_BezierPath2d>& paths, const QmsArgs& args,
        SvgPicture* svg) {
    const double tolerance =
        args.Option("tolerance") ? QmsArgs::ParseDouble(*args.Option("tolerance"), "tolerance") : 1.0;
    if (!(tolerance > 0.0))
        throw QmsUsageError("tolerance must be above 0");
    const GR_BezierPath2dFitter fitter(tolerance);
    QmsJson json(context.out);
    if (context.json)
        json.BeginObject().Field("tolerance", tolerance).Key("paths").BeginArray();
    for (size_t i = 0; i < paths.size(); ++i) {
        GR_BezierPath2d fitted;
        if (!fitter.Fit(paths[i], fitted))
            throw QmsFailure("path " + std::to_string(i) + " fits to more than 65536 points; split it first");
        if (svg) {
            AddInput(*svg, paths[i]);
            svg->AddPath(fitted, kColours[i % 5]);
        }
        if (context.json) {
            WritePath(json, fitted);
        } else {
            context.out << "path " << i << ": " << paths[i].points.size() << " points -> "
                        << fitted.SegmentCount() << " segments\n";
            for (size_t k = 0; k < fitted.points.size(); ++k)
                context.out << "  " << fitted.Point(k).x << " " << fitted.Point(k).y << "\n";
        }
    }
    if (context.json)
        json.EndArray().EndObject();
    context.out << (context.json ? "\n" : "");
    return 0;
}

int Intersect(QmsContext& context, const std::vector<GR_BezierPath2d>& paths, SvgPicture* svg) {
    QmsJson json(context.out);
    if (context.json)
        json.BeginObject().Key("hits").BeginArray();
    size_t count = 0;
    for (size_t i = 0; i < paths.size(); ++i) {
        if (svg)
            svg->AddPath(paths[i], kColours[i % 5]);
        for (size_t j = i; j < paths.size(); ++j) {
            std::vector<GR_PathHit> hits;
            paths[i].IntersectAll(paths[j], i == j, hits);
            for (const GR_PathHit& hit : hits) {
                ++count;
                if (svg)
                    svg->AddMark(hit.firstPoint);
                if (context.json) {
                    json.BeginObject()
                        .Field("first", static_cast<int64_t>(i))
                        .Field("second", static_cast<int64_t>(j))
                        .Key("point")
                        .BeginArray()
                        .Value(hit.firstPoint.x)
                        .Value(hit.firstPoint.y)
                        .EndArray()
                        .Field("firstParameter", hit.firstParameter)
                        .Field("secondParameter", hit.secondParameter)
                        .EndObject();
                } else {
                    context.out << "paths " << i << " and " << j << " meet at " << hit.firstPoint.x << " "
                                << hit.firstPoint.y << " (t " << hit.firstParameter << ", "
                                << hit.secondParameter << ")\n";
                }
            }
        }
    }
    if (context.json)
        json.EndArray().Field("count", static_cast<int64_t>(count)).EndObject();
    else
        context.out << count << " hits\n";
    context.out << (context.json ? "\n" : "");
    return 0;
}

int Flatten(QmsContext& context, const std::vector<GR_BezierPath2d>& paths, const QmsArgs& args,
            SvgPicture* svg) {
    const double scale = args.Option("scale") ? QmsArgs::ParseDouble(*args.Option("scale"), "scale") : 1.0;
    if (!(scale > 0.0))
        throw QmsUsageError("scale must be above 0");
    const GR_BezierFlattener flattener(scale);
    QmsJson json(context.out);
    if (context.json)
        json.BeginObject().Field("scale", scale).Key("polylines").BeginArray();
    for (size_t i = 0; i < paths.size(); ++i) {
        std::vector<GR_Point2d> line;
        flattener.FlattenPath(paths[i], line);
        if (svg) {
            AddInput(*svg, paths[i]);
            svg->AddPolyline(line, kColours[i % 5]);
        }
        if (context.json) {
            json.BeginArray();
            for (const GR_Point2d& p : line)
                json.BeginArray().Value(p.x).Value(p.y).EndArray();
            json.EndArray();
        } else {
            context.out << "path " << i << ": " << line.size() << " points\n";
            for (const GR_Point2d& p : line)
                context.out << "  " << p.x << " " << p.y << "\n";
        }
    }
    if (context.json)
        json.EndArray().EndObject();
    context.out << (context.json ? "\n" : "");
    return 0;
}

} // namespace

int QmsRunGeom(QmsContext& context, const std::vector<std::string>& words) {
    QmsArgs args(words, {"tolerance", "scale", "svg"});
    args.Check(2, 2);
    const std::string action = args.At(0, "ACTION");
    if (action != "fit" && action != "intersect" && action != "flatten")
        throw QmsUsageError("ACTION must be fit, intersect or flatten, not '" + action + "'");
    const std::vector<GR_BezierPath2d> paths = ReadInput(args.At(1, "INPUT"));
    std::unique_ptr<SvgPicture> svg;
    if (args.Option("svg"))
        svg = std::make_unique<SvgPicture>();
    int result = 0;
    if (action == "fit")
        result = Fit(context, paths, args, svg.get());
    else if (action == "intersect")
        result = Intersect(context, paths, svg.get());
    else
        result = Flatten(context, paths, args, svg.get());
    if (svg)
        svg->Save(*args.Option("svg"));
    return result;
}
