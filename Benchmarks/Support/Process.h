#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vorlane::benchmarks {

/// What one run of a program measured of itself: it prints a number on a line.
double figureOf(const std::string& program, const std::vector<std::string>& arguments);

/// The program that is running.
std::string thisProgram();

/// How long the work takes.
double secondsOf(const std::function<void()>& work);
/// The processor time that this process has used, in seconds.
double processorTime();
/// The memory that this process has resident, in bytes.
std::int64_t residentMemory();
/// The part of it that is the process's own: not the code of programs and libraries, which processes share.
std::int64_t ownMemory();
/// Starts to take note of the most memory that is resident from now on; gives what is resident now.
std::int64_t startPeakMemory();
/// The most memory that was resident since then.
std::int64_t peakMemory();
/// How many threads this process has.
std::int64_t threadCount();

}  // namespace vorlane::benchmarks
