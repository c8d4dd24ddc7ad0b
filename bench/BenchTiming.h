#pragma once

#include <functional>

// Best wall-clock time in seconds of `rounds` runs of `work`. The best run is
// the one least disturbed by the rest of the machine.
double bestSeconds(int rounds, std::function<void()> const& work);

// Prints one figure: "name: ours X s, reference Y s, ratio Z (goal <= G)".
// A goal of 0 means the figure is only reported.
void reportRatio(char const* name, double ours, double reference, double goal);
