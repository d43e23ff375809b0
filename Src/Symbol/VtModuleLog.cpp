#include "VtModuleLog_p.h"

#include "LqToolkit.h"

namespace VTC {

void VtModuleLog::Fail(const char* code, std::source_location where) const
{
    Fail(code, 300, where);
}

void VtModuleLog::Fail(const char* code, int level, std::source_location where) const
{
    VtLogFile::GetInstance(false)->RecordLog(level, code, source_, static_cast<int>(where.line()));
}

}  // namespace VTC
