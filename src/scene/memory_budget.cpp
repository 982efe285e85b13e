#include "scene/memory_budget.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <thread>

#include "scene/console.h"

namespace {
// Written by the driver's thread between stages only, so other threads of a stage read them
// without a lock.
std::string runInput;
std::string runStage = "starting";
std::thread::id runThread;
}  // namespace

uint64_t AvailableMemoryBytes() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    uint64_t available = pages > 0 && pageSize > 0 ? uint64_t(pages) * uint64_t(pageSize) : UINT64_MAX;
    rlimit limit{};
    if (getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY && limit.rlim_cur < available)
        available = limit.rlim_cur;
    return available;
}

std::string MemoryShortfall(uint64_t estimate, uint64_t available) {
    if (estimate <= available) return {};
    return "would take " + std::to_string(estimate) + " bytes of memory, more than the " + std::to_string(available) +
           " bytes available";
}

void SetRunInput(const std::string& input) {
    runInput = input;
    runThread = std::this_thread::get_id();
}

void SetRunStage(const std::string& stage) { runStage = stage; }

void EndRunOutOfMemory() {
    if (std::this_thread::get_id() == runThread)
        EndRun("'%s': not enough memory while %s", runInput.c_str(), runStage.c_str());
    // On a library's worker thread the driver's thread is still running the stage: the process
    // ends here, without the destructors that would pull objects from under it.
    ConsoleError("'%s': not enough memory while %s", runInput.c_str(), runStage.c_str());
    EndRunFromWorkerThread();
}
