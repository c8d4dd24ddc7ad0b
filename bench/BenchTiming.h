#pragma once

#include <functional>
#include <string>

// Best wall-clock time in seconds of `rounds` runs of `work`. The best run is
// the one least disturbed by the rest of the machine.
double bestSeconds(int rounds, std::function<void()> const& work);

// Prints one figure: "name: ours X s, reference Y s, ratio Z (goal <= G)".
// A goal of 0 means the figure is only reported.
void reportRatio(char const* name, double ours, double reference, double goal);

// The reference reader: one open, one fstat, one malloc, one read(2) of the
// whole file, free. Aborts when the file cannot be read whole.
void readPlain(std::string const& path);
