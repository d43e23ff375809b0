#include "VtGraphicsLog_p.h"

#include "LqToolkit.h"

namespace VTC::gfx {

void GraphicsLog::Fail(const char* code, std::source_location where) const
{
    VtLogFile::GetInstance(false)->RecordLog(300, code, source_, static_cast<int>(where.line()));
}

}  // namespace VTC::gfx
