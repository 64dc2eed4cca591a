#pragma once

// Lines that the signing functions of both schemes print. Scripts compare them as they stand,
// "Posession" included.

inline constexpr char popp_failure_line[] =
    "Invalid Stage 2 Public Key: POPP(Proof of Posession Private Key) Failure\n";
inline constexpr char stage1_signed_line[] = "Stage 1: Signature generation is successful.\n";
inline constexpr char stage1_not_signed_line[] = "Stage 1: Signature generation is failed.\n";
inline constexpr char stage2_signed_line[] = "Stage 2: Signature generation is successful.\n";
inline constexpr char stage2_not_signed_line[] = "Stage 2: Signature generation is failed.\n";
