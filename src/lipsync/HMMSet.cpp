#include "lipsync/HMMSet.h"

#include "lipsync/LipsyncExit.h"
#include "lipsync/LipsyncFiles.h"
#include "lipsync/detail/LogDet.h"

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

using namespace LipsyncFrontEnd;

namespace {

constexpr int kMaxStates = 64;
constexpr int kMaxMixtures = 256;
constexpr int kMaxVecSize = 512;
constexpr double kMixWeightFloor = 1.0e-5;
constexpr double kLog2Pi = 1.8378770664093453;

// A model file being read, with one symbol of look-ahead.
class ModelReader {
public:
    ModelReader(LipsyncSource& source, const char* name) : source_(source), name_(name) {}

    int sym = kSymEOF;
    uint16_t kind = 0;

    void next() {
        float value;
        if (!source_.readFloat(value)) {
            sym = kSymEOF;
            return;
        }
        if (value == kSampKindMFCC_E_D_A) {
            sym = kSymSampKind;
            kind = kParmMFCC_E_D_A;
            return;
        }
        if (!(value >= 0.0f && value <= float(kSymEOF)) || value != std::floor(value) ||
            value == float(kSymSampKind))
            LipsyncFatal(7010, "GetSym: Unknown symbol %g in %s", double(value), name_);
        sym = static_cast<int>(value);
    }
    float number(const char* what) {
        float value;
        if (!source_.readFloat(value) || !std::isfinite(value))
            LipsyncFatal(7011, "GetFloat: Float expected for %s in %s", what, name_);
        return value;
    }
    int integer(const char* what, int low, int high, int code, const char* message) {
        float value = number(what);
        if (value != std::floor(value) || value < float(low) || value > float(high))
            LipsyncFatal(code, "%s", message);
        return static_cast<int>(value);
    }
    LipsyncSource& source() { return source_; }
    const char* name() const { return name_; }

private:
    LipsyncSource& source_;
    const char* name_;
};

const char* CopyName(const std::string& name) {
    char* copy = LipsyncNewArray<char>(name.size() + 1, "CreateHMMList");
    std::memcpy(copy, name.c_str(), name.size() + 1);
    return copy;
}

// Gaussian constant of an inverse covariance: n ln(2 pi) - ln |inv|.
float GConstFromInverse(const SMatrix& inv, const char* name) {
    const int n = inv.rows();
    std::vector<double> a(size_t(n) * size_t(n));
    for (int i = 1; i <= n; ++i)
        for (int j = 1; j <= n; ++j)
            a[size_t((i - 1) * n + (j - 1))] = inv[i][j];
    double logDet;
    if (!LipsyncLogDeterminant(a.data(), n, logDet))
        LipsyncFatal(7040, "FixGConsts: %s: singular inverse covariance", name);
    return static_cast<float>(n * kLog2Pi - logDet);
}

void ReadOptions(ModelReader& in, HMMSet& set, int& numStates, bool firstModel) {
    int streams = 1, vecSize = 0, covKind = kSymDiagC, durKind = kSymNullD;
    int widths[kMaxStreams + 1] = {};
    uint16_t kind = 0;
    bool haveWidths = false;
    numStates = 0;
    for (;;) {
        if (in.sym == kSymNumStates) {
            numStates = in.integer("NumStates", 3, kMaxStates, 7001, "State number out of range");
        } else if (in.sym == kSymStreamInfo) {
            float count = in.number("StreamInfo");
            if (count != std::floor(count) || count < 1.0f)
                LipsyncFatal(7002, "LoadOptions: Bad stream count in %s", in.name());
            if (count > float(kMaxStreams))
                LipsyncFatal(7003, "Stream limit exceeded");
            streams = static_cast<int>(count);
            for (int s = 1; s <= streams; ++s) {
                float w = in.number("StreamInfo");
                if (w != std::floor(w) || w < 1.0f || w > float(kMaxVecSize))
                    LipsyncFatal(7002, "LoadOptions: Bad stream width in %s", in.name());
                widths[s] = static_cast<int>(w);
            }
            haveWidths = true;
        } else if (in.sym == kSymVecSize) {
            float v = in.number("VecSize");
            if (v != std::floor(v) || v < 1.0f || v > float(kMaxVecSize))
                LipsyncFatal(7004, "LoadOptions: Bad vector size in %s", in.name());
            vecSize = static_cast<int>(v);
        } else if (in.sym == kSymDiagC || in.sym == kSymFullC || in.sym == kSymXformC) {
            covKind = in.sym;
        } else if (in.sym == kSymNullD || in.sym == kSymPoissonD || in.sym == kSymGammaD ||
                   in.sym == kSymGenD) {
            durKind = in.sym;
        } else if (in.sym == kSymSampKind) {
            kind = in.kind;
        } else {
            break;
        }
        in.next();
    }
    if (!haveWidths)
        widths[1] = vecSize;
    int sum = 0;
    for (int s = 1; s <= streams; ++s)
        sum += widths[s];
    if (sum != vecSize)
        LipsyncFatal(7005, "LoadOptions: Sum of Stream widths %d != vecSize %d", sum, vecSize);
    if (numStates == 0)
        LipsyncFatal(7001, "State number out of range");
    if (firstModel) {
        if (covKind != kSymFullC)
            LipsyncFatal(7006, "LoadOptions: %s: only full inverse covariances are supported", in.name());
        set.numStates = numStates;
        set.streams = streams;
        set.vecSize = vecSize;
        set.parmKind = kind;
        set.covKind = covKind;
        set.durKind = durKind;
        for (int s = 0; s <= kMaxStreams; ++s)
            set.swidth[s] = widths[s];
        return;
    }
    if (kind != set.parmKind)
        LipsyncFatal(7020, "LoadHMM: HMMs have different sample kinds");
    if (covKind != set.covKind)
        LipsyncFatal(7021, "LoadHMM: HMMs have different covariance kinds");
    bool sameWidths = streams == set.streams;
    for (int s = 1; sameWidths && s <= streams; ++s)
        sameWidths = widths[s] == set.swidth[s];
    if (vecSize != set.vecSize || !sameWidths)
        LipsyncFatal(7022, "LoadHMM: HMMs have incompatible vecSizes");
}

// Reads one mixture's density; the current symbol is the one after the mixture header.
MixPDF* ReadDensity(ModelReader& in) {
    MixPDF* pdf = new MixPDF;
    pdf->gConst = static_cast<float>(kLogZero);
    if (in.sym != kSymMean)
        LipsyncFatal(7012, "LoadMixture: <Mean> symbol expected in %s", in.name());
    int size = in.integer("Mean", 1, kMaxVecSize, 7013, "LoadMixture: Bad mean size");
    pdf->mean = CreateSVector(size);
    ReadVector(in.source(), *pdf->mean);
    in.next();
    if (in.sym != kSymInvCovar)
        LipsyncFatal(7014, "LoadMixture: <InvCovar> symbol expected in %s", in.name());
    size = in.integer("InvCovar", 1, kMaxVecSize, 7015, "LoadMixture: Bad inverse covariance size");
    pdf->inv = CreateSMatrix(size, size);
    ReadSymMatrix(in.source(), *pdf->inv);
    in.next();
    if (in.sym == kSymGConst) {
        pdf->gConst = in.number("GConst");
        in.next();
    } else {
        pdf->gConst = GConstFromInverse(*pdf->inv, in.name());
    }
    return pdf;
}

StateInfo* ReadState(ModelReader& in, const HMMSet& set) {
    StateInfo* info = new StateInfo;
    const int streams = set.streams;
    int nMix[kMaxStreams + 1];
    for (int s = 1; s <= streams; ++s)
        nMix[s] = 1;
    if (in.sym == kSymNumMixes) {
        for (int s = 1; s <= streams; ++s)
            nMix[s] = in.integer("NumMixes", 1, kMaxMixtures, 7030, "Mixture index out of range");
        in.next();
    }
    info->weights = CreateSVector(streams);
    for (int s = 1; s <= streams; ++s)
        (*info->weights)[s] = 1.0f;
    if (in.sym == kSymSWeights) {
        float count = in.number("SWeights");
        if (count != float(streams))
            LipsyncFatal(7031, "Incorrect number of stream weights");
        ReadVector(in.source(), *info->weights);
        in.next();
    }
    info->pdf = LipsyncNewArray<StreamElem>(size_t(streams) + 1, "LoadState");
    for (int s = 1; s <= streams; ++s) {
        info->pdf[s].nMix = nMix[s];
        info->pdf[s].spdf = LipsyncNewArray<MixtureElem>(size_t(nMix[s]) + 1, "LoadState");
    }
    bool first = true;
    while (in.sym == kSymStream || (first && streams == 1 && (in.sym == kSymMixture || in.sym == kSymMean))) {
        int s = 1;
        if (in.sym == kSymStream) {
            s = in.integer("Stream", 1, streams, 7032, "Stream index out of range");
            in.next();
        }
        first = false;
        StreamElem& stream = info->pdf[s];
        if (stream.nMix == 1 && in.sym == kSymMean) {
            stream.spdf[1].weight = 1.0f;
            stream.spdf[1].mpdf = ReadDensity(in);
            continue;
        }
        while (in.sym == kSymMixture) {
            int m = in.integer("Mixture", 1, stream.nMix, 7033, "Mixture index out of range");
            float weight = in.number("Mixture weight");
            in.next();
            stream.spdf[m].weight = weight;
            stream.spdf[m].logWeight = weight > 0.0f ? std::log(double(weight)) : kLogZero;
            stream.spdf[m].mpdf = ReadDensity(in);
        }
    }
    return info;
}

void ReadTransP(ModelReader& in, HMMDef& hmm) {
    const int n = hmm.numStates;
    if (in.sym != kSymTransP)
        LipsyncFatal(7050, "Transition Matrix Missing");
    float size = in.number("TransP");
    if (size != float(n))
        LipsyncFatal(7051, "Trans Mat Dimensions not %d x %d", n, n);
    hmm.transP = CreateSMatrix(n, n);
    for (int i = 1; i <= n; ++i)
        ReadVector(in.source(), (*hmm.transP)[i]);
    for (int i = 1; i <= n; ++i) {
        Vector& row = (*hmm.transP)[i];
        double sum = 0.0;
        bool negative = false;
        for (int j = 1; j <= n; ++j) {
            sum += row[j];
            negative = negative || row[j] < 0.0f;
        }
        if (i < n && (negative || sum < 0.99 || sum > 1.01))
            LipsyncFatal(7052, "GetTransMat: Bad Trans Mat Sum in Row %d\n", i);
        for (int j = 1; j <= n; ++j)
            row[j] = i < n && row[j] >= kMinLogArg ? static_cast<float>(std::log(double(row[j])))
                                                   : static_cast<float>(kLogZero);
    }
    in.next();
}

void CheckHMM(const HMMSet& set, const HMMDef& hmm) {
    for (int j = 2; j < hmm.numStates; ++j) {
        const StateInfo* info = hmm.states[j];
        if (info == nullptr)
            LipsyncFatal(7060, "CheckHMM: %s: state %d has NULL info", hmm.name, j);
        for (int s = 1; s <= set.streams; ++s) {
            const StreamElem& stream = info->pdf[s];
            double sum = 0.0;
            for (int m = 1; m <= stream.nMix; ++m)
                sum += stream.spdf[m].weight;
            if (sum < 0.99 || sum > 1.01)
                LipsyncFatal(7061, "CheckStream: %s: Mix weights sum %e in stream %d state %d", hmm.name, sum,
                             s, j);
            for (int m = 1; m <= stream.nMix; ++m) {
                const MixPDF* pdf = stream.spdf[m].mpdf;
                if (pdf == nullptr || pdf->mean->size() != set.swidth[s])
                    LipsyncFatal(7062, "CheckMix: %s: mean for stream %d state %d mix %d has bad vecSize",
                                 hmm.name, s, j, m);
                if (pdf->inv->rows() != set.swidth[s])
                    LipsyncFatal(7063, "CheckMix: %s: inv for stream %d state %d mix %d has bad dimensions",
                                 hmm.name, s, j, m);
            }
        }
    }
}

void LoadHMM(HMMSet& set, HMMDef& hmm, bool firstModel) {
    LipsyncSource source;
    if (!LipsyncFiles::open(hmm.name, source))
        LipsyncFatal(7000, "LoadHMMDefs: Cannot open model file %s", hmm.name);
    ModelReader in(source, hmm.name);
    in.next();
    if (in.sym != kSymBeginHMM)
        LipsyncFatal(7070, "<BeginHMM> symbol expected");
    in.next();
    int numStates = 0;
    ReadOptions(in, set, numStates, firstModel);
    if (numStates != set.numStates)
        LipsyncFatal(7001, "State number out of range");
    hmm.numStates = numStates;
    hmm.states = LipsyncNewArray<StateInfo*>(size_t(numStates) + 1, "LoadHMM");
    hmm.outP = LipsyncNewArray<double>(size_t(numStates) + 1, "LoadHMM");
    hmm.outPFrame = -1;
    while (in.sym == kSymState) {
        int j = in.integer("State", 2, numStates - 1, 7001, "State number out of range");
        in.next();
        hmm.states[j] = ReadState(in, set);
    }
    ReadTransP(in, hmm);
    if (in.sym != kSymEndHMM)
        LipsyncFatal(7071, "<EndHMM> symbol expected");
    in.next();
    if (in.sym != kSymEOF || !source.atEnd())
        LipsyncFatal(7072, "Garbage at end of macro file");
    CheckHMM(set, hmm);
}

} // namespace

HMMSet* CreateHMMList(const char* listName) {
    LipsyncSource source;
    if (!LipsyncFiles::open(listName, source))
        LipsyncFatal(7080, "CreateHMMList: Cannot open HMM list %s", listName);
    std::vector<std::string> names;
    std::string line;
    char c;
    while (source.readChar(c)) {
        if (c == '\n' || c == '\r') {
            if (!line.empty())
                names.push_back(line);
            line.clear();
        } else if (c != ' ' && c != '\t') {
            line += c;
        }
    }
    if (!line.empty())
        names.push_back(line);
    if (names.empty())
        LipsyncFatal(7081, "CreateHMMList: No models in HMM list %s", listName);
    HMMSet* set = new HMMSet;
    set->numModels = static_cast<int>(names.size());
    set->models = LipsyncNewArray<HMMDef*>(names.size(), "CreateHMMList");
    for (size_t i = 0; i < names.size(); ++i) {
        for (size_t k = 0; k < i; ++k)
            if (names[k] == names[i])
                LipsyncFatal(7082, "CreateHMMList: Model %s listed twice in %s", names[i].c_str(), listName);
        set->models[i] = new HMMDef;
        set->models[i]->name = CopyName(names[i]);
    }
    return set;
}

void LoadHMMDefs(HMMSet& set) {
    for (int i = 0; i < set.numModels; ++i)
        LoadHMM(set, *set.models[i], i == 0);
}

HMMDef* FindHMM(const HMMSet& set, const char* name) {
    for (int i = 0; i < set.numModels; ++i)
        if (std::strcmp(set.models[i]->name, name) == 0)
            return set.models[i];
    return nullptr;
}

double MixLogDensity(const MixPDF& pdf, const Vector& x) {
    const int n = x.size();
    double d[kMaxVecSize];
    const float* mean = pdf.mean->data();
    const float* o = x.data();
    for (int i = 0; i < n; ++i)
        d[i] = double(o[i]) - double(mean[i]);
    double q = 0.0;
    for (int i = 0; i < n; ++i) {
        const float* row = (*pdf.inv)[i + 1].data();
        double cross = 0.0;
        for (int k = i + 1; k < n; ++k)
            cross += double(row[k]) * d[k];
        q += d[i] * (double(row[i]) * d[i] + 2.0 * cross);
    }
    return -0.5 * (double(pdf.gConst) + q);
}

double StateLogOutput(const HMMSet& set, const HMMDef& hmm, int state, const Observation& o) {
    const StateInfo& info = *hmm.states[state];
    double total = 0.0;
    for (int s = 1; s <= set.streams; ++s) {
        const StreamElem& stream = info.pdf[s];
        double logB = kLogZero;
        for (int m = 1; m <= stream.nMix; ++m) {
            const MixtureElem& mix = stream.spdf[m];
            if (mix.weight <= kMixWeightFloor)
                continue;
            logB = LAdd(logB, mix.logWeight + MixLogDensity(*mix.mpdf, *o.fv[s]));
        }
        total += double((*info.weights)[s]) * logB;
    }
    return total;
}
