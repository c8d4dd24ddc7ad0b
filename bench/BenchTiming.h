#pragma once

#include <functional>
#include <string>

// Best wall-clock time in seconds of `rounds` runs of `work`. The best run is
// the one least disturbed by the rest of the machine.
double bestSeconds(int rounds, std::function<void()> const& work);

// CPU time (user + system) of this process so far, in seconds.
double cpuSeconds();

// Prints " (goal <= G: met)", with "MISSED" for a ratio over the goal, or
// " (reported)" when the goal is 0.
void printVerdict(double ratio, double goal);

// Prints one figure on a line of its own:
//   "NAME: ours X s, reference Y s, ratio Z (goal <= G: met) [ours: WAY; reference: WAY]"
// bench/run.sh reads these lines into its table, so NAME must not contain ": ".
void reportRatio(char const* name, double ours, double reference, double goal);

// How the reference of the figures printed from now on runs. Until it is
// set, the reference runs in this process, the same way as ours.
void setReferenceWay(std::string const& way);

// The reference reader: one open, one fstat, one malloc, one read(2) of the
// whole file, free. Aborts when the file cannot be read whole.
void readPlain(std::string const& path);

// Writes the file; ends the program with a message when it cannot.
void writeFile(std::string const& path, std::string const& text);

