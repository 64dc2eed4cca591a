#pragma once

// How a run ends before its command is through.

namespace sealwright {

/// Sees to it that no end of the process, a crash included, leaves its memory in a core file, and
/// that other processes of the same user cannot look into it. For the start of `main`.
void forbid_core_dumps();

/// Ends the process by SIGABRT where going on would be wrong: an input that does not fit the fixed
/// buffer it is meant for, or no source of randomness. What was printed so far is flushed first;
/// nothing else is printed or written.
[[noreturn]] void abort_run();

/// Prints "file open error\n" and returns the number of characters printed.
int print_file_open_error();

/// Prints "file open error\n" and ends the process with exit status 255.
[[noreturn]] void fail_file_open();

}  // namespace sealwright
