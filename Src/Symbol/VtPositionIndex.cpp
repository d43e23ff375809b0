#include "VtPositionIndex_p.h"

#include <algorithm>

namespace VTC {

namespace {

// Below this length a scan is as quick as the index and needs no upkeep.
constexpr std::size_t scanBelow = 32;
constexpr std::size_t minSlots = 64;

int Scan(const std::vector<int>& values, int value)
{
    const auto found = std::find(values.begin(), values.end(), value);
    return found == values.end() ? -1 : static_cast<int>(found - values.begin());
}

}  // namespace

// ---- VtSlotTable ----

std::size_t VtSlotTable::Home(int key) const
{
    // Fibonacci hashing: consecutive keys land far apart.
    return (static_cast<std::uint32_t>(key) * 0x9E3779B9u) >> shift_;
}

std::size_t VtSlotTable::Position(int key) const
{
    const std::size_t mask = entries_.size() - 1;
    std::size_t i = Home(key);
    while (entries_[i].slot != none && entries_[i].key != key)
        i = (i + 1) & mask;
    return i;
}

std::uint32_t VtSlotTable::Find(int key) const
{
    return entries_.empty() || !MayHold(key) ? none : entries_[Position(key)].slot;
}

std::size_t VtSlotTable::FilterBit(int key) const
{
    // Another multiplier than the table's, so that keys sharing a run rarely share a bit.
    return (static_cast<std::uint32_t>(key) * 0x85EBCA6Bu) >> (shift_ - 3);
}

bool VtSlotTable::MayHold(int key) const
{
    const std::size_t bit = FilterBit(key);
    return ((filter_[bit / 64] >> (bit % 64)) & 1u) != 0;
}

void VtSlotTable::Mark(int key)
{
    const std::size_t bit = FilterBit(key);
    filter_[bit / 64] |= std::uint64_t{1} << (bit % 64);
}

// Clears the bits that erased keys left behind.
void VtSlotTable::RebuildFilter()
{
    std::fill(filter_.begin(), filter_.end(), 0);
    for (const Entry& entry : entries_) {
        if (entry.slot != none)
            Mark(entry.key);
    }
    erasedSinceFilter_ = 0;
}

bool VtSlotTable::Insert(int key, std::uint32_t slot)
{
    if (4 * (used_ + 1) > 3 * entries_.size())
        Grow();
    Entry& entry = entries_[Position(key)];
    if (entry.slot != none)
        return false;
    entry = {key, slot};
    ++used_;
    Mark(key);
    return true;
}

void VtSlotTable::Erase(int key)
{
    if (entries_.empty())
        return;
    const std::size_t mask = entries_.size() - 1;
    std::size_t hole = Position(key);
    if (entries_[hole].slot == none)
        return;
    // Entries after the hole whose home is not between the hole and them move into it.
    for (std::size_t next = (hole + 1) & mask; entries_[next].slot != none; next = (next + 1) & mask) {
        const std::size_t home = Home(entries_[next].key);
        const bool staysAfterHole = hole <= next ? (home > hole && home <= next) : (home > hole || home <= next);
        if (!staysAfterHole) {
            entries_[hole] = entries_[next];
            hole = next;
        }
    }
    entries_[hole] = Entry{};
    --used_;
    if (++erasedSinceFilter_ > entries_.size() / 4)
        RebuildFilter();
}

void VtSlotTable::SwapSlots(int a, int b)
{
    std::swap(entries_[Position(a)].slot, entries_[Position(b)].slot);
}

void VtSlotTable::Clear(std::size_t expected)
{
    std::size_t size = 16;
    shift_ = 28;
    while (3 * size < 4 * expected) {
        size *= 2;
        --shift_;
    }
    entries_.assign(size, Entry{});
    used_ = 0;
    filter_.assign(size * 8 / 64, 0);
    erasedSinceFilter_ = 0;
}

void VtSlotTable::Grow()
{
    std::vector<Entry> old = std::move(entries_);
    Clear(std::max<std::size_t>(old.size(), 8));
    for (const Entry& entry : old) {
        if (entry.slot != none) {
            entries_[Position(entry.key)] = entry;
            Mark(entry.key);
            ++used_;
        }
    }
}

// ---- VtPositionIndex ----

int VtPositionIndex::Find(const std::vector<int>& values, int value)
{
    if (values.size() < scanBelow || !Usable(values))
        return Scan(values, value);
    const std::uint32_t slot = slotOf_.Find(value);
    return slot == VtSlotTable::none ? -1 : EntriesBefore(slot);
}

int VtPositionIndex::Largest(const std::vector<int>& values)
{
    if (!largestKnown_) {
        largest_ = *std::max_element(values.begin(), values.end());
        largestKnown_ = true;
    }
    return largest_;
}

void VtPositionIndex::Appended(const std::vector<int>& values)
{
    const int value = values.back();
    if (largestKnown_)
        largest_ = std::max(largest_, value);
    if (state_ != State::indexed)
        return;
    const std::uint32_t slot = static_cast<std::uint32_t>(slotCount_);
    if (!slotOf_.Insert(value, slot)) {
        state_ = State::scanned;
        return;
    }
    GrowSlots(slotCount_ + 1);
    SetAlive(slot, true);
}

void VtPositionIndex::Erasing(const std::vector<int>& values, std::size_t first, std::size_t count)
{
    for (std::size_t i = first; i < first + count; ++i) {
        const int value = values[i];
        if (largestKnown_ && value == largest_)
            largestKnown_ = false;
        if (state_ != State::indexed)
            continue;
        const std::uint32_t slot = slotOf_.Find(value);
        if (slot == VtSlotTable::none) {
            state_ = State::stale;
            continue;
        }
        SetAlive(slot, false);
        slotOf_.Erase(value);
    }
    // A duplicate may be gone; and once most slots are empty, a rebuild packs them.
    if (state_ == State::scanned || slotCount_ - aliveCount_ > aliveCount_ + minSlots)
        state_ = State::stale;
}

void VtPositionIndex::Swapped(const std::vector<int>& values, std::size_t a, std::size_t b)
{
    if (state_ != State::indexed || a == b)
        return;
    if (!slotOf_.Contains(values[a]) || !slotOf_.Contains(values[b])) {
        state_ = State::stale;
        return;
    }
    slotOf_.SwapSlots(values[a], values[b]);
}

void VtPositionIndex::Replaced(int oldValue, int newValue)
{
    if (largestKnown_) {
        if (oldValue == largest_)
            largestKnown_ = false;
        else
            largest_ = std::max(largest_, newValue);
    }
    if (state_ == State::scanned)
        state_ = State::stale;
    if (state_ != State::indexed || oldValue == newValue)
        return;
    const std::uint32_t slot = slotOf_.Find(oldValue);
    if (slot == VtSlotTable::none || slotOf_.Contains(newValue)) {
        state_ = State::stale;
        return;
    }
    slotOf_.Erase(oldValue);
    slotOf_.Insert(newValue, slot);
}

void VtPositionIndex::Invalidate()
{
    state_ = State::stale;
    largestKnown_ = false;
}

bool VtPositionIndex::Usable(const std::vector<int>& values)
{
    if (state_ == State::stale)
        Rebuild(values);
    return state_ == State::indexed;
}

void VtPositionIndex::Rebuild(const std::vector<int>& values)
{
    slotOf_.Clear(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!slotOf_.Insert(values[i], static_cast<std::uint32_t>(i))) {
            slotOf_.Clear(0);
            state_ = State::scanned;
            return;
        }
    }
    alive_.assign(std::max(minSlots, 2 * values.size()), 0);
    std::fill_n(alive_.begin(), values.size(), 1);
    slotCount_ = values.size();
    firstEmptySlot_ = SIZE_MAX;
    BuildTree();
    state_ = State::indexed;
}

void VtPositionIndex::GrowSlots(std::size_t slotCount)
{
    if (slotCount > alive_.size()) {
        alive_.resize(std::max(minSlots, 2 * slotCount), 0);
        BuildTree();
    }
    slotCount_ = slotCount;
}

void VtPositionIndex::BuildTree()
{
    tree_.assign(alive_.size() + 1, 0);
    aliveCount_ = 0;
    for (std::size_t i = 1; i < tree_.size(); ++i) {
        tree_[i] += alive_[i - 1];
        aliveCount_ += alive_[i - 1];
        const std::size_t parent = i + (i & (~i + 1));
        if (parent < tree_.size())
            tree_[parent] += tree_[i];
    }
}

void VtPositionIndex::SetAlive(std::size_t slot, bool alive)
{
    const int delta = (alive ? 1 : 0) - alive_[slot];
    if (delta == 0)
        return;
    alive_[slot] = alive ? 1 : 0;
    if (!alive)
        firstEmptySlot_ = std::min(firstEmptySlot_, slot);
    for (std::size_t i = slot + 1; i < tree_.size(); i += i & (~i + 1))
        tree_[i] += delta;
    aliveCount_ = static_cast<std::size_t>(static_cast<long long>(aliveCount_) + delta);
}

int VtPositionIndex::EntriesBefore(std::size_t slot) const
{
    if (slot <= firstEmptySlot_)
        return static_cast<int>(slot);
    int count = 0;
    for (std::size_t i = slot; i > 0; i -= i & (~i + 1))
        count += tree_[i];
    return count;
}

}  // namespace VTC
