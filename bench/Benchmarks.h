#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

class GlBenchContext;

// A benchmark is named WHAT/WHO/CASE. WHO is "ours", or a baseline with which RatioReporter compares it: "raw", the
// same work in bare GL calls, or another name that the benchmark's file explains.
void registerEnvelopes();
void registerLruMap();
void registerDrawTiles(GlBenchContext const& context);
void registerExecuteFilter(GlBenchContext const& context);
void registerPixelTransfer(GlBenchContext const& context);
void registerStagingRing(GlBenchContext const& context);
void registerFilters(GlBenchContext const& context);
void registerWavelet(GlBenchContext const& context);
void registerClahe();

/// Cpu: of the calling thread, least noisy if it does all the work. Process: of all threads, if the driver draws on
/// several. Wall: for work that neither clock measures.
enum class Clock { Wall, Cpu, Process };

/// The clock for benchmarks that draw.
Clock drawingClock(GlBenchContext const& context);

/// Registers a benchmark in which an exception ends that benchmark and not the program.
void registerGl(Clock clock, std::string const& name, std::function<void(benchmark::State&)> const& function);
