#include "lipsync/Recogniser.h"

#include "lipsync/Bigram.h"
#include "lipsync/HMMSet.h"
#include "lipsync/LipsyncExit.h"
#include "lipsync/Network.h"
#include "lipsync/SpeechFrontEnd.h"
#include "lipsync/detail/ModuleState.h"

#include <algorithm>
#include <cstring>

using namespace LipsyncFrontEnd;

namespace {

constexpr int kCollectThreshold = 400;
constexpr double kBigramScale = 1.0;
constexpr double kWordPenalty = 0.0;

// Decoder state of the run, reset by the tear-down.
bool gReady = false;
HMMSet* gSet = nullptr;
Network* gNetwork = nullptr;
Bigram* gBigram = nullptr;
Token* gBuffer = nullptr;
PhoneInst* gActiveHead = nullptr;
PhoneInst* gActiveTail = nullptr;
PLR* gInUse = nullptr;
PLR* gFree = nullptr;
int gNewRecords = 0;
Observation gObservation;
LipsyncDecoderStats gStats;

constexpr Token kNullToken = {kLogZero, nullptr, nullptr};

void Activate(PhoneInst* inst) {
    if (inst->active)
        return;
    inst->active = 1;
    for (int i = 1; i <= inst->hmm->numStates; ++i)
        inst->tokens[i] = kNullToken;
    inst->lastRecordFrame = -1;
    inst->lastRecord = nullptr;
    inst->nextActive = nullptr;
    if (gActiveTail == nullptr)
        gActiveHead = inst;
    else
        gActiveTail->nextActive = inst;
    gActiveTail = inst;
}

void InitModels() {
    for (NetNode* n = gNetwork->chain; n != nullptr; n = n->chain)
        if (n->inst != nullptr)
            n->inst->active = 0;
    gActiveHead = gActiveTail = nullptr;
    for (int i = 0; i < gSet->numModels; ++i)
        gSet->models[i]->outPFrame = -1;
    const LinkSet& first = *gNetwork->enter->succ;
    for (int k = 0; k < first.count; ++k) {
        PhoneInst* inst = first.links[k]->inst;
        if (inst == nullptr)
            continue;
        Activate(inst);
        inst->tokens[1] = {0.0, inst, nullptr};
    }
    gNewRecords = 0;
    gStats = LipsyncDecoderStats();
}

PLR* NewRecord() {
    PLR* r = gFree;
    if (r != nullptr)
        gFree = r->chain;
    else
        r = new PLR;
    r->chain = gInUse;
    gInUse = r;
    ++gNewRecords;
    ++gStats.recordsMade;
    return r;
}

void MarkPath(PLR* r) {
    for (; r != nullptr && r->mark == 0; r = r->prev)
        r->mark = 1;
}

// Moves every record that no token of an active instance can reach to the free chain.
void Collect() {
    for (PLR* r = gInUse; r != nullptr; r = r->chain)
        r->mark = 0;
    for (PhoneInst* inst = gActiveHead; inst != nullptr; inst = inst->nextActive)
        for (int i = 1; i <= inst->hmm->numStates; ++i)
            MarkPath(inst->tokens[i].path);
    PLR** link = &gInUse;
    while (*link != nullptr) {
        PLR* r = *link;
        if (r->mark) {
            link = &r->chain;
            continue;
        }
        *link = r->chain;
        r->chain = gFree;
        gFree = r;
        ++gStats.recordsFreed;
    }
    gNewRecords = 0;
    ++gStats.collections;
}

void FreeRecords() {
    for (PLR* chain : {gInUse, gFree})
        while (chain != nullptr) {
            PLR* next = chain->chain;
            LipsyncFree(chain);
            chain = next;
        }
    gInUse = gFree = nullptr;
}

void ComputeOutputs(int frame) {
    for (PhoneInst* inst = gActiveHead; inst != nullptr; inst = inst->nextActive) {
        HMMDef* hmm = inst->hmm;
        if (hmm->outPFrame == frame)
            continue;
        for (int j = 2; j < hmm->numStates; ++j)
            hmm->outP[j] = StateLogOutput(*gSet, *hmm, j, gObservation);
        hmm->outPFrame = frame;
    }
}

void StepInternal() {
    for (PhoneInst* inst = gActiveHead; inst != nullptr; inst = inst->nextActive) {
        const HMMDef& hmm = *inst->hmm;
        const int n = hmm.numStates;
        const SMatrix& a = *hmm.transP;
        Token* tok = inst->tokens;
        for (int j = 2; j < n; ++j) {
            int from = 0;
            double score = kLogZero;
            for (int i = 1; i < n; ++i) {
                if (tok[i].source == nullptr || a[i][j] <= kLogSmall)
                    continue;
                double s = tok[i].score + a[i][j];
                if (from == 0 || s > score) {
                    score = s;
                    from = i;
                }
            }
            if (from == 0) {
                gBuffer[j] = kNullToken;
                continue;
            }
            gBuffer[j] = tok[from];
            gBuffer[j].score = score + hmm.outP[j];
        }
        for (int j = 2; j < n; ++j)
            tok[j] = gBuffer[j];
        int from = 0;
        double score = kLogZero;
        for (int i = 2; i < n; ++i) {
            if (tok[i].source == nullptr || a[i][n] <= kLogSmall)
                continue;
            double s = tok[i].score + a[i][n];
            if (from == 0 || s > score) {
                score = s;
                from = i;
            }
        }
        if (from == 0) {
            tok[n] = kNullToken;
        } else {
            tok[n] = tok[from];
            tok[n].score = score;
        }
    }
}

void StepExternal() {
    for (PhoneInst* inst = gActiveHead; inst != nullptr; inst = inst->nextActive)
        inst->tokens[1] = kNullToken;
    for (PhoneInst* inst = gActiveHead; inst != nullptr; inst = inst->nextActive) {
        const Token& exit = inst->tokens[inst->hmm->numStates];
        if (!(exit.score > kLogZero))
            continue;
        const LinkSet& next = *inst->node->succ;
        for (int k = 0; k < next.count; ++k) {
            PhoneInst* to = next.links[k]->inst;
            if (to == nullptr)
                continue;
            Activate(to);
            double score = exit.score + kBigramScale * gBigram->logProb(inst->bigramIndex, to->bigramIndex) +
                           kWordPenalty;
            if (score > kLogSmall && score > to->tokens[1].score)
                to->tokens[1] = {score, exit.source, exit.path};
        }
    }
}

// Entry tokens become path records: one record per source and frame.
void Record(int frame) {
    for (PhoneInst* inst = gActiveHead; inst != nullptr; inst = inst->nextActive) {
        Token& entry = inst->tokens[1];
        if (entry.score < kLogSmall || entry.source == nullptr)
            continue;
        PhoneInst* source = entry.source;
        PLR* r;
        if (source->lastRecordFrame == frame) {
            r = source->lastRecord;
        } else {
            r = NewRecord();
            r->mark = 0;
            r->score = entry.score;
            r->inst = source;
            r->prev = entry.path;
            r->frame = frame;
            source->lastRecordFrame = frame;
            source->lastRecord = r;
        }
        entry.path = r;
        entry.source = inst;
    }
}

char LetterOf(const HMMDef& hmm) {
    char c = hmm.name[0];
    return ((c >= 'A' && c <= 'G') || c == 'X') ? c : 'X';
}

void TraceBack(int frames, std::vector<LipsyncRecord>& records) {
    PhoneInst* best = nullptr;
    double bestScore = kLogZero;
    const LinkSet& last = *gNetwork->exit->pred;
    for (int k = 0; k < last.count; ++k) {
        PhoneInst* inst = last.links[k]->inst;
        if (inst == nullptr || !inst->active)
            continue;
        const Token& exit = inst->tokens[inst->hmm->numStates];
        if (exit.source == nullptr)
            continue;
        if (best == nullptr || exit.score > bestScore) {
            best = inst;
            bestScore = exit.score;
        }
    }
    if (best == nullptr) {
        LipsyncWarning(-8520, "No tokens survived to end of input for %s", "dummy");
        return;
    }
    std::vector<PLR*> chain;
    for (PLR* r = best->tokens[best->hmm->numStates].path; r != nullptr; r = r->prev)
        chain.push_back(r);
    std::reverse(chain.begin(), chain.end());
    int start = 1;
    for (PLR* r : chain) {
        records.push_back({LetterOf(*r->inst->hmm), (r->frame - start + 1) * kFramePeriod});
        start = r->frame + 1;
    }
    records.push_back({LetterOf(*best->hmm), (frames - start + 1) * kFramePeriod});
}

} // namespace

void initialiseRecogniser() {
    if (gReady)
        return;
    gSet = CreateHMMList("reclist");
    LoadHMMDefs(*gSet);
    gNetwork = ParseNetwork("network");
    AttachPhoneInsts(*gNetwork, *gSet);
    LabelPhoneInsts(*gNetwork);
    gBigram = ReadBigram("bigram", *gSet);
    for (NetNode* n = gNetwork->chain; n != nullptr; n = n->chain) {
        if (n->inst == nullptr)
            continue;
        // The label is the model's name without any context.
        std::string label = n->inst->hmm->name;
        if (size_t minus = label.find('-'); minus != std::string::npos)
            label = label.substr(minus + 1);
        if (size_t plus = label.find('+'); plus != std::string::npos)
            label = label.substr(0, plus);
        int index = BigramIndex(*gBigram, label.c_str());
        if (index < 0)
            LipsyncFatal(8010, "SetBigramIndex: Label %s not found in bigram file %s", label.c_str(),
                         "bigram");
        n->inst->bigramIndex = static_cast<uint16_t>(index);
    }
    // CreateActiveLists: the token buffer is as long as the longest model.
    gBuffer = LipsyncNewArray<Token>(size_t(gSet->numStates) + 1, "CreateActiveLists");
    gObservation = MakeStreams(gSet->streams, gSet->swidth);
    gReady = true;
}

int recogniseBlock(const SpeechBuffer& observations, std::vector<LipsyncRecord>& records,
                   CLipSyncProgressCallBack* progress) {
    records.clear();
    if (!gReady)
        LipsyncFatal(8500, "recogniseBlock: the recogniser is not initialised");
    const int frames = observations.sampleCount;
    if (progress != nullptr)
        progress->start(frames);
    InitModels();
    int result = 0;
    if (frames > 0) {
        if (observations.sampleSize / 4 != gSet->vecSize)
            LipsyncFatal(8501, "CheckData: Incompatible Vec Size in file %s", "dummy");
        if (observations.parmKind != gSet->parmKind)
            LipsyncFatal(8502, "CheckData: Incompatible Sample Kind in file %s", "dummy");
    }
    for (int t = 1; t <= frames; ++t) {
        frameToStreams(observations, t - 1, gObservation);
        ComputeOutputs(t);
        StepInternal();
        StepExternal();
        if (gNewRecords >= kCollectThreshold)
            Collect();
        if (t == frames)
            TraceBack(frames, records);
        else
            Record(t);
        if (progress != nullptr && !progress->step(t)) {
            records.clear();
            result = -1;
            break;
        }
    }
    if (frames == 0)
        LipsyncWarning(-8520, "No tokens survived to end of input for %s", "dummy");
    FreeRecords();
    return result;
}

void shutdownRecogniser() {
    FreeRecords();
    gReady = false;
}

LipsyncDecoderStats LipsyncLastDecoderStats() {
    return gStats;
}

void LipsyncResetRecogniser() {
    gReady = false;
    gSet = nullptr;
    gNetwork = nullptr;
    gBigram = nullptr;
    gBuffer = nullptr;
    gActiveHead = gActiveTail = nullptr;
    gInUse = gFree = nullptr;
    gNewRecords = 0;
    gObservation = Observation();
}
