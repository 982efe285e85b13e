#pragma once

// The option summary, to standard output.
void PrintHelp();
