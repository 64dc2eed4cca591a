#pragma once

#include <cstdint>

#include "front/command_table.h"

/// Runs one command of scheme 1.1; the arguments are those of the process.
/// @return the command's status: 0, -1 or a generator's code.
std::int32_t sb10_main(int argument_count, Arguments arguments);

/// The same with the stage-2 commands alone.
std::int32_t sb10_main_client(int argument_count, Arguments arguments);
