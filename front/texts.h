#pragma once

// What the drivers and commands print on standard output. Scripts compare these texts as they
// stand, with their irregularities: the program's name in the 1.1 texts, "Posession", doubled
// blanks, angle brackets in an example.

inline constexpr char generating_2048_line[] = "RSA 2048 bits key is generating...\n";
inline constexpr char generating_1024_line[] = "RSA 1024 bits key is generating...\n";
inline constexpr char stage1_verified_line[] = "Stage 1: Signature verification is successful.\n";
inline constexpr char stage1_refused_line[] = "Stage 1: Signature verification is failed.\n";
inline constexpr char stage2_verified_line[] = "Stage 2: Signature verification is successful.\n";
inline constexpr char stage2_refused_line[] = "Stage 2: Signature verification is failed.\n";

namespace sealwright {

/// The banner of scheme 2.1 or 1.1: an empty line, the title, the notice of six lines and an empty
/// line.
void print_sb20_banner();
void print_sb10_banner();

/// The version line, one for both schemes.
void print_version_line();

/// The usage line for a wrong number of arguments.
void print_short_usage();

}  // namespace sealwright

/// The commands of scheme 2.1 and of scheme 1.1.
void print_SB20_Usage();
void print_SB10_Usage();

/// Only the stage-2 commands of each scheme.
void print_SB20_Usage_Stage2();
void print_SB10_Usage_Stage2();
