#include "LqTestSupport.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace lqtest {

namespace fs = std::filesystem;

fs::path MakeFolder(const fs::path& parent, const std::string& prefix)
{
    std::string pattern = (parent / (prefix + "XXXXXX")).string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("cannot create a temporary folder " + pattern);
    return pattern;
}

TempDir::TempDir(const std::string& prefix) : root_(MakeFolder(fs::temp_directory_path(), prefix)) {}

TempDir::~TempDir()
{
    // A test may have taken its own write permission away to see a refusal.
    std::error_code ignored;
    fs::permissions(root_, fs::perms::owner_all, fs::perm_options::add, ignored);
    fs::remove_all(root_, ignored);
}

ZEDA::ZedaUnicodeString TempDir::Unicode(const std::string& name) const
{
    return ZEDA::ZedaUnicodeString::FromUtf8(Path(name).string());
}

ZEDA::ZedaUnicodeString TempDir::Dir() const { return ZEDA::ZedaUnicodeString::FromUtf8(root_.string() + "/"); }

PrivateTmpdir::PrivateTmpdir(const std::string& prefix) : TempDir(prefix)
{
    fs::create_directory(Tmp());
    setenv("TMPDIR", Tmp().c_str(), 1);
}

std::vector<unsigned char> ReadFileBytes(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string ReadFileText(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string ReadFileText(const ZEDA::ZedaUnicodeString& path) { return ReadFileText(fs::path(path.ToUtf8())); }

void WriteFile(const fs::path& path, std::string_view bytes)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

void WriteFile(const fs::path& path, const std::vector<unsigned char>& bytes)
{
    WriteFile(path, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

void WriteFile(const ZEDA::ZedaUnicodeString& path, std::string_view bytes) { WriteFile(fs::path(path.ToUtf8()), bytes); }

std::vector<VTC::VtLogRecord> TakeLogRecords()
{
    auto* log = VTC::VtLogFile::GetInstance(false);
    std::vector<VTC::VtLogRecord> records = log->GetRecords();
    log->ClearRecords();
    return records;
}

}  // namespace lqtest
