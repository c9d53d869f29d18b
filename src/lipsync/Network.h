#pragma once

#include "lipsync/HMMSet.h"

#include <cstdint>

struct NetNode;
struct PhoneInst;

// An interned name: equal names are one cell.
struct NameCell : LipsyncManaged {
    const char* name = nullptr;
    NameCell* next = nullptr;
};
NameCell* InternName(const char* name);

// The successors or predecessors of a node; may be shared between nodes.
struct LinkSet : LipsyncManaged {
    int nUse = 0;
    int count = 0;
    int capacity = 0;
    NetNode** links = nullptr;
};

struct NetNode : LipsyncManaged {
    NameCell* name = nullptr;
    LinkSet* succ = nullptr;
    LinkSet* pred = nullptr;
    PhoneInst* inst = nullptr;
    NetNode* chain = nullptr; // all nodes of the network, in creation order
};

struct Network : LipsyncManaged {
    NetNode* enter = nullptr;
    NetNode* exit = nullptr;
    NetNode* chain = nullptr;
    int numNodes = 0;
};

// A path record: one mouth segment that ended at `frame`.
struct PLR : LipsyncManaged {
    uint16_t mark = 0;
    double score = 0.0;
    PhoneInst* inst = nullptr;
    PLR* prev = nullptr;
    int frame = 0;
    PLR* chain = nullptr;
};

struct Token {
    double score;
    PhoneInst* source;
    PLR* path;
};

// Kinds of a phone instance.
enum PhoneInstKind : int {
    kInstUndecided = 0,
    kInstInternal = 1,
    kInstUnitEnd = 2,
    kInstWordBegin = 3,
    kInstWordEnd = 4
};

// The decoding state of one model node.
struct PhoneInst : LipsyncManaged {
    HMMDef* hmm = nullptr;
    NetNode* node = nullptr;
    uint16_t active = 0;
    int kind = kInstUndecided;
    uint16_t bigramIndex = 0;
    int lastRecordFrame = -1;
    PLR* lastRecord = nullptr;
    Token* tokens = nullptr; // addressed from 1 to the state count
    PhoneInst* nextActive = nullptr;
};

// Parses the network definition in the in-memory file `fileName`: "$name = a | b;"
// definitions, then one expression of names, $uses, ( ), < > (one or more), [ ] (optional),
// { } (zero or more) and | alternatives, with /* */ comments. Adds nodes "ENTER" and "EXIT".
Network* ParseNetwork(const char* fileName);
// Gives every node but "ENTER" and "EXIT" an instance of the model of its name.
void AttachPhoneInsts(Network& network, const HMMSet& set);
// Sets the kind of every instance.
void LabelPhoneInsts(Network& network);
