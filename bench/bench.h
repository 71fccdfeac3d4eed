/// @file
/// What a benchmark is: an operation, paired with its opponent on the same data in one process.

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "vexaCore.h"

namespace bench {

/// The work of one call.
using Work = std::function<void()>;

struct Benchmark {
    std::string operation;
    VexaType type;  ///< of the source
    VexaSize size;
    double bytes;  ///< read and written by a call
    Work vexa;
    Work peer;             ///< none where nothing means the same
    std::string peerName;  ///< what the opponent calls it
};

/// The benchmarks of one family for images of this size. Results of operation and opponent are compared while the
/// benchmarks are made; a difference ends the program.
std::vector<Benchmark> arithmeticBenchmarks(VexaSize size);
std::vector<Benchmark> logicBenchmarks(VexaSize size);
std::vector<Benchmark> mathBenchmarks(VexaSize size);
std::vector<Benchmark> conversionBenchmarks(VexaSize size);
std::vector<Benchmark> fillBenchmarks(VexaSize size);
std::vector<Benchmark> colorBenchmarks(VexaSize size);
std::vector<Benchmark> demosaicBenchmarks(VexaSize size);
std::vector<Benchmark> filterBenchmarks(VexaSize size);
std::vector<Benchmark> photometricBenchmarks(VexaSize size);
std::vector<Benchmark> statisticsBenchmarks(VexaSize size);
std::vector<Benchmark> geometryBenchmarks(VexaSize size);
std::vector<Benchmark> alignmentBenchmarks(VexaSize size);
std::vector<Benchmark> transformBenchmarks(VexaSize size);
std::vector<Benchmark> flowBenchmarks(VexaSize size);
std::vector<Benchmark> visionBenchmarks(VexaSize size);

/// The benchmarks whose sizes are their own.
std::vector<Benchmark> matrixBenchmarks();
std::vector<Benchmark> fourierBenchmarks();

}  // namespace bench
