#pragma once

#include "lipsync/Matrix.h"
#include "lipsync/SpeechFrontEnd.h"

#include <cstdint>

// Symbols of the model format: every item of a model file is one float, a symbol being
// the float of its code.
enum HMMSymbol : int {
    kSymBeginHMM = 0,
    kSymMacroUse = 1,
    kSymEndHMM = 2,
    kSymNumMixes = 3,
    kSymNumStates = 4,
    kSymStreamInfo = 5,
    kSymVecSize = 6,
    kSymNullD = 7,
    kSymPoissonD = 8,
    kSymGammaD = 9,
    kSymGenD = 10,
    kSymDiagC = 11,
    kSymFullC = 12,
    kSymXformC = 13,
    kSymState = 14,
    kSymTMix = 15,
    kSymMixture = 16,
    kSymStream = 17,
    kSymSWeights = 18,
    kSymMean = 19,
    kSymVariance = 20,
    kSymInvCovar = 21,
    kSymXform = 22,
    kSymGConst = 23,
    kSymDuration = 24,
    kSymLabel = 25,
    kSymTransP = 26,
    kSymSampKind = 27,
    kSymMacro = 28,
    kSymEOF = 29,
};
// The float that stands for the sample kind symbol with the kind "MFCC_E_D_A".
constexpr float kSampKindMFCC_E_D_A = 500.0f;

// One Gaussian: mean, inverse covariance and ln((2 pi)^n |covariance|).
struct MixPDF : LipsyncManaged {
    SVector* mean = nullptr;
    SMatrix* inv = nullptr;
    float gConst = 0.0f;
};

struct MixtureElem {
    float weight = 0.0f;
    double logWeight = 0.0; // ln weight, kept beside it for the emission of every frame
    MixPDF* mpdf = nullptr;
};

// The mixtures of one stream, addressed from 1.
struct StreamElem {
    int nMix = 0;
    MixtureElem* spdf = nullptr;
};

// One emitting state: stream weights and per stream the mixtures, addressed from 1.
struct StateInfo : LipsyncManaged {
    SVector* weights = nullptr;
    StreamElem* pdf = nullptr;
};

// One model, named by one mouth letter.
struct HMMDef : LipsyncManaged {
    const char* name = nullptr;
    int numStates = 0;
    StateInfo** states = nullptr; // addressed from 1; states 2 .. numStates - 1 emit
    SMatrix* transP = nullptr;    // ln p, log zero for p = 0
    int outPFrame = -1;           // frame whose output probabilities are in outP
    double* outP = nullptr;       // addressed by state, 2 .. numStates - 1
};

// The models of a run and the options they share.
struct HMMSet : LipsyncManaged {
    int numModels = 0;
    HMMDef** models = nullptr; // addressed from 0
    int numStates = 0;
    int streams = 0;
    int swidth[LipsyncFrontEnd::kMaxStreams + 1] = {};
    int vecSize = 0;
    uint16_t parmKind = 0;
    int covKind = 0;
    int durKind = 0;
};

// Makes one model for each line of the in-memory file `listName`.
HMMSet* CreateHMMList(const char* listName);
// Reads every model of the set from the in-memory file of its name, with all checks.
void LoadHMMDefs(HMMSet& set);
// The model of that name, or nullptr.
HMMDef* FindHMM(const HMMSet& set, const char* name);

// ln b_j(o) of emitting state j: the weighted sum over streams of the log mixture densities.
double StateLogOutput(const HMMSet& set, const HMMDef& hmm, int state, const Observation& o);
// log N(x; mean, inv) for one density, in double precision.
double MixLogDensity(const MixPDF& pdf, const Vector& x);
