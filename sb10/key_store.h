#pragma once

#include <cstdint>

#include "sb10/key_files.h"
#include "sb10/records.h"
#include "scheme/key_store.h"

// Key material of a run of scheme 1.1: the fixed file names, the process-wide buffers beside those
// that both schemes share, and the only functions that fill them.

inline constexpr char sb10_efuse_file[] = "eFuseData.dat";
inline constexpr char sb10_root_public_key_file[] = "publicKeyInfo.dat";
inline constexpr char sb10_root_private_key_file[] = "privateKey.dat";
inline constexpr char sb10_stage2_public_key_file[] = "stage2_key.spk";

extern SB10_CONTEXT sb10_Context;
extern std::uint8_t sb10_eFuseData[sb10_efuse_length];
extern std::uint32_t sb10_eFuseDataLen;
extern Sb10PublicKeyFile sb10_pubkey_file;
extern Sb10PrivateKeyFile sb10_privkey_file;

namespace sealwright {

/// Reads an eFuse file into `sb10_eFuseData`.
[[nodiscard]] EfuseData load_sb10_efuse_data(const char* path, EfuseLength rule);

/// Makes `stored`, what there is of a context, the content of the cleared `sb10_Context`.
[[nodiscard]] SB10_CONTEXT& store_sb10_context(ByteView stored);

/// Clears `sb10_Context` and reads the root public-key info into its `publicKeyInfo`.
[[nodiscard]] SB10_CONTEXT& load_sb10_root_info();

/// Reads a stage-2 public-key file into `sb10_pubkey_file` and its n and e, as join_sb10_key puts
/// them, into `publicKey`. A length of n above 1024 aborts.
/// @return the whole key buffer: zero after the key.
[[nodiscard]] ByteView load_sb10_stage2_public_key(const char* path);

/// A key that signs, and its public part as verifiers take it.
struct Sb10SigningKey {
  ByteView items;
  RsaPublicKey1024 public_part;
};

/// Reads an encrypted stage-2 private-key file (above 2048 bytes: aborts) into `sb10_privkey_file`
/// and puts its n and d items, which alone are used, one after the other into `privateKey`. The
/// list is empty when a length runs past the record.
[[nodiscard]] Sb10SigningKey load_sb10_stage2_private_key(const char* path);

/// Reads "privateKey.dat" into `privateKey` and decrypts it. @return the key item list, which is
/// noise when it did not decrypt.
[[nodiscard]] ByteView load_sb10_root_private_key();

/// Puts a new root key into the buffers: the info in `sb10_Context`, the eFuse data, the public-key
/// file in the first bytes of `publicKey` and the private-key file, encrypted, in `privateKey`.
void store_sb10_root_key(const Sb10RootKeyFiles& files);

/// Puts a new stage-2 pair into the buffers: the info in `sb10_Context`, the eFuse data, both files
/// in their records, the private one encrypted, and the key item list as it is in `privateKey`.
void store_sb10_stage2_pair(const Sb10Stage2KeyFiles& files, const Sb10PrivateKeyItems& items);

/// Clears the buffers of this unit.
void wipe_sb10_key_store();

}  // namespace sealwright
