#pragma once

#include <cstdint>

/// Fills the 24 slots of the entry table in a boot context.
void save_SB20_FuncPtr(std::uint32_t* table);
