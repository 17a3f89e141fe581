#pragma once
// The resident memory of the running benchmark, for the benchmarks that show
// a bound holds (floods): read from /proc, so Linux only.
#include <fstream>
#include <string>

namespace mv::bench {

// Resident set size of this process in kB (VmRSS), 0 when unknown.
inline double residentKb() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("VmRSS:", 0) == 0) return std::stod(line.substr(6));
    return 0;
}

}  // namespace mv::bench
