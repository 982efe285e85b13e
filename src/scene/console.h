// Progress output of the tool: printf-style text to standard output.
#pragma once

#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
void ConsolePrint(const char* format, ...);
