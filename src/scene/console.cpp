#include "scene/console.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace {
void WriteError(const char* prefix, const char* format, va_list args, const char* suffix) {
    std::fflush(stdout);
    std::fputs(prefix, stderr);
    std::vfprintf(stderr, format, args);
    std::fputs(suffix, stderr);
}
}  // namespace

void ConsolePrint(const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::vfprintf(stdout, format, args);
    va_end(args);
}

void ConsoleError(const char* format, ...) {
    va_list args;
    va_start(args, format);
    WriteError("ERROR: ", format, args, "\n");
    va_end(args);
}

void ConsoleErrorText(const char* format, ...) {
    va_list args;
    va_start(args, format);
    WriteError("", format, args, "");
    va_end(args);
}

void EndRun() {
    std::fflush(stdout);
    std::fflush(stderr);
    std::exit(1);
}

void EndRunFromWorkerThread() {
    std::fflush(stdout);
    std::fflush(stderr);
    std::_Exit(1);
}

void EndRun(const char* format, ...) {
    va_list args;
    va_start(args, format);
    WriteError("ERROR: ", format, args, "\n");
    va_end(args);
    EndRun();
}
