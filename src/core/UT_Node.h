#pragma once

#include <cstddef>
#include <memory>

// A node of an ordered tree with parent, first child and sibling links. A node owns its
// children: deleting a node deletes its subtree. Derived classes add what a node carries.
class UT_Node {
public:
    UT_Node() = default;
    UT_Node(const UT_Node&) = delete;
    UT_Node& operator=(const UT_Node&) = delete;
    virtual ~UT_Node();

    UT_Node* Parent() const { return parent_; }
    UT_Node* FirstChild() const { return firstChild_; }
    UT_Node* LastChild() const;
    UT_Node* Next() const { return next_; }
    UT_Node* Previous() const { return previous_; }
    size_t ChildCount() const;
    // The child at an index, or nullptr past the end.
    UT_Node* ChildAt(size_t index) const;
    // The position among the parent's children; 0 for a node without parent.
    size_t IndexInParent() const;
    bool IsAncestorOf(const UT_Node* node) const;

    // Takes the child in right after `after`, or first when `after` is nullptr.
    void InsertChild(std::unique_ptr<UT_Node> child, UT_Node* after);
    void AppendChild(std::unique_ptr<UT_Node> child) { InsertChild(std::move(child), LastChild()); }
    // Unlinks this node from its parent and hands it to the caller.
    std::unique_ptr<UT_Node> Unlink();

    // The next node of a depth-first walk in pre-order (a node before its children) that
    // stays inside the subtree of `top`; nullptr at the end.
    UT_Node* NextInTree(const UT_Node* top) const;
    // The previous node of the same walk, or nullptr before `top`.
    UT_Node* PreviousInTree(const UT_Node* top) const;
    // The last node of the subtree in pre-order.
    UT_Node* LastInTree();

private:
    UT_Node* parent_ = nullptr;
    UT_Node* firstChild_ = nullptr;
    UT_Node* next_ = nullptr;
    UT_Node* previous_ = nullptr;
};
