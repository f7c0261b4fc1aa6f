#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

class GlBenchContext;

// A benchmark is named WHAT/WHO/CASE. WHO is "ours", or a baseline that RatioReporter sets against it: "raw", the same work
// in bare GL calls, or what else the benchmark's own file says.
void registerEnvelopes();
void registerLruMap();
void registerDrawTiles(GlBenchContext const& context);
void registerExecuteFilter(GlBenchContext const& context);
void registerPixelTransfer(GlBenchContext const& context);
void registerStagingRing(GlBenchContext const& context);

/// Wall where the driver may draw on threads of its own; where everything happens on the calling thread its CPU time is
/// less noisy.
enum class Clock { Wall, Cpu };

/// Registers a benchmark in which an exception ends that benchmark and not the program.
void registerGl(Clock clock, std::string const& name, std::function<void(benchmark::State&)> const& function);
