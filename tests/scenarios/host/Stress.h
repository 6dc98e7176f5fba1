// Settings under load: many threads in many processes write, read and ring. What anybody writes
// tells who wrote it, so that a reader knows a value that nobody wrote.
#pragma once

#include <string>

namespace stress {

constexpr int kProcesses = 3;
constexpr int kThreads = 3;        // in each process
constexpr int kOperations = 1500;  // of each thread
constexpr int kRungTypes[] = {0, 4};
constexpr char kUserMode[] = "Stress%1";

// The n-th value of a writer; writer 0 is who seeds the store ahead of everybody else, with n = 0.
constexpr int kValuesOfAWriter = 1000000;
constexpr int Written(int writer, int n) { return writer * kValuesOfAWriter + n * 10 + 7; }

// Whether one of the writers can have written it.
constexpr bool IsWritten(int value, int firstWriter, int lastWriter) {
  const int n = value % kValuesOfAWriter / 10;
  return value >= 0 && value % 10 == 7 && value / kValuesOfAWriter >= firstWriter &&
         value / kValuesOfAWriter <= lastWriter && n < kOperations;
}

// Writers 1 to threads of process 0, the next of process 1 and so on, operations each. Gives the
// numbers of operations, reads, rings and wrong answers, with a blank between.
std::string Run(int process, int threads, int operations);

}  // namespace stress
