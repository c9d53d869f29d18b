#include "Align.h"
#include "MixtureFit.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

// A single Gaussian on one value of stream 1 (identity inverse covariance); the other
// streams are the same for every model, so only c1 tells the models apart.
Mixture Spike(int width, double c1) {
    Mixture m;
    m.dim = width;
    Gaussian g;
    g.weight = 1.0;
    g.mean.assign(size_t(width), 0.0);
    g.mean[0] = c1;
    g.inverse.assign(size_t(width * width), 0.0);
    for (int i = 0; i < width; ++i)
        g.inverse[size_t(i * width + i)] = 1.0;
    g.gconst = width * 1.8378770664093453;
    m.parts.push_back(g);
    return m;
}

// A shape whose three states sit on c1 values `a`, `b` and `c`.
ShapeModel Shape(double a, double b, double c) {
    ShapeModel model;
    const double centres[3] = {a, b, c};
    for (int j = 0; j < kShapeStates; ++j)
        for (int s = 0; s < 4; ++s)
            model.states[size_t(j)][size_t(s)] = Spike(kStreamWidths[s], s == 0 ? centres[j] : 0.0);
    return model;
}

std::vector<Frame> Frames(const std::vector<std::pair<float, int>>& stretches) {
    std::vector<Frame> frames;
    for (auto [c1, count] : stretches)
        for (int i = 0; i < count; ++i) {
            Frame f{};
            f[0] = c1;
            frames.push_back(f);
        }
    return frames;
}

std::string Shapes(const std::vector<AlignedFrame>& path) {
    std::string text;
    for (const AlignedFrame& a : path)
        text += char('A' + a.shape);
    return text;
}

} // namespace

TEST(TrainingAlign, RunsOfLabels) {
    const std::vector<LabelRun> runs = RunsOfLabels({7, 7, 1, 1, 1, 7, 2});
    ASSERT_EQ(runs.size(), 4u);
    EXPECT_EQ(runs[0].shape, 7);
    EXPECT_EQ(runs[1].begin, 2u);
    EXPECT_EQ(runs[1].end, 5u);
    EXPECT_EQ(runs[3].shape, 2);
    EXPECT_EQ(runs[3].end, 7u);
    EXPECT_TRUE(RunsOfLabels({}).empty());
    // Breaks start new runs of the same label; a break where the label changes anyway, or
    // a short list of breaks, changes nothing.
    const std::vector<LabelRun> split = RunsOfLabels({1, 1, 1, 1, 2, 2}, {false, false, true, false, true});
    ASSERT_EQ(split.size(), 3u);
    EXPECT_EQ(split[0].end, 2u);
    EXPECT_EQ(split[1].begin, 2u);
    EXPECT_EQ(split[1].end, 4u);
    EXPECT_EQ(split[2].begin, 4u);
}

TEST(TrainingAlign, SegmentFollowsTheStatesOfItsModel) {
    const ShapeModel model = Shape(0, 5, 10);
    const std::vector<Frame> frames = Frames({{0, 3}, {5, 2}, {10, 4}});
    std::vector<int> states;
    AlignSegment(model, frames.data(), frames.size(), states);
    EXPECT_EQ(states, (std::vector<int>{0, 0, 0, 1, 1, 2, 2, 2, 2}));
    // Frames that all look like the last state still visit the first two.
    const std::vector<Frame> late = Frames({{10, 5}});
    AlignSegment(model, late.data(), late.size(), states);
    EXPECT_EQ(states, (std::vector<int>{0, 1, 2, 2, 2}));
    // Fewer frames than states are spread evenly.
    AlignSegment(model, late.data(), 2, states);
    EXPECT_EQ(states, (std::vector<int>{0, 1}));
}

TEST(TrainingAlign, UtteranceBoundariesMoveWithinTheBand) {
    const std::vector<ShapeModel> models = {Shape(0, 0, 0), Shape(10, 10, 10)};
    const std::vector<Frame> frames = Frames({{0, 10}, {10, 10}});
    // The labels put the change three frames late.
    const std::vector<LabelRun> runs = {{0, 0, 13}, {1, 13, 20}};
    std::vector<AlignedFrame> path;
    ASSERT_TRUE(AlignUtterance(models, frames, runs, 4, path));
    EXPECT_EQ(Shapes(path), "AAAAAAAAAABBBBBBBBBB");
    for (size_t t = 1; t < path.size(); ++t)
        if (path[t].shape == path[t - 1].shape) {
            EXPECT_GE(path[t].state, path[t - 1].state) << t;
        }
    EXPECT_EQ(path.front().state, 0);
    EXPECT_EQ(path.back().state, 2);
    // A narrower band stops the boundary as close as it may come.
    ASSERT_TRUE(AlignUtterance(models, frames, runs, 2, path));
    EXPECT_EQ(Shapes(path), "AAAAAAAAAAABBBBBBBBB");
}

TEST(TrainingAlign, EveryRunKeepsItsStatesAndImpossibleUtterancesAreLeftAlone) {
    const std::vector<ShapeModel> models = {Shape(0, 0, 0), Shape(10, 10, 10)};
    // The middle run's frames look like its neighbours, yet it keeps one frame per state.
    const std::vector<Frame> frames = Frames({{0, 12}});
    std::vector<AlignedFrame> path;
    ASSERT_TRUE(AlignUtterance(models, frames, {{0, 0, 4}, {1, 4, 8}, {0, 8, 12}}, 3, path));
    EXPECT_EQ(Shapes(path).find("BBB"), Shapes(path).find('B'));
    EXPECT_EQ(Shapes(path).rfind('B') - Shapes(path).find('B'), 2u);
    // Two runs need six frames; five cannot hold them.
    const std::vector<AlignedFrame> before(5, AlignedFrame{1, 1});
    path = before;
    EXPECT_FALSE(AlignUtterance(models, Frames({{0, 5}}), {{0, 0, 2}, {1, 2, 5}}, 3, path));
    EXPECT_EQ(Shapes(path), Shapes(before));
    // A band too narrow to let a short run take three frames has no path either.
    EXPECT_FALSE(AlignUtterance(models, Frames({{0, 10}}), {{0, 0, 5}, {1, 5, 6}, {0, 6, 10}}, 0, path));
}

TEST(TrainingMixture, FitFindsTheClustersAndTheirShares) {
    std::mt19937 random(5);
    std::normal_distribution<double> noise(0.0, 0.5);
    std::vector<std::array<float, 3>> points;
    for (int i = 0; i < 20000; ++i) {
        const double centre = i % 10 < 7 ? -4.0 : 6.0;
        points.push_back({float(centre + noise(random)), float(noise(random)), float(2 * noise(random))});
    }
    std::vector<const float*> data;
    for (const auto& p : points)
        data.push_back(p.data());
    const Mixture m = FitMixture(data, 3, nullptr, random, 5);
    ASSERT_EQ(m.parts.size(), size_t(kMixtures));
    double left = 0, right = 0, total = 0;
    for (const Gaussian& g : m.parts) {
        total += g.weight;
        (g.mean[0] < 1.0 ? left : right) += g.weight;
        EXPECT_TRUE(std::isfinite(g.gconst));
    }
    EXPECT_NEAR(total, 1.0, 1e-9);
    EXPECT_NEAR(left, 0.7, 0.03);
    EXPECT_NEAR(right, 0.3, 0.03);
    const float atCentre[3] = {-4, 0, 0}, between[3] = {1, 0, 0}, narrowStep[3] = {-4, 2, 0},
                wideStep[3] = {-4, 0, 2};
    EXPECT_GT(m.logLikelihood(atCentre), m.logLikelihood(between) + 10);
    // A step of 2 is four deviations along the second dimension (8 nats) and two along the
    // third (2 nats): the covariances follow each dimension's spread.
    EXPECT_NEAR(m.logLikelihood(atCentre) - m.logLikelihood(narrowStep), 8.0, 1.5);
    EXPECT_NEAR(m.logLikelihood(atCentre) - m.logLikelihood(wideStep), 2.0, 0.5);
}

TEST(TrainingMixture, DegenerateDataStaysInvertible) {
    std::mt19937 random(9);
    // Every point the same, and fewer points than components.
    std::vector<std::array<float, 8>> points(4, std::array<float, 8>{1, 2, 3, 4, 5, 6, 7, 8});
    std::vector<const float*> data;
    for (const auto& p : points)
        data.push_back(p.data());
    const Mixture m = FitMixture(data, 8, nullptr, random, 3);
    for (const Gaussian& g : m.parts) {
        EXPECT_TRUE(std::isfinite(g.gconst));
        std::vector<double> inverse;
        double logDet;
        EXPECT_TRUE(InvertSpd(g.inverse, 8, inverse, logDet));
    }
    EXPECT_TRUE(std::isfinite(m.logLikelihood(points[0].data())));
}
