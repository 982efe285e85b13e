// Lines to standard error and the end of a run, for the avatar assembly.
// Private to the avatar library.
//
// TEMPORARY: stands in for ConsoleError and EndRun of scene/console.h until they exist.
#pragma once

#include <cstdio>
#include <cstdlib>

// Standard output is flushed first, so the line lands after the progress printed before it.
inline void StderrLine(const char* text) {
    std::fflush(stdout);
    std::fputs(text, stderr);
    std::fputc('\n', stderr);
    std::fflush(stderr);
}

[[noreturn]] inline void EndAvatarRun() {
    std::fflush(stdout);
    std::exit(1);
}
