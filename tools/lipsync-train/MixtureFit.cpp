#include "MixtureFit.h"

#include <algorithm>
#include <cmath>

double Mixture::logLikelihood(const float* x) const {
    double best = -1e300, sum = 0;
    double scores[kMixtures];
    for (size_t k = 0; k < parts.size(); ++k) {
        scores[k] = std::log(std::max(parts[k].weight, 1e-300)) + logDensity(parts[k], x);
        best = std::max(best, scores[k]);
    }
    for (size_t k = 0; k < parts.size(); ++k)
        sum += std::exp(scores[k] - best);
    return best + std::log(sum);
}

double Mixture::logDensity(const Gaussian& g, const float* x) const {
    double d[8];
    for (int i = 0; i < dim; ++i)
        d[i] = double(x[i]) - g.mean[size_t(i)];
    double q = 0;
    for (int i = 0; i < dim; ++i) {
        double row = 0;
        for (int k = 0; k < dim; ++k)
            row += g.inverse[size_t(i * dim + k)] * d[k];
        q += d[i] * row;
    }
    return -0.5 * (g.gconst + q);
}

bool InvertSpd(const std::vector<double>& a, int n, std::vector<double>& inverse, double& logDet) {
    std::vector<double> l(size_t(n * n), 0.0);
    logDet = 0;
    for (int j = 0; j < n; ++j) {
        double s = a[size_t(j * n + j)];
        for (int k = 0; k < j; ++k)
            s -= l[size_t(j * n + k)] * l[size_t(j * n + k)];
        if (s <= 1e-12)
            return false;
        l[size_t(j * n + j)] = std::sqrt(s);
        logDet += std::log(s);
        for (int i = j + 1; i < n; ++i) {
            double t = a[size_t(i * n + j)];
            for (int k = 0; k < j; ++k)
                t -= l[size_t(i * n + k)] * l[size_t(j * n + k)];
            l[size_t(i * n + j)] = t / l[size_t(j * n + j)];
        }
    }
    inverse.assign(size_t(n * n), 0.0);
    for (int c = 0; c < n; ++c) {
        std::vector<double> y(size_t(n), 0.0), x(size_t(n), 0.0);
        for (int i = 0; i < n; ++i) {
            double s = i == c ? 1.0 : 0.0;
            for (int k = 0; k < i; ++k)
                s -= l[size_t(i * n + k)] * y[size_t(k)];
            y[size_t(i)] = s / l[size_t(i * n + i)];
        }
        for (int i = n - 1; i >= 0; --i) {
            double s = y[size_t(i)];
            for (int k = i + 1; k < n; ++k)
                s -= l[size_t(k * n + i)] * x[size_t(k)];
            x[size_t(i)] = s / l[size_t(i * n + i)];
        }
        for (int i = 0; i < n; ++i)
            inverse[size_t(i * n + c)] = x[size_t(i)];
    }
    return true;
}

namespace {

constexpr double kLog2Pi = 1.8378770664093453;

// Sets one component from weighted sums. The correlations are shrunk towards zero, more
// for components with few frames; the variances are drawn towards the pooled variances by
// `settings.priorFrames` frames of them and floored at a share of them, so that no
// covariance is singular.
void SetComponent(Gaussian& g, int d, double n, const std::vector<double>& sum,
                  const std::vector<double>& scatter, const std::vector<double>& pooledVar, double total,
                  const FitSettings& settings) {
    g.weight = std::max(n / total, 2e-5);
    g.mean.assign(size_t(d), 0.0);
    std::vector<double> cov(size_t(d * d), 0.0);
    const double count = std::max(n, 1e-9);
    for (int i = 0; i < d; ++i)
        g.mean[size_t(i)] = sum[size_t(i)] / count;
    const double shrink = std::min(1.0, 0.05 + 4.0 * d / (count + 1.0));
    for (int i = 0; i < d; ++i)
        for (int k = 0; k < d; ++k) {
            double c = scatter[size_t(i * d + k)] / count - g.mean[size_t(i)] * g.mean[size_t(k)];
            if (i != k)
                c *= 1.0 - shrink;
            cov[size_t(i * d + k)] = c;
        }
    for (int i = 0; i < d; ++i) {
        double& v = cov[size_t(i * d + i)];
        v = (count * v + settings.priorFrames * pooledVar[size_t(i)]) / (count + settings.priorFrames);
        v = std::max(v, settings.floor * pooledVar[size_t(i)]) + 1e-4;
    }
    double logDet;
    while (!InvertSpd(cov, d, g.inverse, logDet))
        for (int i = 0; i < d; ++i)
            cov[size_t(i * d + i)] += 0.1 * pooledVar[size_t(i)];
    g.gconst = d * kLog2Pi + logDet;
}

} // namespace

Mixture FitMixture(const std::vector<const float*>& data, int d, const Mixture* start, std::mt19937& random,
                   int emSteps, const FitSettings& settings) {
    Mixture m;
    m.dim = d;
    const size_t n = data.size();
    std::vector<double> pooledMean(size_t(d), 0.0), pooledVar(size_t(d), 0.0);
    for (const float* x : data)
        for (int i = 0; i < d; ++i)
            pooledMean[size_t(i)] += x[i];
    for (int i = 0; i < d; ++i)
        pooledMean[size_t(i)] /= double(std::max<size_t>(n, 1));
    for (const float* x : data)
        for (int i = 0; i < d; ++i)
            pooledVar[size_t(i)] += (x[i] - pooledMean[size_t(i)]) * (x[i] - pooledMean[size_t(i)]);
    for (int i = 0; i < d; ++i)
        pooledVar[size_t(i)] = std::max(pooledVar[size_t(i)] / double(std::max<size_t>(n, 1)), 1e-3);

    std::vector<std::vector<double>> centres;
    if (start != nullptr) {
        m = *start;
    } else {
        std::uniform_int_distribution<size_t> pick(0, std::max<size_t>(n, 1) - 1);
        std::vector<double> nearest(n, 1e300);
        for (int k = 0; k < kMixtures; ++k) {
            size_t chosen = n > 0 ? pick(random) : 0;
            if (k > 0 && n > 0) {
                double total = 0;
                for (double v : nearest)
                    total += v;
                double r = std::uniform_real_distribution<double>(0, total)(random);
                for (size_t i = 0; i < n; ++i) {
                    r -= nearest[i];
                    if (r <= 0) {
                        chosen = i;
                        break;
                    }
                }
            }
            std::vector<double> c(size_t(d), 0.0);
            for (int i = 0; i < d && n > 0; ++i)
                c[size_t(i)] = data[chosen][i] + 1e-3 * k;
            centres.push_back(c);
            for (size_t p = 0; p < n; ++p) {
                double dist = 0;
                for (int i = 0; i < d; ++i)
                    dist += (data[p][i] - c[size_t(i)]) * (data[p][i] - c[size_t(i)]) / pooledVar[size_t(i)];
                nearest[p] = std::min(nearest[p], dist);
            }
        }
        std::vector<int> owner(n, 0);
        for (int step = 0; step < 12; ++step) {
            std::vector<std::vector<double>> sums(kMixtures, std::vector<double>(size_t(d), 0.0));
            std::vector<double> counts(kMixtures, 0.0);
            for (size_t p = 0; p < n; ++p) {
                double best = 1e300;
                for (int k = 0; k < kMixtures; ++k) {
                    double dist = 0;
                    for (int i = 0; i < d; ++i)
                        dist += (data[p][i] - centres[size_t(k)][size_t(i)]) *
                                (data[p][i] - centres[size_t(k)][size_t(i)]) / pooledVar[size_t(i)];
                    if (dist < best) {
                        best = dist;
                        owner[p] = k;
                    }
                }
                counts[size_t(owner[p])] += 1;
                for (int i = 0; i < d; ++i)
                    sums[size_t(owner[p])][size_t(i)] += data[p][i];
            }
            for (int k = 0; k < kMixtures; ++k)
                if (counts[size_t(k)] > 0)
                    for (int i = 0; i < d; ++i)
                        centres[size_t(k)][size_t(i)] = sums[size_t(k)][size_t(i)] / counts[size_t(k)];
        }
        m.parts.assign(kMixtures, Gaussian());
        std::vector<std::vector<double>> sums(kMixtures, std::vector<double>(size_t(d), 0.0));
        std::vector<std::vector<double>> scatters(kMixtures, std::vector<double>(size_t(d * d), 0.0));
        std::vector<double> counts(kMixtures, 0.0);
        for (size_t p = 0; p < n; ++p) {
            const size_t k = size_t(owner[p]);
            counts[k] += 1;
            for (int i = 0; i < d; ++i) {
                sums[k][size_t(i)] += data[p][i];
                for (int j = 0; j < d; ++j)
                    scatters[k][size_t(i * d + j)] += double(data[p][i]) * data[p][j];
            }
        }
        for (size_t k = 0; k < size_t(kMixtures); ++k) {
            if (counts[k] < 1) {
                for (int i = 0; i < d; ++i) {
                    sums[k][size_t(i)] = centres[k][size_t(i)];
                    scatters[k][size_t(i * d + i)] =
                        centres[k][size_t(i)] * centres[k][size_t(i)] + pooledVar[size_t(i)];
                }
                counts[k] = 1;
            }
            SetComponent(m.parts[k], d, counts[k], sums[k], scatters[k], pooledVar,
                         double(std::max<size_t>(n, 1)), settings);
        }
    }

    for (int step = 0; step < emSteps && n > 0; ++step) {
        std::vector<std::vector<double>> sums(kMixtures, std::vector<double>(size_t(d), 0.0));
        std::vector<std::vector<double>> scatters(kMixtures, std::vector<double>(size_t(d * d), 0.0));
        std::vector<double> counts(kMixtures, 0.0);
        double post[kMixtures];
        for (const float* x : data) {
            double best = -1e300, total = 0;
            for (size_t k = 0; k < size_t(kMixtures); ++k) {
                post[k] = std::log(m.parts[k].weight) + m.logDensity(m.parts[k], x);
                best = std::max(best, post[k]);
            }
            for (size_t k = 0; k < size_t(kMixtures); ++k)
                total += post[k] = std::exp(post[k] - best);
            for (size_t k = 0; k < size_t(kMixtures); ++k) {
                const double r = post[k] / total;
                if (r < 1e-6)
                    continue;
                counts[k] += r;
                for (int i = 0; i < d; ++i) {
                    sums[k][size_t(i)] += r * x[i];
                    for (int j = i; j < d; ++j)
                        scatters[k][size_t(i * d + j)] += r * double(x[i]) * x[j];
                }
            }
        }
        for (size_t k = 0; k < size_t(kMixtures); ++k) {
            for (int i = 0; i < d; ++i)
                for (int j = 0; j < i; ++j)
                    scatters[k][size_t(i * d + j)] = scatters[k][size_t(j * d + i)];
            if (counts[k] < 0.5) // an empty component keeps its place with a tiny weight
                continue;
            SetComponent(m.parts[k], d, counts[k], sums[k], scatters[k], pooledVar, double(n), settings);
        }
        double weights = 0;
        for (const Gaussian& g : m.parts)
            weights += g.weight;
        for (Gaussian& g : m.parts)
            g.weight /= weights;
    }
    return m;
}
