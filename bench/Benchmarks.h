#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

class GlBenchContext;

// A benchmark is named WHAT/WHO/CASE. WHO is "ours", or a baseline that RatioReporter sets against it: "raw", the same
// work in bare GL calls, or what else the benchmark's own file says.
void registerEnvelopes();
void registerLruMap();
void registerDrawTiles(GlBenchContext const& context);
void registerExecuteFilter(GlBenchContext const& context);
void registerPixelTransfer(GlBenchContext const& context);
void registerStagingRing(GlBenchContext const& context);
void registerFilters(GlBenchContext const& context);
void registerWavelet(GlBenchContext const& context);
void registerClahe();

/// Cpu: of the calling thread, less noisy where everything happens on it. Process: of all threads, where the driver
/// draws on some of them. Wall: where neither sees the work.
enum class Clock { Wall, Cpu, Process };

/// The clock for what a benchmark draws.
Clock drawingClock(GlBenchContext const& context);

/// Registers a benchmark in which an exception ends that benchmark and not the program.
void registerGl(Clock clock, std::string const& name, std::function<void(benchmark::State&)> const& function);
