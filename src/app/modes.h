#pragma once

#include <span>
#include <string>
#include <vector>

namespace tandrel {

using Arguments = std::vector<std::string>;

// One command-line mode: what runs when the first argument is exactly `argument`. `run` gets all
// arguments after the program's name and returns the exit status.
struct Mode {
    std::string_view argument;
    std::string_view operands;
    std::string_view help;
    int (*run)(const Arguments& arguments);
};

std::span<const Mode> modes();

// Runs what the arguments ask for: a mode, a mirror tool, or the application.
int runProgram(const Arguments& arguments);

}  // namespace tandrel
