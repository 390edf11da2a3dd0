// SPDX-License-Identifier: MIT

#include "Base/Utility/zeRBTreeCore.h"

#include <cassert>
#include <new>
#include <utility>

namespace ze {

namespace {

using Node = RBTreeImpl::Node;
using Side = RBTreeImpl::Side;

constexpr int defaultNodesInBlock = 64;

Side opposite(Side side) {
    return side == RBTreeImpl::left ? RBTreeImpl::right : RBTreeImpl::left;
}

bool isBlack(const Node* node) {
    return !node || node->colour == RBTreeImpl::black;
}

void adoptChildren(Node* node) {
    for (Node* child : node->child) {
        if (child)
            child->parent = node;
    }
}

} // namespace

/// The link to this node: a child link of its parent, or the root.
RBTreeImpl::Node*& RBTreeImpl::Node::linkToThis() {
    if (isRoot())
        return parent->parent;
    return parent->child[parent->child[left] == this ? left : right];
}

/// The end, if it links to this node as its leftmost or rightmost one, or null.
RBTreeImpl::Node* RBTreeImpl::Node::endIfOutermost(Side side) {
    if (child[side])
        return nullptr;
    Node* above = climb(side);
    return above->isEnd() ? above : nullptr;
}

void RBTreeImpl::Node::swapHeaders(Node& other) {
    Node* const ends[] = {endIfOutermost(left), endIfOutermost(right)};
    Node* const otherEnds[] = {other.endIfOutermost(left), other.endIfOutermost(right)};
    std::swap(linkToThis(), other.linkToThis());
    std::swap(child, other.child);
    std::swap(parent, other.parent);
    std::swap(colour, other.colour);
    adoptChildren(this); // if the two are neighbours, this also mends the upper one's parent
    adoptChildren(&other);
    for (Side side : {left, right}) {
        if (ends[side])
            ends[side]->child[side] = &other;
        if (otherEnds[side])
            otherEnds[side]->child[side] = this;
    }
}

RBTreeImpl::RBTreeImpl(unsigned long nodeSize) : allocator_(nodeSize, defaultNodesInBlock) {
    reset();
}

RBTreeImpl::~RBTreeImpl() {
    destructAllNodes();
}

void RBTreeImpl::reset() {
    end_ = {{&end_, &end_}, nullptr, red};
    count_ = 0;
}

void RBTreeImpl::reseatEnd() {
    if (root()) {
        root()->parent = &end_;
    } else {
        reset();
    }
}

void RBTreeImpl::initialize(const TypeUtil* typeUtil) {
    clear();
    typeUtil_ = typeUtil;
}

void RBTreeImpl::initialize(const RBTreeImpl& other) {
    if (this == &other)
        return;
    assert(allocator_.elementSize() == other.allocator_.elementSize());
    initialize(other.typeUtil_);
    copy(other);
}

void RBTreeImpl::swap(RBTreeImpl& other) noexcept {
    std::swap(end_, other.end_);
    std::swap(count_, other.count_);
    std::swap(typeUtil_, other.typeUtil_);
    allocator_.swap(other.allocator_);
    reseatEnd();
    other.reseatEnd();
}

void RBTreeImpl::copy(const RBTreeImpl& other) {
    if (this == &other)
        return;
    for (Node* node = other.begin(); node != other.end(); node = node->next())
        insertNodeNonUnique(end(), other.keyOf(node), other.valueOf(node));
}

void RBTreeImpl::clear() {
    destructAllNodes();
}

void RBTreeImpl::destructAllNodes() {
    if (root())
        typeUtil_->destroyAll(this, root());
    allocator_.freeEverything();
    reset();
}

void RBTreeImpl::setNumElementsInBlock(int elementsInBlock) {
    allocator_.setNumElementsInBlock(elementsInBlock);
}

int RBTreeImpl::count(const void* key) const {
    const auto [first, last] = equalRange(key);
    int count = 0;
    for (Node* node = first; node != last; node = node->next())
        ++count;
    return count;
}

std::pair<RBTreeImpl::Node*, RBTreeImpl::Node*> RBTreeImpl::equalRange(const void* key) const {
    return {lowerBound(key), upperBound(key)};
}

void* RBTreeImpl::getValuePtr(const void* key) const {
    Node* node = findNode(key);
    return node == end() ? nullptr : valueOf(node);
}

void RBTreeImpl::eraseNode(Node* node) {
    unlink(node);
    typeUtil_->destroyAll(this, node);
    allocator_.free(node);
}

void RBTreeImpl::eraseNodesRange(Node* first, Node* last) {
    while (first != last)
        eraseNode(std::exchange(first, first->next()));
}

int RBTreeImpl::eraseNodesMatching(const void* key) {
    const int before = count_;
    const auto [first, last] = equalRange(key);
    eraseNodesRange(first, last);
    return before - count_;
}

RBTreeImpl::Node* RBTreeImpl::insertNodeUnique(const void* key) {
    return insertUnlessThere(position(key), key, nullptr);
}

RBTreeImpl::Node* RBTreeImpl::insertNodeUnique(const void* key, const void* value) {
    return insertUnlessThere(position(key), key, value);
}

RBTreeImpl::Node* RBTreeImpl::insertNodeUnique(Node* hint, const void* key) {
    return insertUnlessThere(position(hint, key), key, nullptr);
}

RBTreeImpl::Node* RBTreeImpl::insertNodeUnique(Node* hint, const void* key, const void* value) {
    return insertUnlessThere(position(hint, key), key, value);
}

RBTreeImpl::Node* RBTreeImpl::insertNodeNonUnique(const void* key) {
    return insertAt(position(key), key, nullptr);
}

RBTreeImpl::Node* RBTreeImpl::insertNodeNonUnique(const void* key, const void* value) {
    return insertAt(position(key), key, value);
}

RBTreeImpl::Node* RBTreeImpl::insertNodeNonUnique(Node* hint, const void* key) {
    return insertAt(position(hint, key), key, nullptr);
}

RBTreeImpl::Node* RBTreeImpl::insertNodeNonUnique(Node* hint, const void* key, const void* value) {
    return insertAt(position(hint, key), key, value);
}

RBTreeImpl::Position RBTreeImpl::position(const void* key) const {
    Node* parent = nullptr;
    const bool onTheLeft = typeUtil_->findInsertPosition(this, key, &parent);
    return {parent, onTheLeft ? left : right};
}

RBTreeImpl::Position RBTreeImpl::position(Node* hint, const void* key) const {
    Node* const prior = hint->prev();
    const bool fits = (hint == end() || typeUtil_->less(key, keyOf(hint))) &&
                      (prior == end() || !typeUtil_->less(key, keyOf(prior)));
    if (!fits)
        return position(key);
    // One of two neighbours lies below the other, so that one of them has room.
    if (prior == end() || prior->child[right])
        return {hint, left};
    return {prior, right};
}

RBTreeImpl::Node* RBTreeImpl::insertUnlessThere(const Position& where, const void* key,
                                                const void* value) {
    Node* const prior = where.side == left ? where.parent->prev() : where.parent;
    if (prior != end() && !typeUtil_->less(keyOf(prior), key))
        return prior;
    return insertAt(where, key, value);
}

RBTreeImpl::Node* RBTreeImpl::insertAt(const Position& where, const void* key, const void* value) {
    Node* node = makeNode(key, value);
    link(node, where);
    return node;
}

RBTreeImpl::Node* RBTreeImpl::makeNode(const void* key, const void* value) {
    void* storage = allocator_.alloc();
    try {
        Node* node = ::new (storage) Node;
        typeUtil_->copyKey(const_cast<void*>(keyOf(node)), key);
        if (value && typeUtil_->copyValue)
            typeUtil_->copyValue(valueOf(node), value);
        else if (typeUtil_->defaultValue)
            typeUtil_->defaultValue(valueOf(node));
        return node;
    } catch (...) {
        allocator_.free(storage);
        throw;
    }
}

void RBTreeImpl::link(Node* node, const Position& where) {
    node->child[left] = nullptr;
    node->child[right] = nullptr;
    node->parent = where.parent;
    node->colour = red;
    if (where.parent == end()) { // the tree was empty
        end_ = {{node, node}, node, red};
    } else {
        where.parent->child[where.side] = node;
        if (end_.child[where.side] == where.parent)
            end_.child[where.side] = node;
    }
    ++count_;
    restoreAfterInsert(node);
}

/// Makes the child on the other side the parent of `node`, which goes down on `side`.
void RBTreeImpl::rotate(Node* node, Side side) {
    Node* const child = node->child[opposite(side)];
    node->linkToThis() = child;
    child->parent = node->parent;
    node->child[opposite(side)] = child->child[side];
    child->child[side] = node;
    adoptChildren(node);
    node->parent = child;
}

/// A red node may have come under a red parent: pushes the conflict upwards by recolouring while
/// the parent's sibling is red too, and ends it by at most two rotations.
void RBTreeImpl::restoreAfterInsert(Node* node) {
    while (node != root() && node->parent->colour == red) {
        Node* parent = node->parent;
        Node* const grandparent = parent->parent;
        const Side side = parent == grandparent->child[left] ? left : right;
        Node* const uncle = grandparent->child[opposite(side)];
        grandparent->colour = red;
        if (!isBlack(uncle)) {
            parent->colour = black;
            uncle->colour = black;
            node = grandparent;
            continue;
        }
        if (node != parent->child[side]) {
            rotate(parent, side);
            parent = node;
        }
        parent->colour = black;
        rotate(grandparent, opposite(side));
        break;
    }
    root()->colour = black;
}

void RBTreeImpl::unlink(Node* node) {
    if (node->child[left] && node->child[right])
        node->swapHeaders(*node->next()); // into a place with one child at most
    if (end_.child[left] == node)
        end_.child[left] = node->next();
    if (end_.child[right] == node)
        end_.child[right] = node->prev();
    Node* const child = node->child[left] ? node->child[left] : node->child[right];
    node->linkToThis() = child;
    if (child)
        child->parent = node->parent;
    if (node->colour == black)
        restoreAfterErase(child, node->parent);
    --count_;
    node->child[left] = nullptr;
    node->child[right] = nullptr;
    node->parent = nullptr;
}

/// The paths through `node`, perhaps null, are one black node short: reddens the sibling and goes
/// up while both of the sibling's children are black, and ends it by at most three rotations.
void RBTreeImpl::restoreAfterErase(Node* node, Node* parent) {
    while (node != root() && isBlack(node)) {
        const Side side = node == parent->child[left] ? left : right;
        const Side other = opposite(side);
        Node* sibling = parent->child[other];
        if (sibling->colour == red) {
            sibling->colour = black;
            parent->colour = red;
            rotate(parent, side);
            sibling = parent->child[other];
        }
        if (isBlack(sibling->child[left]) && isBlack(sibling->child[right])) {
            sibling->colour = red;
            node = parent;
            parent = node->parent;
            continue;
        }
        if (isBlack(sibling->child[other])) {
            sibling->child[side]->colour = black;
            sibling->colour = red;
            rotate(sibling, other);
            sibling = parent->child[other];
        }
        sibling->colour = parent->colour;
        parent->colour = black;
        sibling->child[other]->colour = black;
        rotate(parent, side);
        return;
    }
    if (node)
        node->colour = black;
}

} // namespace ze
