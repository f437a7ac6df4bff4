// The library's debug output: one line on the channel CFGQ at level 2, the text always passed as
// the argument of a "%s" format (a text may hold '%').
// May use: nothing of the library (Qt and the standard library only).
#pragma once

#include <string>

// True when the channel CFGQ prints at level 2; ask before formatting a costly text.
bool cfgq_debug_enabled();

// Posts `text` on the channel CFGQ at level 2 (printed only when the channel is on).
void cfgq_debug(const std::string& text);
