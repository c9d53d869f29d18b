#pragma once

#include "lipsync/LipsyncMemoryManagerObject.h"

class LipsyncSource;

// A use count and a hook word: marks an object that may stand in several places of a model.
struct Shared {
    int nUse = 0;
    void* hook = nullptr;
};

// A vector of floats addressed from 1, in the current manager's memory.
class Vector : public LipsyncManaged {
public:
    int size() const { return size_; }
    float& operator[](int i) { return elements_[i - 1]; }
    float operator[](int i) const { return elements_[i - 1]; }
    float* data() { return elements_; }
    const float* data() const { return elements_; }

    // Set by the Create functions.
    int size_ = 0;
    float* elements_ = nullptr;
};

class SVector : public Vector, public Shared {};

// A zero-filled vector; failure is fatal.
Vector* CreateVector(int size);
SVector* CreateSVector(int size);

// Reads size() floats from the source in order; a short source is fatal.
void ReadVector(LipsyncSource& source, Vector& v);
