// A persistent sequence that adds up its items: a B+ tree whose nodes know the sum of a summary over
// everything below them. A SumTree is a value. A copy costs one reference count; an edit copies the nodes
// from the root to the place, or none of them when no copy shares them. Finding by position and editing take
// O(log n). Any thread may read or destroy a copy while another copy is edited.
#pragma once

#include "base/IntrusivePointer.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace quillmark {

/// An `Item` is a cheap value with a default constructor and a `summary()` that takes O(1). A `Summary` is
/// zero by default and has `+=`. `maxSlots` is how many items or children a node holds at most; it is at
/// least half full unless it is the root.
template <class Item, class Summary = std::remove_cvref_t<decltype(std::declval<const Item&>().summary())>,
    int maxSlots = 16>
class SumTree {
    static_assert(maxSlots >= 4, "two halves of a full node must still have two children each");

public:
    /// A place in the sequence. Behind the last item, `item` is null. Valid until the tree changes.
    struct Found {
        const Item* item = nullptr;
        int64_t index = 0;
        Summary before{}; ///< of all items before this one
    };

    /// The number that a dimension takes a Summary to.
    template <auto dimension>
    using Extent = std::remove_cvref_t<std::invoke_result_t<decltype(dimension), const Summary&>>;

    class Builder;

    SumTree() = default;
    explicit SumTree(std::span<const Item> items);

    bool isEmpty() const { return m_root.items == 0; }
    int64_t size() const { return m_root.items; }
    const Summary& summary() const { return m_root.sum; } ///< of all items
    const Item& operator[](int64_t index) const; ///< 0 ≤ index < size()
    Found at(int64_t index) const; ///< 0 ≤ index ≤ size()

    /// The item that holds position `target` ≥ 0 of a dimension: the first whose end lies behind it.
    /// A dimension takes a Summary to a number, as in find<&Summary::rows>(7).
    template <auto dimension> Found find(Extent<dimension> target) const;

    /// Calls `visit(item)` for the items first ≤ index < last in order, until it returns false.
    template <class Visit> void forEach(int64_t first, int64_t last, Visit visit) const;

    /// Calls `change(item)` with the item itself.
    template <class Change> void edit(int64_t index, Change change);

    /// Replaces the items first ≤ index < last. `with` must not lie in this tree.
    void replace(int64_t first, int64_t last, std::span<const Item> with);
    void insert(int64_t index, Item item) { replace(index, index, {&item, 1}); }
    void erase(int64_t first, int64_t last) { replace(first, last, {}); }
    void append(SumTree other) { m_root = concatenate(std::move(m_root), std::move(other.m_root)); }

    /// The items first ≤ index < last; shares all nodes but those at its edges.
    SumTree slice(int64_t first, int64_t last) const;

    /// True when both are copies of one tree, unchanged since: then their items are the same.
    bool isSameAs(const SumTree& other) const { return m_root.node.get() == other.m_root.node.get(); }

    /// The first broken rule in words; empty when the tree is sound. Walks the whole tree: for tests.
    std::string checkInvariants() const;

private:
    static constexpr int minSlots = maxSlots / 2;

    struct Node : ReferenceCounted {
        explicit Node(int heightAboveItems)
            : height(static_cast<int16_t>(heightAboveItems))
        {
        }
        static void destroy(Node* node);

        const int16_t height; ///< 0: the slots are items; otherwise branches to nodes one lower
        int16_t count = 0; ///< of slots in use
    };
    using NodePointer = IntrusivePointer<Node>;

    /// A node and what it adds up to. The tree itself is one: without a node while it is empty.
    struct Branch {
        Branch() = default;
        Branch(const Branch&) = default;
        Branch(Branch&& other) noexcept
            : node(std::move(other.node))
            , items(std::exchange(other.items, 0))
            , sum(std::exchange(other.sum, Summary{}))
        {
        }
        Branch& operator=(const Branch&) = default;
        Branch& operator=(Branch&& other) noexcept
        {
            node = std::move(other.node);
            items = std::exchange(other.items, 0);
            sum = std::exchange(other.sum, Summary{});
            return *this;
        }
        int height() const { return node->height; }

        NodePointer node;
        int64_t items = 0;
        Summary sum{};
    };

    template <class Slot> struct NodeOf : Node {
        using Node::Node;
        std::span<Slot> used() { return {slots.data(), static_cast<size_t>(this->count)}; }
        std::span<const Slot> used() const { return {slots.data(), static_cast<size_t>(this->count)}; }

        std::array<Slot, maxSlots> slots{};
    };
    using LeafNode = NodeOf<Item>;
    using InnerNode = NodeOf<Branch>;
    using Halves = std::pair<Branch, Branch>;

    static int64_t itemsIn(const Item&) { return 1; }
    static int64_t itemsIn(const Branch& branch) { return branch.items; }
    static Summary sumOf(const Item& item) { return item.summary(); }
    static const Summary& sumOf(const Branch& branch) { return branch.sum; }
    static const LeafNode& leaf(const Node& node) { return static_cast<const LeafNode&>(node); }
    static const InnerNode& inner(const Node& node) { return static_cast<const InnerNode&>(node); }

    explicit SumTree(Branch root)
        : m_root(std::move(root))
    {
    }

    // Reading.
    template <class Measure, class Value>
    static Found seek(const Branch& tree, Measure measure, Value target);
    template <class Measure, class Value>
    static const Item& descend(const Branch& tree, Measure measure, Value target, Found& found);
    template <class Slot, class Measure, class Value>
    static const Slot& pass(const NodeOf<Slot>& node, Measure measure, Value& target, Found& found);
    template <class Visit>
    static bool visitItems(const Node& node, int64_t first, int64_t last, Visit& visit);

    // Changing one node.
    template <class Slot> static NodeOf<Slot>& own(NodePointer& pointer);
    template <class Slot> static void addUp(Branch& branch, const NodeOf<Slot>& node);
    template <class Slot>
    static void moveSlots(NodeOf<Slot>& from, int first, int last, NodeOf<Slot>& to, int at);
    template <class Slot> static Branch cutOff(NodeOf<Slot>& node, int first);
    template <class Slot> static Halves balance(Branch left, Branch right);
    static Branch insertChild(Branch& parent, int at, Branch child);
    static int childAt(const InnerNode& node, int64_t& index);

    // Changing the tree.
    template <class Change> static void editLeafNode(Branch& branch, int64_t index, Change& change);
    bool fitsIntoLeafNode(int64_t first, int64_t last, int64_t count) const;
    void replaceInLeafNode(int64_t first, int64_t last, std::span<const Item> with);
    static Branch rooted(Branch branch);
    static Halves split(Branch tree, int64_t index);
    static Halves join(Branch left, Branch right);
    static Branch concatenate(Branch left, Branch right);

    template <class Slot> static std::string checkNode(const Branch& branch, bool isRoot);

    Branch m_root;
};

/// Builds a tree from items in order, each in constant time; its nodes are full. The builder is empty again
/// after finish().
template <class Item, class Summary, int maxSlots> class SumTree<Item, Summary, maxSlots>::Builder {
public:
    void push(Item item) { add(0, std::move(item)); }
    SumTree finish();

private:
    template <class Slot> void add(size_t height, Slot slot);

    std::vector<Branch> m_spine; ///< the unfinished node of each height; its sums are not kept up to date
};

} // namespace quillmark

#include "base/SumTreeImpl.h"
