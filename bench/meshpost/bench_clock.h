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

inline long PeakRssKiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}
