#pragma once

#include <string>
#include <string_view>

namespace LqTool {

// Text from a library file made safe for a terminal: control characters
// (C0, DEL, C1) and bytes that are not UTF-8 become \xNN or \u{NNNN}, so a
// name cannot move the cursor or change the terminal's state. The result is
// at most four times as long as the input.
std::string Printable(std::string_view text);

}  // namespace LqTool
