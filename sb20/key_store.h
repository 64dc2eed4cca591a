#pragma once

#include <cstdint>

#include "sb20/key_files.h"
#include "sb20/records.h"
#include "scheme/key_store.h"

// Key material of a run of scheme 2.1: the fixed file names, the process-wide buffers beside those
// that both schemes share, and the only functions that fill them.

inline constexpr char sb20_efuse_file[] = "eFuseData_V21.dat";
inline constexpr char sb20_root_public_key_file[] = "publicKeyInfo_V21.dat";
inline constexpr char sb20_root_private_key_file[] = "privateKey_V21.dat";
inline constexpr char sb20_stage2_public_key_file[] = "publicKeyInfo_V21_stage2.dat";

extern SB20_CONTEXT sb20_Context;
extern std::uint8_t sb20_eFuseData[sb20_efuse_length];
extern std::uint32_t sb20_eFuseDataLen;

namespace sealwright {

/// Reads an eFuse file into `sb20_eFuseData`.
[[nodiscard]] EfuseData load_sb20_efuse_data(const char* path, EfuseLength rule);

/// Makes `stored`, what there is of a context, the content of the cleared `sb20_Context`.
[[nodiscard]] SB20_CONTEXT& store_sb20_context(ByteView stored);

/// Clears a context and reads `length` bytes, at most 496, of the root public-key file into it from
/// `publicKeyInfo` on.
void load_sb20_root_info(SB20_CONTEXT& context, std::uint32_t length = sizeof(Sb20PublicKeyInfo));

/// Reads an encrypted private-key file into `privateKey` as load_private_key_file does.
[[nodiscard]] Status load_sb20_private_key(ByteView& items, const char* path);

/// Puts a new key pair into the buffers: the info in `sb20_Context`, the eFuse data, the public-key
/// file in `publicKey` and the private-key file, encrypted, in `privateKey`, whose length is that
/// of the item list.
void store_sb20_key_pair(const Sb20KeyFiles& files);

/// Clears the buffers of this unit.
void wipe_sb20_key_store();

}  // namespace sealwright
