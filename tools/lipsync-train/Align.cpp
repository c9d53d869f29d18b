#include "Align.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {
constexpr double kNever = -std::numeric_limits<double>::infinity();
} // namespace

double ShapeModel::emission(int state, const Frame& frame) const {
    double total = 0;
    for (int s = 0; s < 4; ++s)
        total += states[size_t(state)][size_t(s)].logLikelihood(frame.data() + kStreamOffsets[s]);
    return total;
}

std::vector<LabelRun> RunsOfLabels(const std::vector<int>& labels, const std::vector<bool>& breaks) {
    std::vector<LabelRun> runs;
    for (size_t t = 0; t < labels.size();) {
        size_t e = t + 1;
        while (e < labels.size() && labels[e] == labels[t] && !(e < breaks.size() && breaks[e]))
            ++e;
        runs.push_back({labels[t], t, e});
        t = e;
    }
    return runs;
}

void AlignSegment(const ShapeModel& model, const Frame* frames, size_t count, std::vector<int>& states) {
    states.assign(count, 0);
    if (count < size_t(kShapeStates)) {
        for (size_t t = 0; t < count; ++t)
            states[t] = int(t * kShapeStates / count);
        return;
    }
    std::vector<std::array<double, kShapeStates>> score(count);
    std::vector<std::array<int, kShapeStates>> from(count);
    for (int j = 0; j < kShapeStates; ++j)
        score[0][size_t(j)] = j == 0 ? model.emission(0, frames[0]) : kNever;
    for (size_t t = 1; t < count; ++t)
        for (int j = 0; j < kShapeStates; ++j) {
            const double stay = score[t - 1][size_t(j)] + std::log(model.selfLoop[size_t(j)]);
            const double move =
                j > 0 ? score[t - 1][size_t(j - 1)] + std::log(1 - model.selfLoop[size_t(j - 1)]) : kNever;
            const double best = std::max(stay, move);
            score[t][size_t(j)] = best == kNever ? kNever : best + model.emission(j, frames[t]);
            from[t][size_t(j)] = stay >= move ? j : j - 1;
        }
    int j = kShapeStates - 1;
    for (size_t t = count; t-- > 0;) {
        states[t] = j;
        if (t > 0)
            j = from[t][size_t(j)];
    }
}

bool AlignUtterance(const std::vector<ShapeModel>& models, const std::vector<Frame>& frames,
                    const std::vector<LabelRun>& runs, int band, std::vector<AlignedFrame>& path) {
    const size_t count = frames.size();
    const size_t states = runs.size() * kShapeStates;
    if (count < states || states == 0)
        return false;
    // Per state: the frames it may take, its own shape and state, and its transitions.
    std::vector<size_t> low(states), high(states);
    std::vector<double> stay(states), leave(states);
    for (size_t s = 0; s < states; ++s) {
        const LabelRun& run = runs[s / kShapeStates];
        low[s] = run.begin > size_t(band) ? run.begin - size_t(band) : 0;
        high[s] = std::min(count, run.end + size_t(band));
        const double loop = models[size_t(run.shape)].selfLoop[s % kShapeStates];
        stay[s] = std::log(loop);
        leave[s] = std::log(1.0 - loop);
    }
    std::vector<double> previous(states, kNever), current(states, kNever);
    std::vector<uint8_t> moved(count * states, 0); // 1: entered from the state before
    auto emit = [&](size_t s, size_t t) {
        const LabelRun& run = runs[s / kShapeStates];
        return models[size_t(run.shape)].emission(int(s % kShapeStates), frames[t]);
    };
    // The states that may hold frame t form one stretch, since the runs are in order.
    size_t first = 0;
    if (low[0] == 0)
        previous[0] = emit(0, 0);
    for (size_t t = 1; t < count; ++t) {
        while (first < states && high[first] <= t)
            ++first;
        std::fill(current.begin(), current.end(), kNever);
        for (size_t s = first; s < states && low[s] <= t; ++s) {
            const double keep = previous[s] + stay[s];
            const double enter = s > 0 ? previous[s - 1] + leave[s - 1] : kNever;
            if (keep == kNever && enter == kNever)
                continue;
            moved[t * states + s] = enter > keep ? 1 : 0;
            current[s] = std::max(keep, enter) + emit(s, t);
        }
        std::swap(previous, current);
    }
    if (previous[states - 1] == kNever)
        return false;
    path.assign(count, AlignedFrame{});
    size_t s = states - 1;
    for (size_t t = count; t-- > 0;) {
        path[t] = {uint8_t(runs[s / kShapeStates].shape), uint8_t(s % kShapeStates)};
        if (t > 0 && moved[t * states + s] != 0)
            --s;
    }
    return true;
}
