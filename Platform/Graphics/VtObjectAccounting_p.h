#pragma once

// Live-object accounting and the fault-injection seam behind
// VtGraphicsManager::GetLiveObjectCount and InjectFault.

#include "VtGraphicsTypes.h"

namespace VTC::gfx {

// Every object the manager hands out is counted while it lives.
void CountCreated();
void CountDestroyed();
int LiveObjectCount();

// Makes the (skip + 1)-th next TakeFault(kind) fire, once; `kind` and `skip`
// are checked by the caller.
void ArmFault(VtFaultKind kind, int skip);
void DisarmFaults();
bool IsFaultArmed(VtFaultKind kind);
// True when an injected fault of this kind fires now.
bool TakeFault(VtFaultKind kind);

}  // namespace VTC::gfx
