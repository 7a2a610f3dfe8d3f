#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vorlane::benchmarks {

/// Runs a program with further environment entries ("NAME=value"), and returns the number that it prints.
double figureOf(const std::string& program, const std::vector<std::string>& arguments,
                const std::vector<std::string>& environment = {});

/// Returns the path of the running program.
std::string thisProgram();

/// Returns the seconds of the monotonic clock, which all processes share.
double monotonicTime();
/// Returns the seconds that the work takes.
double secondsOf(const std::function<void()>& work);
/// Returns the processor time that this process has used, in seconds.
double processorTime();
/// Returns the processor time that the calling thread has used, in seconds.
double threadTime();
/// Returns the resident memory of this process, in bytes.
std::int64_t residentMemory();
/// Returns the part of it that processes do not share: all but the code of programs and libraries.
std::int64_t ownMemory();
/// Resets the peak of the resident memory, and returns the resident memory.
std::int64_t startPeakMemory();
/// Returns the peak of the resident memory since startPeakMemory().
std::int64_t peakMemory();
/// Returns the count of this process's threads.
std::int64_t threadCount();

}  // namespace vorlane::benchmarks
