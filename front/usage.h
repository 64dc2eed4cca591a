#pragma once

// Usage texts, printed on standard output. Their irregularities (the program's name in the 1.1
// texts, "Posession", doubled blanks, angle brackets in an example) are part of them, on purpose.

/// The commands of scheme 2.1 and of scheme 1.1.
void print_SB20_Usage();
void print_SB10_Usage();

/// Only the stage-2 commands of each scheme.
void print_SB20_Usage_Stage2();
void print_SB10_Usage_Stage2();
