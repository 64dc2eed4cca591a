#pragma once

// What the drivers print on standard output. Scripts compare these texts as they stand, with their
// irregularities: the program's name in the 1.1 texts, "Posession", doubled blanks, angle brackets
// in an example.

/// The banner of scheme 2.1 or 1.1: an empty line, the title, the notice of six lines and an empty
/// line.
void print_sb20_banner();
void print_sb10_banner();

/// The version line, one for both schemes.
void print_version_line();

/// The usage line for a wrong number of arguments.
void print_short_usage();

/// The commands of scheme 2.1 and of scheme 1.1.
void print_SB20_Usage();
void print_SB10_Usage();

/// Only the stage-2 commands of each scheme.
void print_SB20_Usage_Stage2();
void print_SB10_Usage_Stage2();
