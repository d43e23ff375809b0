#include "Printable.h"

#include <cstdio>

#include <utf8.h>

namespace LqTool {

namespace {

bool IsControl(char32_t codePoint)
{
    return codePoint < 0x20 || (codePoint >= 0x7F && codePoint < 0xA0);
}

void AppendEscaped(std::string& out, const char* format, unsigned int value)
{
    char buffer[12];
    std::snprintf(buffer, sizeof buffer, format, value);
    out += buffer;
}

}  // namespace

std::string Printable(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    auto at = text.begin();
    while (at != text.end()) {
        const auto invalid = utf8::find_invalid(at, text.end());
        while (at != invalid) {
            const auto start = at;
            const char32_t codePoint = utf8::unchecked::next(at);
            if (!IsControl(codePoint))
                out.append(start, at);
            else if (codePoint < 0x80)
                AppendEscaped(out, "\\x%02X", static_cast<unsigned int>(codePoint));
            else
                AppendEscaped(out, "\\u{%04X}", static_cast<unsigned int>(codePoint));
        }
        if (at != text.end())
            AppendEscaped(out, "\\x%02X", static_cast<unsigned char>(*at++));
    }
    return out;
}

}  // namespace LqTool
