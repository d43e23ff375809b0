#include "Colour.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>

#include "LqBase.h"

namespace LqTool {

bool ParseColour(const std::string& text, unsigned int& colour)
{
    const std::size_t digits = text.size() - 1;
    if (text.empty() || text[0] != '#' || (digits != 6 && digits != 8) ||
        !std::all_of(text.begin() + 1, text.end(), [](unsigned char c) { return std::isxdigit(c) != 0; }))
        return false;
    unsigned int value = 0;
    std::from_chars(text.data() + 1, text.data() + text.size(), value, 16);
    colour = digits == 6 ? value | 0xFF000000u : value;
    return true;
}

std::string FormatColour(unsigned int colour)
{
    char text[12];
    if (ZEDAALPHAVAL(colour) == 0xFF)
        std::snprintf(text, sizeof text, "#%06X", colour & 0xFFFFFFu);
    else
        std::snprintf(text, sizeof text, "#%08X", colour);
    return text;
}

}  // namespace LqTool
