#pragma once

#include <string>

// The one colour syntax of lqsymbol, read and written everywhere: "#RRGGBB"
// (opaque) or "#AARRGGBB", hexadecimal digits in either case.
namespace LqTool {

bool ParseColour(const std::string& text, unsigned int& colour);
// "#RRGGBB" for an opaque colour, "#AARRGGBB" otherwise.
std::string FormatColour(unsigned int colour);

}  // namespace LqTool
