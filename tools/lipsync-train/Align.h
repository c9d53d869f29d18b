#pragma once

#include "MixtureFit.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

// The models being trained and the Viterbi alignments that training runs on them.

// One analysis frame in stream order: c1-c8, d1-d8, a1-a8, then E, dE, aE.
using Frame = std::array<float, 27>;

constexpr int kShapeStates = 3; // emitting states per shape
constexpr int kStreamWidths[4] = {8, 8, 8, 3};
constexpr int kStreamOffsets[4] = {0, 8, 16, 24};

// One shape: three emitting states, left to right without skips, each a product of four
// stream mixtures.
struct ShapeModel {
    std::array<std::array<Mixture, 4>, kShapeStates> states;
    std::array<double, kShapeStates> selfLoop{0.6, 0.6, 0.6};
    double emission(int state, const Frame& frame) const;
};

// A labelled stretch of an utterance: frames [begin, end) of one shape.
struct LabelRun {
    int shape;
    size_t begin, end;
};

// The runs of equal labels. A frame whose `breaks` entry is true starts a new run even
// when its label is that of the frame before (a missing entry counts as false).
std::vector<LabelRun> RunsOfLabels(const std::vector<int>& labels, const std::vector<bool>& breaks = {});

// Best path of `count` frames through the states of one model, starting in its first
// state and ending in its last; writes the state of each frame. Fewer frames than states
// are spread evenly.
void AlignSegment(const ShapeModel& model, const Frame* frames, size_t count, std::vector<int>& states);

// Where a frame lies in an aligned utterance: the shape and its state.
struct AlignedFrame {
    uint8_t shape;
    uint8_t state;
};

// Forced alignment of a whole utterance through the concatenated models of its runs, in
// their order: every run keeps at least one frame per state, and its frames may lie at
// most `band` frames outside its labelled stretch. Returns false, leaving `path` as it
// was, when no path fits.
bool AlignUtterance(const std::vector<ShapeModel>& models, const std::vector<Frame>& frames,
                    const std::vector<LabelRun>& runs, int band, std::vector<AlignedFrame>& path);
