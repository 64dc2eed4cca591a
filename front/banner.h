#pragma once

#include "front/command_table.h"

/// Prints the banner of scheme 2.1 or 1.1: an empty line, the title, the notice of six lines and an
/// empty line.
void print_sb20_banner();
void print_sb10_banner();

/// Prints the version line and returns 0. The tool reports one version for both schemes, on
/// purpose.
std::int32_t print_version(Arguments arguments);
