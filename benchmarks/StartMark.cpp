// The program that OpeningBenchmark starts: reports when it began to run, and ends.
#include <cstdint>
#include <cstdlib>
#include <ctime>

#include <fcntl.h>
#include <unistd.h>

int main() {
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    const std::int64_t nanoseconds = now.tv_sec * std::int64_t{1000000000} + now.tv_nsec;
    const char* const path = std::getenv("TAVO_START_MARK");
    const int pipe = path != nullptr ? ::open(path, O_WRONLY) : -1;
    return ::write(pipe, &nanoseconds, sizeof nanoseconds) == sizeof nanoseconds ? 0 : 1;
}
