#include "lipsync/Network.h"

#include "lipsync/LipsyncExit.h"
#include "lipsync/LipsyncFiles.h"
#include "lipsync/detail/ModuleState.h"

#include <cctype>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace {

// Interned names of the run, reset by the tear-down.
NameCell* gNames = nullptr;

constexpr int kMaxNodes = 4096;
constexpr long kMaxLinks = 262144;
constexpr int kMaxDepth = 64;

// The parsed expression, before it becomes nodes.
struct Expr {
    enum Kind { kName, kSeq, kAlt, kRepeat, kOption } kind = kName;
    std::string name;
    std::vector<int> parts;
};

class Parser {
public:
    explicit Parser(std::string text) : text_(std::move(text)) {}

    std::vector<Expr> exprs;
    int top = -1;

    void parse() {
        skip();
        while (peek() == '$') {
            size_t save = at_;
            ++at_;
            std::string name = word();
            skip();
            if (peek() != '=') {
                at_ = save;
                break;
            }
            ++at_;
            int e = alternatives(0);
            expect(';');
            variables_[name] = e;
            skip();
        }
        top = alternatives(0);
        skip();
        if (at_ < text_.size())
            fail("unexpected text at the end");
    }

private:
    [[noreturn]] void fail(const char* what) {
        LipsyncFatal(8100, "ParseNetwork: %s at character %d", what, static_cast<int>(at_));
    }
    void skip() {
        for (;;) {
            while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_])))
                ++at_;
            if (text_.compare(at_, 2, "/*") == 0) {
                size_t end = text_.find("*/", at_ + 2);
                if (end == std::string::npos)
                    fail("unterminated comment");
                at_ = end + 2;
                continue;
            }
            return;
        }
    }
    char peek() {
        skip();
        return at_ < text_.size() ? text_[at_] : '\0';
    }
    void expect(char c) {
        if (peek() != c)
            fail(c == ';' ? "';' expected" : "closing bracket expected");
        ++at_;
    }
    static bool special(char c) { return std::strchr("$=|;()<>[]{}", c) != nullptr; }
    std::string word() {
        size_t start = at_;
        while (at_ < text_.size() && !std::isspace(static_cast<unsigned char>(text_[at_])) &&
               !special(text_[at_]) && text_.compare(at_, 2, "/*") != 0)
            ++at_;
        if (at_ == start)
            fail("name expected");
        return text_.substr(start, at_ - start);
    }
    int add(Expr e) {
        if (exprs.size() >= size_t(kMaxNodes))
            fail("network too large");
        exprs.push_back(std::move(e));
        return static_cast<int>(exprs.size()) - 1;
    }
    int alternatives(int depth) {
        if (depth > kMaxDepth)
            fail("nesting too deep");
        Expr alt;
        alt.kind = Expr::kAlt;
        alt.parts.push_back(sequence(depth));
        while (peek() == '|') {
            ++at_;
            alt.parts.push_back(sequence(depth));
        }
        return alt.parts.size() == 1 ? alt.parts[0] : add(std::move(alt));
    }
    int sequence(int depth) {
        Expr seq;
        seq.kind = Expr::kSeq;
        for (;;) {
            char c = peek();
            if (c == '\0' || c == '|' || c == ';' || c == ')' || c == '>' || c == ']' || c == '}')
                break;
            seq.parts.push_back(item(depth));
        }
        if (seq.parts.empty())
            fail("empty expression");
        return seq.parts.size() == 1 ? seq.parts[0] : add(std::move(seq));
    }
    int item(int depth) {
        char c = peek();
        auto group = [&](char close, Expr::Kind kind) {
            ++at_;
            int inner = alternatives(depth + 1);
            expect(close);
            if (kind == Expr::kSeq)
                return inner;
            Expr e;
            e.kind = kind;
            e.parts.push_back(inner);
            return add(std::move(e));
        };
        if (c == '(')
            return group(')', Expr::kSeq);
        if (c == '<')
            return group('>', Expr::kRepeat);
        if (c == '[')
            return group(']', Expr::kOption);
        if (c == '{') {
            int repeat = group('}', Expr::kRepeat);
            Expr option;
            option.kind = Expr::kOption;
            option.parts.push_back(repeat);
            return add(std::move(option));
        }
        if (c == '$') {
            ++at_;
            std::string name = word();
            auto found = variables_.find(name);
            if (found == variables_.end())
                fail("undefined variable");
            return found->second;
        }
        if (special(c))
            fail("unexpected character");
        Expr e;
        e.kind = Expr::kName;
        e.name = word();
        return add(std::move(e));
    }

    std::string text_;
    size_t at_ = 0;
    std::map<std::string, int> variables_;
};

// First and last nodes of a piece of network, and whether it can be empty.
struct Piece {
    std::vector<NetNode*> first, last;
    bool nullable = false;
};

class Builder {
public:
    Builder(Network& network, const std::vector<Expr>& exprs) : network_(network), exprs_(exprs) {}

    NetNode* node(const char* name) {
        if (network_.numNodes >= kMaxNodes)
            LipsyncFatal(8101, "ParseNetwork: network too large");
        NetNode* n = new NetNode;
        n->name = InternName(name);
        n->succ = NewLinkSet();
        n->pred = NewLinkSet();
        // Nodes are chained in creation order.
        if (tail_ == nullptr)
            network_.chain = n;
        else
            tail_->chain = n;
        tail_ = n;
        ++network_.numNodes;
        return n;
    }
    void link(NetNode* from, NetNode* to) {
        if (++links_ > kMaxLinks)
            LipsyncFatal(8101, "ParseNetwork: network too large");
        Append(from->succ, to);
        Append(to->pred, from);
    }
    void link(const std::vector<NetNode*>& from, const std::vector<NetNode*>& to) {
        for (NetNode* a : from)
            for (NetNode* b : to)
                link(a, b);
    }
    Piece build(int index, int depth) {
        if (depth > 4 * kMaxDepth)
            LipsyncFatal(8101, "ParseNetwork: network too large");
        const Expr& e = exprs_[size_t(index)];
        Piece p;
        switch (e.kind) {
        case Expr::kName: {
            NetNode* n = node(e.name.c_str());
            p.first = p.last = {n};
            break;
        }
        case Expr::kAlt:
            for (int part : e.parts) {
                Piece q = build(part, depth + 1);
                p.first.insert(p.first.end(), q.first.begin(), q.first.end());
                p.last.insert(p.last.end(), q.last.begin(), q.last.end());
                p.nullable = p.nullable || q.nullable;
            }
            break;
        case Expr::kSeq: {
            p.nullable = true;
            for (int part : e.parts) {
                Piece q = build(part, depth + 1);
                link(p.last, q.first);
                if (p.nullable)
                    p.first.insert(p.first.end(), q.first.begin(), q.first.end());
                if (!q.nullable)
                    p.last.clear();
                p.last.insert(p.last.end(), q.last.begin(), q.last.end());
                p.nullable = p.nullable && q.nullable;
            }
            break;
        }
        case Expr::kRepeat:
            p = build(e.parts[0], depth + 1);
            link(p.last, p.first);
            break;
        case Expr::kOption:
            p = build(e.parts[0], depth + 1);
            p.nullable = true;
            break;
        }
        return p;
    }

private:
    static LinkSet* NewLinkSet() {
        LinkSet* set = new LinkSet;
        set->nUse = 1;
        return set;
    }
    static void Append(LinkSet* set, NetNode* n) {
        if (set->count == set->capacity) {
            int capacity = set->capacity == 0 ? 8 : set->capacity * 2;
            NetNode** links = LipsyncNewArray<NetNode*>(size_t(capacity), "ParseNetwork");
            if (set->count > 0)
                std::memcpy(links, set->links, size_t(set->count) * sizeof(NetNode*));
            LipsyncFree(set->links);
            set->links = links;
            set->capacity = capacity;
        }
        set->links[set->count++] = n;
    }

    Network& network_;
    const std::vector<Expr>& exprs_;
    NetNode* tail_ = nullptr;
    long links_ = 0;
};

} // namespace

NameCell* InternName(const char* name) {
    for (NameCell* cell = gNames; cell != nullptr; cell = cell->next)
        if (std::strcmp(cell->name, name) == 0)
            return cell;
    size_t length = std::strlen(name);
    char* copy = LipsyncNewArray<char>(length + 1, "InternName");
    std::memcpy(copy, name, length + 1);
    NameCell* cell = new NameCell;
    cell->name = copy;
    cell->next = gNames;
    gNames = cell;
    return cell;
}

Network* ParseNetwork(const char* fileName) {
    LipsyncSource source;
    if (!LipsyncFiles::open(fileName, source))
        LipsyncFatal(8102, "ParseNetwork: Cannot open network file %s", fileName);
    std::string text;
    char c;
    while (source.readChar(c))
        text += c;
    Parser parser(text);
    parser.parse();

    Network* network = new Network;
    Builder builder(*network, parser.exprs);
    network->enter = builder.node("ENTER");
    Piece top = builder.build(parser.top, 0);
    if (top.nullable)
        LipsyncFatal(8103, "ParseNetwork: the network of %s can be empty", fileName);
    network->exit = builder.node("EXIT");
    builder.link({network->enter}, top.first);
    builder.link(top.last, {network->exit});
    return network;
}

void AttachPhoneInsts(Network& network, const HMMSet& set) {
    for (NetNode* n = network.chain; n != nullptr; n = n->chain) {
        if (n == network.enter || n == network.exit)
            continue;
        HMMDef* hmm = FindHMM(set, n->name->name);
        if (hmm == nullptr)
            LipsyncFatal(8104, "AttachPhoneInsts: HMM %s not found", n->name->name);
        PhoneInst* inst = new PhoneInst;
        inst->hmm = hmm;
        inst->node = n;
        inst->tokens = LipsyncNewArray<Token>(size_t(hmm->numStates) + 1, "AttachPhoneInsts");
        n->inst = inst;
    }
}

void LabelPhoneInsts(Network& network) {
    int begins = 0, ends = 0;
    for (NetNode* n = network.chain; n != nullptr; n = n->chain) {
        if (n->inst == nullptr)
            continue;
        if (std::strcmp(n->name->name, "WD_BEGIN") == 0) {
            n->inst->kind = kInstWordBegin;
            ++begins;
        } else if (std::strcmp(n->name->name, "WD_END") == 0) {
            n->inst->kind = kInstWordEnd;
            ++ends;
        } else {
            // Each model of this network is a whole unit: its exit ends the unit.
            n->inst->kind = kInstUnitEnd;
        }
    }
    if (begins != ends)
        LipsyncFatal(8105, "LabelPhoneInsts: Different num WD_BEGIN (%d) & WD_END nodes (%d)", begins, ends);
}

void LipsyncResetNetwork() {
    gNames = nullptr;
}
