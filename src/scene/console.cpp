#include "scene/console.h"

#include <cstdarg>
#include <cstdio>

void ConsolePrint(const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::vfprintf(stdout, format, args);
    va_end(args);
}
