#pragma once

#include <cstdint>

// Hexadecimal dumps on standard output, upper-case, for looking at buffers during development.

/// Prints lines of up to 16 bytes, two digits a byte, without separators. Length 0 prints nothing;
/// a negative length prints one empty line unless it is a multiple of 16.
void mem_dump(const std::uint8_t* bytes, std::int32_t length);

/// Prints "0x", eight digits, ", " and no line end.
void prn_DWORD(std::uint32_t word);

/// Prints the title, then rows of four words. A row is always whole: with a `count`
/// that is no multiple of 4 up to three words past it are read, so pass multiples of 4.
void print_DWORD(const char* title, const std::uint32_t* words, std::int32_t count);
