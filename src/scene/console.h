// The console channels of the tool. Progress goes to standard output; reports of faults
// go to standard error, always after the progress written so far, so that the two streams
// read in order on one terminal. EndRun is the one place where a run ends early.
#pragma once

#if defined(__GNUC__)
#define VURL_PRINTF_FORMAT(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define VURL_PRINTF_FORMAT(formatIndex, firstArgument)
#endif

// printf-style progress text to standard output; the caller supplies the line end.
VURL_PRINTF_FORMAT(1, 2) void ConsolePrint(const char* format, ...);

// Flushes standard output, then writes "ERROR: ", the formatted text and a line end to
// standard error.
VURL_PRINTF_FORMAT(1, 2) void ConsoleError(const char* format, ...);

// Flushes standard output, then writes the formatted text to standard error as it stands:
// for the fixed diagnostics that carry no "ERROR: " prefix. The caller supplies the line end.
VURL_PRINTF_FORMAT(1, 2) void ConsoleErrorText(const char* format, ...);

// Ends the run with exit code 1 after flushing both streams. Every early end of the process
// goes through here.
[[noreturn]] void EndRun();

// Reports as ConsoleError does, then ends the run as EndRun() does.
[[noreturn]] VURL_PRINTF_FORMAT(1, 2) void EndRun(const char* format, ...);

// Ends the run with exit code 1 at once, without the destructors of static objects: for a
// library's worker thread, while the run's own thread may still use those objects.
[[noreturn]] void EndRunFromWorkerThread();
