// Wall-clock and peak-memory figures for the mesh post-processing benchmarks.
#pragma once

#include <chrono>
#include <cstdio>
#include <sys/resource.h>

class BenchClock {
public:
    BenchClock() : start_(std::chrono::steady_clock::now()) {}
    double Seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    }

private:
    std::chrono::steady_clock::time_point start_;
};

// Processor time of the whole process so far (all threads), in seconds: on a shared machine
// a steadier figure than wall time.
inline double CpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           1e-6 * double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

inline long PeakRssKiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}
