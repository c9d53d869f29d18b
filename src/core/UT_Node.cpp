#include "core/UT_Node.h"

UT_Node::~UT_Node() {
    // Children go first, last to first, without recursion through the sibling chain.
    while (UT_Node* child = LastChild())
        child->Unlink().reset();
}

UT_Node* UT_Node::LastChild() const {
    return firstChild_ ? firstChild_->previous_ : nullptr;
}

size_t UT_Node::ChildCount() const {
    size_t count = 0;
    for (UT_Node* child = firstChild_; child; child = child->next_)
        ++count;
    return count;
}

UT_Node* UT_Node::ChildAt(size_t index) const {
    UT_Node* child = firstChild_;
    while (child && index-- > 0)
        child = child->next_;
    return child;
}

size_t UT_Node::IndexInParent() const {
    size_t index = 0;
    if (!parent_)
        return 0;
    for (UT_Node* child = parent_->firstChild_; child != this; child = child->next_)
        ++index;
    return index;
}

bool UT_Node::IsAncestorOf(const UT_Node* node) const {
    for (; node; node = node->parent_)
        if (node == this)
            return true;
    return false;
}

// The first child's previous link names the last child, so that appending is cheap; the
// last child's next link is null.
void UT_Node::InsertChild(std::unique_ptr<UT_Node> owned, UT_Node* after) {
    UT_Node* child = owned.release();
    child->parent_ = this;
    if (!firstChild_) {
        firstChild_ = child;
        child->previous_ = child;
        child->next_ = nullptr;
        return;
    }
    if (!after) {
        child->previous_ = firstChild_->previous_;
        child->next_ = firstChild_;
        firstChild_->previous_ = child;
        firstChild_ = child;
        return;
    }
    child->previous_ = after;
    child->next_ = after->next_;
    if (after->next_)
        after->next_->previous_ = child;
    else
        firstChild_->previous_ = child;
    after->next_ = child;
}

std::unique_ptr<UT_Node> UT_Node::Unlink() {
    if (parent_) {
        UT_Node* first = parent_->firstChild_;
        if (first == this) {
            parent_->firstChild_ = next_;
            if (next_)
                next_->previous_ = previous_;
        } else {
            previous_->next_ = next_;
            if (next_)
                next_->previous_ = previous_;
            else
                first->previous_ = previous_;
        }
    }
    parent_ = nullptr;
    next_ = nullptr;
    previous_ = nullptr;
    return std::unique_ptr<UT_Node>(this);
}

UT_Node* UT_Node::NextInTree(const UT_Node* top) const {
    if (firstChild_)
        return firstChild_;
    for (const UT_Node* node = this; node && node != top; node = node->parent_)
        if (node->next_)
            return node->next_;
    return nullptr;
}

UT_Node* UT_Node::LastInTree() {
    UT_Node* node = this;
    while (UT_Node* last = node->LastChild())
        node = last;
    return node;
}

UT_Node* UT_Node::PreviousInTree(const UT_Node* top) const {
    if (this == top || !parent_)
        return nullptr;
    if (parent_->firstChild_ == this)
        return parent_;
    return previous_->LastInTree();
}
