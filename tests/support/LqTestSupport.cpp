#include "LqTestSupport.h"

#include <cstdlib>
#include <stdexcept>
#include <system_error>

namespace lqtest {

TempDir::TempDir(const std::string& prefix)
{
    std::string pattern = (std::filesystem::temp_directory_path() / (prefix + "XXXXXX")).string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("cannot create a temporary folder under " + pattern);
    root_ = pattern;
}

TempDir::~TempDir()
{
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

ZEDA::ZedaUnicodeString TempDir::Unicode(const std::string& name) const
{
    return ZEDA::ZedaUnicodeString::FromUtf8(Path(name).string());
}

ZEDA::ZedaUnicodeString TempDir::Dir() const { return ZEDA::ZedaUnicodeString::FromUtf8(root_.string() + "/"); }

std::vector<VTC::VtLogRecord> TakeLogRecords()
{
    auto* log = VTC::VtLogFile::GetInstance(false);
    std::vector<VTC::VtLogRecord> records = log->GetRecords();
    log->ClearRecords();
    return records;
}

}  // namespace lqtest
