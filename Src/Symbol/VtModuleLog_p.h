#pragma once
// Private to the module: not installed.

#include <source_location>

namespace VTC {

// Failure records of one class of the module. The line is taken where Fail is
// written, so every record points at the failing call, never at a helper.
class VtModuleLog {
public:
    explicit constexpr VtModuleLog(const char* source) : source_(source) {}

    void Fail(const char* code, std::source_location where = std::source_location::current()) const;
    void Fail(const char* code, int level, std::source_location where = std::source_location::current()) const;

private:
    const char* source_;
};

inline constexpr VtModuleLog symbolLibLog{"Src/Symbol/VtSymbolLib"};
inline constexpr VtModuleLog symbolGroupLog{"Src/Symbol/VtSymbolGroup"};
inline constexpr VtModuleLog especialFillLog{"Src/Symbol/VtEspecialFill"};

}  // namespace VTC
