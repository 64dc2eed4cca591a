#pragma once

/// Ends the process by SIGABRT, on purpose, where an input does not fit the fixed buffer that it is
/// meant for. What was printed so far is flushed first; nothing else is printed or written.
[[noreturn]] void abort_on_overflow();
