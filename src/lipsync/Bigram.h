#pragma once

#include "lipsync/HMMSet.h"
#include "lipsync/Network.h"

// A bigram of names: n labels and the n x n table of ln p, row-major.
struct Bigram : LipsyncManaged {
    int n = 0;
    NameCell** labels = nullptr; // addressed from 0
    float* logP = nullptr;
    float logProb(int from, int to) const { return logP[from * n + to]; }
};

// Reads the bigram file `fileName`, whose row labels must be model names of `set`,
// "ENTER" or "EXIT", each once; every row must sum to 1 within 0.01.
Bigram* ReadBigram(const char* fileName, const HMMSet& set);
// Row of a label, or -1.
int BigramIndex(const Bigram& bigram, const char* label);
