#pragma once

#include <CLI/CLI.hpp>

namespace tarno2 {

/// What every program of the command line takes: `--version`, and `--list-options`, by which the completion of shells
/// and the check of the manual pages learn what a program takes. The program has to have its name.
void addUsualOptions(CLI::App& app);

}  // namespace tarno2
