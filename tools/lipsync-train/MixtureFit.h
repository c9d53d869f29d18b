#pragma once

#include <random>
#include <vector>

// Gaussian mixtures with full covariances, fitted by k-means and EM in double precision.

constexpr int kMixtures = 7;

// One full-covariance Gaussian.
struct Gaussian {
    double weight = 0;
    std::vector<double> mean, inverse; // inverse is d x d
    double gconst = 0;                 // d ln(2 pi) + ln |covariance|
};

struct Mixture {
    int dim = 0;
    std::vector<Gaussian> parts;
    // ln of the mixture density at x (dim floats).
    double logLikelihood(const float* x) const;
    // ln of one component's density at x, without its weight.
    double logDensity(const Gaussian& g, const float* x) const;
};

// Inverse and log determinant of a symmetric positive definite n x n matrix by Cholesky;
// false when it is not positive definite.
bool InvertSpd(const std::vector<double>& a, int n, std::vector<double>& inverse, double& logDet);

// How covariances are kept well conditioned. Correlations are always shrunk towards zero,
// more for components with few frames. Each variance is drawn towards the pooled variance
// of all the data as if `priorFrames` frames had it, and floored at `floor` times it.
struct FitSettings {
    double priorFrames = 16.0;
    double floor = 0.02;
};

// Fits a mixture of kMixtures Gaussians to `data` (pointers to d floats): from `start`
// when given, else from k-means++ seeds and Lloyd steps; then `emSteps` EM steps.
Mixture FitMixture(const std::vector<const float*>& data, int d, const Mixture* start, std::mt19937& random,
                   int emSteps, const FitSettings& settings = FitSettings());
