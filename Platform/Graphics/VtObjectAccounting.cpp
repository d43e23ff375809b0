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

}  // namespace

void CountCreated() { g_liveObjects.fetch_add(1, std::memory_order_relaxed); }
void CountDestroyed() { g_liveObjects.fetch_sub(1, std::memory_order_relaxed); }
int LiveObjectCount() { return g_liveObjects.load(); }

void ArmFault(VtFaultKind kind, int skip)
{
    const std::lock_guard lock(g_faultMutex);
    g_faultCountdown[static_cast<std::size_t>(kind)] = skip;
}

void DisarmFaults()
{
    const std::lock_guard lock(g_faultMutex);
    g_faultCountdown.fill(-1);
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
    if (kind < 0 || kind >= VT_FAULT_KIND_COUNT) {
        return false;
    }
    const std::lock_guard lock(g_faultMutex);
    int& countdown = g_faultCountdown[static_cast<std::size_t>(kind)];
    if (countdown < 0) {
        return false;
    }
    return countdown-- == 0;
}

}  // namespace VTC::gfx
