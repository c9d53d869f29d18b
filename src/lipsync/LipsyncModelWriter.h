#pragma once

#include <vector>

// One Gaussian of a mixture: weight, mean and the full symmetric inverse covariance
// (n x n, row-major).
struct LipsyncGaussian {
    float weight = 1.0f;
    std::vector<float> mean;
    std::vector<float> inverse;
};

// One emitting state: per stream its mixture and the stream weights.
struct LipsyncStateModel {
    std::vector<float> streamWeights;
    std::vector<std::vector<LipsyncGaussian>> streams;
};

// A whole model in the shape of the program's mouth models.
struct LipsyncModelParams {
    std::vector<int> widths;                     // stream widths
    std::vector<LipsyncStateModel> states;       // the emitting states, 2 .. N - 1
    std::vector<std::vector<float>> transitions; // N x N probabilities
};

// The bytes of a model file: every symbol and number one little-endian float, with the
// Gaussian constants computed from the inverse covariances.
std::vector<unsigned char> LipsyncWriteModel(const LipsyncModelParams& model);

// n ln(2 pi) - ln |inverse|, or a huge value when the matrix is singular.
float LipsyncGConst(const std::vector<float>& inverse, int n);
