#pragma once

#include "front/dispatch.h"

/// Run one command of scheme 1.1 or 2.1; the arguments are those of the process.
/// @return the command's status: 0, -1 or a status code.
std::int32_t sb10_main(int argument_count, sealwright::Arguments arguments);
std::int32_t sb20_main(int argument_count, sealwright::Arguments arguments);

/// The same with the stage-2 commands alone.
std::int32_t sb10_main_client(int argument_count, sealwright::Arguments arguments);
std::int32_t sb20_main_client(int argument_count, sealwright::Arguments arguments);
