#pragma once

#include <source_location>

namespace VTC::gfx {

// Failure records of one file of the graphics library. The line is taken
// where Fail is written, so every record points at the failing call, never
// at a helper.
class GraphicsLog {
public:
    explicit constexpr GraphicsLog(const char* source) : source_(source) {}

    void Fail(const char* code, std::source_location where = std::source_location::current()) const;

private:
    const char* source_;
};

}  // namespace VTC::gfx
