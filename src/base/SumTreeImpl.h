// The bodies of SumTree. Three operations carry everything: editLeafNode() changes one node in place and adds
// up the path above it; split() cuts a tree in two; concatenate() puts two trees of any heights together. All
// three take and give sound trees, so that no half-balanced state exists between them.
#pragma once

#include "base/SumTree.h"

namespace quillmark {

template <class Item, class Summary, int maxSlots>
void SumTree<Item, Summary, maxSlots>::Node::destroy(Node* node)
{
    if (node->height == 0)
        delete static_cast<LeafNode*>(node);
    else
        delete static_cast<InnerNode*>(node); // recursion is as deep as the tree is high
}

// Reading

/// Steps over the slots that end at or before `target`, which becomes a position in the slot returned.
template <class Item, class Summary, int maxSlots>
template <class Slot, class Measure, class Value>
const Slot& SumTree<Item, Summary, maxSlots>::pass(
    const NodeOf<Slot>& node, Measure measure, Value& target, Found& found)
{
    const Slot* slot = node.slots.data();
    for (Value extent = measure(*slot); target >= extent; extent = measure(*++slot)) {
        assert(slot + 1 < node.slots.data() + node.count);
        target -= extent;
        found.index += itemsIn(*slot);
        found.before += sumOf(*slot);
    }
    return *slot;
}

/// The item that holds `target`, which lies in the tree; `found` gets all but the item.
template <class Item, class Summary, int maxSlots>
template <class Measure, class Value>
const Item& SumTree<Item, Summary, maxSlots>::descend(
    const Branch& tree, Measure measure, Value target, Found& found)
{
    assert(0 <= target && target < measure(tree));
    const Node* node = tree.node.get();
    while (node->height > 0)
        node = pass(inner(*node), measure, target, found).node.get();
    return pass(leaf(*node), measure, target, found);
}

template <class Item, class Summary, int maxSlots>
template <class Measure, class Value>
auto SumTree<Item, Summary, maxSlots>::seek(const Branch& tree, Measure measure, Value target) -> Found
{
    if (target >= measure(tree))
        return {.item = nullptr, .index = tree.items, .before = tree.sum};
    Found found;
    found.item = &descend(tree, measure, target, found);
    return found;
}

template <class Item, class Summary, int maxSlots>
auto SumTree<Item, Summary, maxSlots>::at(int64_t index) const -> Found
{
    return seek(m_root, [](const auto& slot) { return itemsIn(slot); }, index);
}

template <class Item, class Summary, int maxSlots>
const Item& SumTree<Item, Summary, maxSlots>::operator[](int64_t index) const
{
    Found place;
    return descend(m_root, [](const auto& slot) { return itemsIn(slot); }, index, place);
}

template <class Item, class Summary, int maxSlots>
template <auto dimension>
auto SumTree<Item, Summary, maxSlots>::find(Extent<dimension> target) const -> Found
{
    const auto extent
        = [](const auto& slot) -> Extent<dimension> { return std::invoke(dimension, sumOf(slot)); };
    return seek(m_root, extent, target);
}

template <class Item, class Summary, int maxSlots>
template <class Visit>
bool SumTree<Item, Summary, maxSlots>::visitItems(const Node& node, int64_t first, int64_t last, Visit& visit)
{
    if (node.height == 0) {
        const auto items = leaf(node).used();
        return std::all_of(items.begin() + first, items.begin() + last, std::ref(visit));
    }
    for (const Branch& child : inner(node).used()) {
        if (last <= 0)
            break;
        if (first < child.items
            && !visitItems(*child.node, std::max<int64_t>(first, 0), std::min(last, child.items), visit))
            return false;
        first -= child.items;
        last -= child.items;
    }
    return true;
}

template <class Item, class Summary, int maxSlots>
template <class Visit>
void SumTree<Item, Summary, maxSlots>::forEach(int64_t first, int64_t last, Visit visit) const
{
    assert(0 <= first && first <= last && last <= size());
    if (first < last)
        visitItems(*m_root.node, first, last, visit);
}

// Changing one node

/// The node for writing: itself when nobody shares it, otherwise a copy that takes its place.
template <class Item, class Summary, int maxSlots>
template <class Slot>
auto SumTree<Item, Summary, maxSlots>::own(NodePointer& pointer) -> NodeOf<Slot>&
{
    if (!pointer.isUnique()) {
        const auto& shared = static_cast<const NodeOf<Slot>&>(*pointer);
        auto* copy = new NodeOf<Slot>(shared.height);
        NodePointer holder(copy);
        std::copy_n(shared.slots.begin(), shared.count, copy->slots.begin());
        copy->count = shared.count;
        pointer = std::move(holder);
    }
    return static_cast<NodeOf<Slot>&>(*pointer);
}

template <class Item, class Summary, int maxSlots>
template <class Slot>
void SumTree<Item, Summary, maxSlots>::addUp(Branch& branch, const NodeOf<Slot>& node)
{
    int64_t items = 0;
    Summary sum{};
    for (const Slot& slot : node.used()) {
        items += itemsIn(slot);
        sum += sumOf(slot);
    }
    branch.items = items;
    branch.sum = sum;
}

/// Takes the slots first ≤ index < last out of one node and puts them into another one at `at`.
template <class Item, class Summary, int maxSlots>
template <class Slot>
void SumTree<Item, Summary, maxSlots>::moveSlots(
    NodeOf<Slot>& from, int first, int last, NodeOf<Slot>& to, int at)
{
    const int moved = last - first;
    assert(to.count + moved <= maxSlots);
    const auto source = from.slots.begin();
    const auto target = to.slots.begin();
    std::move_backward(target + at, target + to.count, target + to.count + moved);
    std::move(source + first, source + last, target + at);
    std::move(source + last, source + from.count, source + first);
    to.count = static_cast<int16_t>(to.count + moved);
    from.count = static_cast<int16_t>(from.count - moved);
}

/// Moves the slots from `first` on into a new node.
template <class Item, class Summary, int maxSlots>
template <class Slot>
auto SumTree<Item, Summary, maxSlots>::cutOff(NodeOf<Slot>& node, int first) -> Branch
{
    Branch tail;
    auto* fresh = new NodeOf<Slot>(node.height);
    tail.node = NodePointer(fresh);
    moveSlots(node, first, node.count, *fresh, 0);
    addUp(tail, *fresh);
    return tail;
}

/// Two neighbours of one height as one node, or as two that are full enough for any place in a tree.
template <class Item, class Summary, int maxSlots>
template <class Slot>
auto SumTree<Item, Summary, maxSlots>::balance(Branch left, Branch right) -> Halves
{
    const int total = left.node->count + right.node->count;
    const bool areOneNode = total <= maxSlots;
    if (!areOneNode && left.node->count >= minSlots && right.node->count >= minSlots)
        return {std::move(left), std::move(right)};

    NodeOf<Slot>& leftNode = own<Slot>(left.node);
    NodeOf<Slot>& rightNode = own<Slot>(right.node);
    const int wanted = areOneNode ? total : total / 2;
    if (leftNode.count < wanted)
        moveSlots(rightNode, 0, wanted - leftNode.count, leftNode, leftNode.count);
    else
        moveSlots(leftNode, wanted, leftNode.count, rightNode, 0);
    addUp(left, leftNode);
    if (areOneNode)
        return {std::move(left), Branch{}};
    addUp(right, rightNode);
    return {std::move(left), std::move(right)};
}

/// Puts a child into a node; when the node was full, its second half is cut off and returned.
template <class Item, class Summary, int maxSlots>
auto SumTree<Item, Summary, maxSlots>::insertChild(Branch& parent, int at, Branch child) -> Branch
{
    InnerNode& node = own<Branch>(parent.node);
    const auto put = [&child](InnerNode& into, int slot) {
        const auto slots = into.slots.begin();
        std::move_backward(slots + slot, slots + into.count, slots + into.count + 1);
        into.slots[static_cast<size_t>(slot)] = std::move(child);
        ++into.count;
    };
    Branch tail;
    if (node.count < maxSlots) {
        put(node, at);
    } else {
        tail = cutOff(node, minSlots);
        if (at <= minSlots) {
            put(node, at);
        } else {
            auto& tailNode = static_cast<InnerNode&>(*tail.node);
            put(tailNode, at - minSlots);
            addUp(tail, tailNode);
        }
    }
    addUp(parent, node);
    return tail;
}

/// The child that holds an item, or the last one for the index behind it; `index` becomes an index in the
/// child.
template <class Item, class Summary, int maxSlots>
int SumTree<Item, Summary, maxSlots>::childAt(const InnerNode& node, int64_t& index)
{
    int child = 0;
    for (; child + 1 < node.count; ++child) {
        const int64_t items = node.slots[static_cast<size_t>(child)].items;
        if (index < items)
            break;
        index -= items;
    }
    return child;
}

// Changing the tree

/// Calls `change(leafNode, slot)` on the node that holds an item, made writable, and adds up the path above
/// it.
template <class Item, class Summary, int maxSlots>
template <class Change>
void SumTree<Item, Summary, maxSlots>::editLeafNode(Branch& branch, int64_t index, Change& change)
{
    if (branch.height() == 0) {
        LeafNode& node = own<Item>(branch.node);
        change(node, static_cast<size_t>(index));
        addUp(branch, node);
        return;
    }
    InnerNode& node = own<Branch>(branch.node);
    const auto child = static_cast<size_t>(childAt(node, index));
    editLeafNode(node.slots[child], index, change);
    addUp(branch, node);
}

template <class Item, class Summary, int maxSlots>
template <class Change>
void SumTree<Item, Summary, maxSlots>::edit(int64_t index, Change change)
{
    assert(0 <= index && index < size());
    const auto changeItem = [&change](LeafNode& node, size_t slot) { change(node.slots[slot]); };
    editLeafNode(m_root, index, changeItem);
}

/// Whether one leaf node holds the whole run and can take `count` items in its place.
template <class Item, class Summary, int maxSlots>
bool SumTree<Item, Summary, maxSlots>::fitsIntoLeafNode(int64_t first, int64_t last, int64_t count) const
{
    if (!m_root.node)
        return false;
    const Node* node = m_root.node.get();
    const int64_t removed = last - first;
    while (node->height > 0) {
        const auto child = static_cast<size_t>(childAt(inner(*node), first));
        node = inner(*node).slots[child].node.get();
    }
    const int64_t left = node->count - removed + count;
    const int64_t least = m_root.height() == 0 ? 1 : minSlots;
    return first + removed <= node->count && least <= left && left <= maxSlots;
}

template <class Item, class Summary, int maxSlots>
void SumTree<Item, Summary, maxSlots>::replaceInLeafNode(
    int64_t first, int64_t last, std::span<const Item> with)
{
    const auto removed = static_cast<size_t>(last - first);
    const auto change = [&](LeafNode& node, size_t slot) {
        const auto at = node.slots.begin() + static_cast<ptrdiff_t>(slot);
        const auto tail = at + static_cast<ptrdiff_t>(removed);
        const auto end = node.slots.begin() + node.count;
        const auto newTail = at + static_cast<ptrdiff_t>(with.size());
        if (newTail > tail)
            std::move_backward(tail, end, newTail + (end - tail));
        else if (newTail < tail)
            std::fill(std::move(tail, end, newTail), end, Item{});
        std::copy(with.begin(), with.end(), at);
        node.count = static_cast<int16_t>(newTail + (end - tail) - node.slots.begin());
    };
    editLeafNode(m_root, first, change);
}

template <class Item, class Summary, int maxSlots>
void SumTree<Item, Summary, maxSlots>::replace(int64_t first, int64_t last, std::span<const Item> with)
{
    assert(0 <= first && first <= last && last <= size());
    if (fitsIntoLeafNode(first, last, static_cast<int64_t>(with.size())))
        return replaceInLeafNode(first, last, with);
    SumTree middle(with);
    auto [left, rest] = split(std::move(m_root), first);
    Branch right = split(std::move(rest), last - first).second;
    m_root = concatenate(concatenate(std::move(left), std::move(middle.m_root)), std::move(right));
}

template <class Item, class Summary, int maxSlots>
auto SumTree<Item, Summary, maxSlots>::slice(int64_t first, int64_t last) const -> SumTree
{
    assert(0 <= first && first <= last && last <= size());
    return SumTree(split(split(m_root, last).first, first).second);
}

/// A node as the root of a tree: one without slots is no tree, one with a single child gives way to it.
template <class Item, class Summary, int maxSlots>
auto SumTree<Item, Summary, maxSlots>::rooted(Branch branch) -> Branch
{
    if (branch.node->count == 0)
        return {};
    if (branch.height() > 0 && branch.node->count == 1)
        return inner(*branch.node).slots.front();
    return branch;
}

/// The trees of the items before `index` and from it on.
template <class Item, class Summary, int maxSlots>
auto SumTree<Item, Summary, maxSlots>::split(Branch tree, int64_t index) -> Halves
{
    if (index <= 0)
        return {Branch{}, std::move(tree)};
    if (index >= tree.items)
        return {std::move(tree), Branch{}};
    if (tree.height() == 0) {
        LeafNode& node = own<Item>(tree.node);
        Branch tail = cutOff(node, static_cast<int>(index));
        addUp(tree, node);
        return {std::move(tree), std::move(tail)};
    }
    InnerNode& node = own<Branch>(tree.node);
    const int child = childAt(node, index);
    Branch tail = cutOff(node, child + 1);
    auto [left, right] = split(std::move(node.slots[static_cast<size_t>(child)]), index);
    node.count = static_cast<int16_t>(child);
    addUp(tree, node);
    return {concatenate(rooted(std::move(tree)), std::move(left)),
        concatenate(std::move(right), rooted(std::move(tail)))};
}

/// Two trees as one of the greater height, or as two of it.
template <class Item, class Summary, int maxSlots>
auto SumTree<Item, Summary, maxSlots>::join(Branch left, Branch right) -> Halves
{
    if (left.height() == right.height()) {
        return left.height() == 0 ? balance<Item>(std::move(left), std::move(right))
                                  : balance<Branch>(std::move(left), std::move(right));
    }
    const bool leftIsTaller = left.height() > right.height();
    Branch& taller = leftIsTaller ? left : right;
    InnerNode& node = own<Branch>(taller.node);
    const int edge = leftIsTaller ? node.count - 1 : 0;
    Branch& child = node.slots[static_cast<size_t>(edge)];
    auto [first, second]
        = leftIsTaller ? join(std::move(child), std::move(right)) : join(std::move(left), std::move(child));
    child = std::move(first);
    Branch tail;
    if (second.node)
        tail = insertChild(taller, edge + 1, std::move(second));
    else
        addUp(taller, node);
    return {std::move(taller), std::move(tail)};
}

template <class Item, class Summary, int maxSlots>
auto SumTree<Item, Summary, maxSlots>::concatenate(Branch left, Branch right) -> Branch
{
    if (!left.node)
        return right;
    if (!right.node)
        return left;
    auto [first, second] = join(std::move(left), std::move(right));
    if (!second.node)
        return std::move(first);
    Branch root;
    auto* node = new InnerNode(first.height() + 1);
    root.node = NodePointer(node);
    node->slots[0] = std::move(first);
    node->slots[1] = std::move(second);
    node->count = 2;
    addUp(root, *node);
    return root;
}

// Building

template <class Item, class Summary, int maxSlots>
template <class Slot>
void SumTree<Item, Summary, maxSlots>::Builder::add(size_t height, Slot slot)
{
    if (height == m_spine.size())
        m_spine.emplace_back();
    if (m_spine[height].node && m_spine[height].node->count == maxSlots) {
        Branch full = std::move(m_spine[height]);
        addUp(full, static_cast<NodeOf<Slot>&>(*full.node));
        add(height + 1, std::move(full));
    }
    if (!m_spine[height].node)
        m_spine[height].node = NodePointer(new NodeOf<Slot>(static_cast<int>(height)));
    auto& node = static_cast<NodeOf<Slot>&>(*m_spine[height].node);
    node.slots[static_cast<size_t>(node.count++)] = std::move(slot);
}

template <class Item, class Summary, int maxSlots>
auto SumTree<Item, Summary, maxSlots>::Builder::finish() -> SumTree
{
    Branch tree;
    for (; !m_spine.empty(); m_spine.pop_back()) {
        Branch branch = std::move(m_spine.back());
        if (branch.height() == 0)
            addUp(branch, leaf(*branch.node));
        else
            addUp(branch, inner(*branch.node));
        tree = concatenate(std::move(tree), rooted(std::move(branch)));
    }
    return SumTree(std::move(tree));
}

template <class Item, class Summary, int maxSlots>
SumTree<Item, Summary, maxSlots>::SumTree(std::span<const Item> items)
{
    Builder builder;
    for (const Item& item : items)
        builder.push(item);
    *this = builder.finish();
}

// Checking

template <class Item, class Summary, int maxSlots>
template <class Slot>
std::string SumTree<Item, Summary, maxSlots>::checkNode(const Branch& branch, bool isRoot)
{
    const auto& node = static_cast<const NodeOf<Slot>&>(*branch.node);
    const int least = isRoot ? (node.height == 0 ? 1 : 2) : minSlots;
    if (node.count < least || node.count > maxSlots)
        return "a node of height " + std::to_string(node.height) + " has " + std::to_string(node.count)
            + " slots";
    Branch added;
    addUp(added, node);
    if (added.items != branch.items || !(added.sum == branch.sum))
        return "a node of height " + std::to_string(node.height) + " is added up wrongly";
    if constexpr (std::is_same_v<Slot, Branch>) {
        for (const Branch& child : node.used()) {
            if (!child.node || child.height() != node.height - 1)
                return "a node of height " + std::to_string(node.height) + " has a child of another height";
            std::string broken
                = child.height() == 0 ? checkNode<Item>(child, false) : checkNode<Branch>(child, false);
            if (!broken.empty())
                return broken;
        }
    }
    return {};
}

template <class Item, class Summary, int maxSlots>
std::string SumTree<Item, Summary, maxSlots>::checkInvariants() const
{
    if (!m_root.node)
        return m_root.items == 0 && m_root.sum == Summary{} ? "" : "an empty tree adds up to something";
    return m_root.height() == 0 ? checkNode<Item>(m_root, true) : checkNode<Branch>(m_root, true);
}

} // namespace quillmark
