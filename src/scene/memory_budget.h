// The memory a run may use, and how a run that runs out of it ends.
#pragma once

#include <cstdint>
#include <string>

// Bytes the process may use: the machine's physical memory, or the address-space limit of the
// process when one is set lower.
uint64_t AvailableMemoryBytes();

// Empty when `estimate` bytes fit in `available`; otherwise the end of a refusal line,
// "would take N bytes of memory, more than the M bytes available".
std::string MemoryShortfall(uint64_t estimate, uint64_t available);

// What the run is doing, for the line an allocation failure ends it with: the driver names the
// input once and each stage as it begins ("loading the scene", "writing out.glb", ...).
void SetRunInput(const std::string& input);
void SetRunStage(const std::string& stage);

// Reports "ERROR: '<input>': not enough memory while <stage>" after the progress so far and ends
// the run with exit code 1. Allocates nothing, so it works with memory exhausted; callable from
// a library's worker thread too, where the process ends without running destructors.
[[noreturn]] void EndRunOutOfMemory();
