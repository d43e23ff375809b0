#include "VtObjectAccounting_p.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <mutex>

namespace VTC::gfx {

namespace {

std::atomic<int> g_liveObjects{0};

// Remaining calls before an injected fault fires, per kind; -1 when none.
std::mutex g_faultMutex;
std::array<int, VT_FAULT_KIND_COUNT> g_faultCountdown = [] {
    std::array<int, VT_FAULT_KIND_COUNT> countdown{};
    countdown.fill(-1);
    return countdown;
}();
// How many kinds have a fault armed, so that the factories' question costs
// one load while none is (as in every run but the fault tests').
std::atomic<int> g_armedKinds{0};

void SetCountdown(std::size_t kind, int value)
{
    int& countdown = g_faultCountdown[kind];
    g_armedKinds.fetch_add((value >= 0 ? 1 : 0) - (countdown >= 0 ? 1 : 0), std::memory_order_release);
    countdown = value;
}

}  // namespace

void CountCreated() { g_liveObjects.fetch_add(1, std::memory_order_relaxed); }
void CountDestroyed() { g_liveObjects.fetch_sub(1, std::memory_order_relaxed); }
int LiveObjectCount() { return g_liveObjects.load(); }

void ArmFault(VtFaultKind kind, int skip)
{
    const std::lock_guard lock(g_faultMutex);
    SetCountdown(static_cast<std::size_t>(kind), skip);
}

void DisarmFaults()
{
    const std::lock_guard lock(g_faultMutex);
    for (std::size_t kind = 0; kind < g_faultCountdown.size(); ++kind) {
        SetCountdown(kind, -1);
    }
}

bool IsFaultArmed(VtFaultKind kind)
{
    if (kind < 0 || kind >= VT_FAULT_KIND_COUNT) {
        return false;
    }
    const std::lock_guard lock(g_faultMutex);
    return g_faultCountdown[static_cast<std::size_t>(kind)] >= 0;
}

bool TakeFault(VtFaultKind kind)
{
    if (kind < 0 || kind >= VT_FAULT_KIND_COUNT || g_armedKinds.load(std::memory_order_acquire) == 0) {
        return false;
    }
    const std::lock_guard lock(g_faultMutex);
    const auto index = static_cast<std::size_t>(kind);
    const int countdown = g_faultCountdown[index];
    if (countdown < 0) {
        return false;
    }
    SetCountdown(index, countdown - 1);
    return countdown == 0;
}

}  // namespace VTC::gfx
