#pragma once
// Private to the module: not installed.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace VTC {

// A map from int to slot number: open addressing with linear probing, so that
// a search mostly touches one cache line of the table. Erasing moves later
// entries of the probe run back, so no tombstones build up. A bit array of an
// eighth of the table's size answers most searches for absent keys (the
// common case when a tree is searched group by group) without the table;
// erased keys leave their bits set until the array is rebuilt.
class VtSlotTable {
public:
    static constexpr std::uint32_t none = 0xFFFFFFFFu;

    // The slot of `key`, or none.
    std::uint32_t Find(int key) const;
    // False, changing nothing, when `key` is present already.
    bool Insert(int key, std::uint32_t slot);
    void Erase(int key);
    // Exchanges the slots of two present keys.
    void SwapSlots(int a, int b);
    bool Contains(int key) const { return Find(key) != none; }
    void Clear(std::size_t expected);

private:
    struct Entry {
        int key = 0;
        std::uint32_t slot = none;
    };

    std::size_t Home(int key) const;
    std::size_t Position(int key) const;  // of the key, or of the empty entry that ends its run
    void Grow();
    std::size_t FilterBit(int key) const;
    bool MayHold(int key) const;
    void Mark(int key);
    void RebuildFilter();

    std::vector<Entry> entries_;  // a power of two of them, at most three quarters used
    std::size_t used_ = 0;
    unsigned shift_ = 32;
    std::vector<std::uint64_t> filter_;  // eight bits per entry
    std::size_t erasedSinceFilter_ = 0;
};

// Where each value of an owner's sequence of ints stands, so that the first
// position of a value is found without a scan. The owner keeps the sequence
// and reports each change right where it makes it; changes that move many
// entries at once (sorting, inserting before the end, loading) only mark the
// index stale, and the next search rebuilds it. Short sequences, and
// sequences that hold a value twice, are scanned instead.
//
// Positions are counted by slots: each entry keeps the slot it got when it
// was appended, removed entries leave their slot empty, and a Fenwick tree
// over the slots counts the entries before a slot.
class VtPositionIndex {
public:
    // The first position of `value` in `values`, or -1.
    int Find(const std::vector<int>& values, int value);
    // The largest value of a non-empty `values`.
    int Largest(const std::vector<int>& values);

    // After `values.push_back`.
    void Appended(const std::vector<int>& values);
    // Before entries first .. first + count - 1 of `values` are erased.
    void Erasing(const std::vector<int>& values, std::size_t first, std::size_t count);
    // After entries a and b of `values` were exchanged.
    void Swapped(const std::vector<int>& values, std::size_t a, std::size_t b);
    // After one entry holding `oldValue` was set to `newValue`.
    void Replaced(int oldValue, int newValue);
    // After any other change.
    void Invalidate();

private:
    enum class State : std::uint8_t { stale, indexed, scanned };

    void Rebuild(const std::vector<int>& values);
    void GrowSlots(std::size_t slotCount);
    void BuildTree();
    void SetAlive(std::size_t slot, bool alive);
    int EntriesBefore(std::size_t slot) const;
    bool Usable(const std::vector<int>& values);

    State state_ = State::stale;
    VtSlotTable slotOf_;
    std::vector<std::uint8_t> alive_;  // per slot
    std::vector<int> tree_;            // Fenwick tree over alive_, 1-based
    std::size_t slotCount_ = 0;
    std::size_t aliveCount_ = 0;
    std::size_t firstEmptySlot_ = SIZE_MAX;  // before it, a slot's number is its position
    int largest_ = 0;
    bool largestKnown_ = false;
};

}  // namespace VTC
